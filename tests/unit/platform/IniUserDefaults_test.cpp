// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/IniUserDefaults.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lumavex;

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

TEST(IniUserDefaults, AWriteIsOnDiskAtOnceAndAbsentIsNotEmpty)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("deep/er/lumavex.ini"));
    IniUserDefaults defaults(path);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("k")), std::nullopt);
    defaults.setObject_forKey(QStringLiteral("Cam, \"the\" = ü"), QStringLiteral("k"));
    defaults.setObject_forKey(QString(), QStringLiteral("empty"));
    IniUserDefaults again(path);
    EXPECT_EQ(again.stringForKey(QStringLiteral("k")), QStringLiteral("Cam, \"the\" = ü"));
    EXPECT_EQ(again.stringForKey(QStringLiteral("empty")), QString());
    EXPECT_EQ(again.trouble(), QString());
}

TEST(IniUserDefaults, EveryTextComesBackAndQSettingsReadsTheSame)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("lumavex.ini"));
    for (const QString& text :
         {QStringLiteral(" spaces "), QStringLiteral("@Variant(\\0\\x9)"), QStringLiteral("@@at"),
          QStringLiteral("a\nb\t\x01"
                         "7f"),
          QStringLiteral("C:\\x41 \"quoted\"; # = ,"), QStringLiteral("Ünï 📷"), QString(QChar(0xD83D))}) {
        IniUserDefaults(path).setObject_forKey(text, QStringLiteral("k"));
        EXPECT_EQ(IniUserDefaults(path).stringForKey(QStringLiteral("k")), text) << text.toStdString();
        EXPECT_EQ(QSettings(path, QSettings::IniFormat).value(QStringLiteral("k")).toString(), text)
            << text.toStdString();
        EXPECT_EQ(IniUserDefaults(path).trouble(), QString());
    }
}

TEST(IniUserDefaults, WhatQSettingsWroteAndWhatIsWrittenByHandIsRead)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("lumavex.ini"));
    const QString text = QStringLiteral("@Cam, \"the\" = \\ ü\x02"
                                        "a");
    QSettings(path, QSettings::IniFormat).setValue(QStringLiteral("k"), text);
    EXPECT_EQ(IniUserDefaults(path).stringForKey(QStringLiteral("k")), text);

    write(path, "; remark\r\nbefore = 1\r\n[Other]\nbefore=2\n[General]\nname = Cam, the second \n");
    const IniUserDefaults byHand(path);
    EXPECT_EQ(byHand.trouble(), QString());
    EXPECT_EQ(byHand.stringForKey(QStringLiteral("before")), QStringLiteral("1"));
    EXPECT_EQ(byHand.stringForKey(QStringLiteral("name")), QStringLiteral("Cam, the second"));
}

TEST(IniUserDefaults, AValueThatClaimsToBeAnObjectIsText)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("lumavex.ini"));
    write(path, "[General]\na=@Variant(\\0\\0\\0\\x46\\x7f\\xff\\xff\\xff)\nb=2\n");
    const IniUserDefaults defaults(path);
    EXPECT_TRUE(defaults.stringForKey(QStringLiteral("a"))->startsWith(QStringLiteral("@Variant(")));
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("b")), QStringLiteral("2"));
}

TEST(IniUserDefaults, ADamagedFileIsKeptItsReadableLinesAreUsedAndTheUserIsTold)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("lumavex.ini"));
    const QByteArray damaged = "[General]\nOrbelkin_a_02=25\n\x01\x02garbage without sense\n[broken\nOrbelkin_b_02=1\n";
    write(path, damaged);
    IniUserDefaults defaults(path);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("Orbelkin_a_02")), QStringLiteral("25"));
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("Orbelkin_b_02")), QStringLiteral("1"));
    EXPECT_TRUE(defaults.trouble().contains(path + QStringLiteral(".damaged")));
    QFile kept(path + QStringLiteral(".damaged"));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), damaged);
}

TEST(IniUserDefaults, WhateverTheDamageTheFileIsKept)
{
    for (const QByteArray& damaged : {QByteArray("abc"), QByteArray("[General]\na=1\nabc\n"), QByteArray(4096, '\0'),
                                      QByteArray("a=").append(QByteArray(2 << 20, 'x'))}) {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("lumavex.ini"));
        write(path, damaged);
        IniUserDefaults defaults(path);
        EXPECT_FALSE(defaults.trouble().isEmpty());
        QFile kept(path + QStringLiteral(".damaged"));
        ASSERT_TRUE(kept.open(QIODevice::ReadOnly)) << damaged.toStdString();
        EXPECT_EQ(kept.readAll(), damaged);
    }
}

TEST(IniUserDefaults, SettingsThatCannotBeSavedAreReported)
{
    IniUserDefaults defaults(QStringLiteral("/proc/lumavex/lumavex.ini"));
    defaults.setObject_forKey(QStringLiteral("1"), QStringLiteral("k"));
    EXPECT_FALSE(defaults.trouble().isEmpty());
}
