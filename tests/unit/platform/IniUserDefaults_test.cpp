// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/IniUserDefaults.h"

#include <QDir>
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

/// In a folder of its own.
struct IniUserDefaultsTest : testing::Test {
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("lumavex.ini"));

    std::optional<QString> read(const char* key) const
    {
        return IniUserDefaults(path).stringForKey(QLatin1String(key));
    }
    void expectDamageIsTold(const QByteArray& damaged) const
    {
        write(path, damaged);
        EXPECT_TRUE(IniUserDefaults(path).trouble().contains(path + QStringLiteral(".damaged")));
        QFile kept(path + QStringLiteral(".damaged"));
        ASSERT_TRUE(kept.open(QIODevice::ReadOnly)) << damaged.toStdString();
        EXPECT_EQ(kept.readAll(), damaged);
    }
};

} // namespace

TEST_F(IniUserDefaultsTest, AWriteIsOnDiskAtOnceAndAbsentIsNotEmpty)
{
    path = folder.filePath(QStringLiteral("deep/er/lumavex.ini"));
    IniUserDefaults defaults(path);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("k")), std::nullopt);
    defaults.setObject_forKey(QStringLiteral("Cam, \"the\" = ü"), QStringLiteral("k"));
    defaults.setObject_forKey(QString(), QStringLiteral("empty"));
    EXPECT_EQ(read("k"), QStringLiteral("Cam, \"the\" = ü"));
    EXPECT_EQ(read("empty"), QString());
}

TEST_F(IniUserDefaultsTest, EveryTextComesBackAndQSettingsReadsTheSame)
{
    for (const QString& text :
         {QStringLiteral(" spaces "), QStringLiteral("@Variant(\\0\\x9)"), QStringLiteral("@@at"),
          QStringLiteral("a\nb\t\x01"
                         "7f"),
          QStringLiteral("C:\\x41 \"quoted\"; # = ,"), QStringLiteral("Ünï 📷"), QString(QChar(0xD83D))}) {
        IniUserDefaults(path).setObject_forKey(text, QStringLiteral("k"));
        EXPECT_EQ(read("k"), text) << text.toStdString();
        EXPECT_EQ(QSettings(path, QSettings::IniFormat).value(QStringLiteral("k")).toString(), text)
            << text.toStdString();
        EXPECT_EQ(IniUserDefaults(path).trouble(), QString());
    }
}

TEST_F(IniUserDefaultsTest, WhatQSettingsWroteAndWhatIsWrittenByHandIsRead)
{
    const QString text = QStringLiteral("@Cam, \"the\" = \\ ü\x02"
                                        "a");
    QSettings(path, QSettings::IniFormat).setValue(QStringLiteral("k"), text);
    EXPECT_EQ(read("k"), text);

    write(path, "; remark\r\nbefore = 1\r\n[Other]\nbefore=2\n[General]\nname = Cam, the second \n");
    EXPECT_EQ(IniUserDefaults(path).trouble(), QString());
    EXPECT_EQ(read("before"), QStringLiteral("1"));
    EXPECT_EQ(read("name"), QStringLiteral("Cam, the second"));
    // A value that claims to be an object is text.
    write(path, "[General]\na=@Variant(\\0\\0\\0\\x46\\x7f\\xff\\xff\\xff)\nb=2\n");
    EXPECT_TRUE(read("a")->startsWith(QStringLiteral("@Variant(")));
    EXPECT_EQ(read("b"), QStringLiteral("2"));
}

TEST_F(IniUserDefaultsTest, ADamagedFileIsKeptItsReadableLinesAreUsedAndTheUserIsTold)
{
    for (const QByteArray& damaged :
         {QByteArray("abc"), QByteArray(4096, '\0'), QByteArray("a=").append(QByteArray(2 << 20, 'x')),
          QByteArray("[General]\na=25\n\x01\x02garbage without sense\n[broken\nb=1\n")})
        expectDamageIsTold(damaged);
    EXPECT_EQ(read("a"), QStringLiteral("25"));
    EXPECT_EQ(read("b"), QStringLiteral("1"));
}

TEST_F(IniUserDefaultsTest, SettingsThatCannotBeSavedAreReportedUntilAWriteWorks)
{
    path = folder.filePath(QStringLiteral("sub/lumavex.ini"));
    write(folder.filePath(QStringLiteral("sub")), "in the folder's place");
    IniUserDefaults defaults(path);
    defaults.setObject_forKey(QStringLiteral("1"), QStringLiteral("k"));
    EXPECT_TRUE(defaults.writeTrouble().contains(path));
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("k")), QStringLiteral("1"));
    ASSERT_TRUE(QFile::remove(folder.filePath(QStringLiteral("sub"))));
    defaults.setObject_forKey(QStringLiteral("1"), QStringLiteral("other"));
    EXPECT_EQ(defaults.writeTrouble(), QString());
    EXPECT_EQ(read("k"), QStringLiteral("1"));
}

TEST_F(IniUserDefaultsTest, WhatCannotBeReadIsKeptWhenTheFirstWriteReplacesIt)
{
    ASSERT_TRUE(QDir().mkpath(path + QStringLiteral("/inside"))); // no permissions keep root from reading a file
    IniUserDefaults defaults(path);
    EXPECT_TRUE(defaults.trouble().contains(path));
    EXPECT_TRUE(QFileInfo(path).isDir());
    defaults.setObject_forKey(QStringLiteral("1"), QStringLiteral("k"));
    EXPECT_EQ(read("k"), QStringLiteral("1"));
    EXPECT_TRUE(QFileInfo(path + QStringLiteral(".damaged/inside")).isDir());
    EXPECT_TRUE(defaults.trouble().contains(path + QStringLiteral(".damaged")));

    const QByteArray damaged("a=1\nno line\n");
    path = folder.filePath(QStringLiteral("more.ini"));
    write(path, damaged);
    IniUserDefaults choices(path, IniUserDefaults::Holds::Choices);
    EXPECT_TRUE(choices.trouble().contains(path));
    QFile untouched(path);
    ASSERT_TRUE(untouched.open(QIODevice::ReadOnly));
    EXPECT_EQ(untouched.readAll(), damaged);
    choices.setObject_forKey(QStringLiteral("2"), QStringLiteral("b"));
    EXPECT_EQ(choices.trouble(), QString());
    EXPECT_EQ(read("a"), QStringLiteral("1"));
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".damaged")));
}
