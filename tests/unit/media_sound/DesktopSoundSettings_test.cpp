// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/DesktopSoundSettings.h"
#include "media/sound/SoundServer.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

namespace lumavex {
namespace {

/// Runs with a PATH of one folder of its own.
class DesktopSoundSettingsTest : public ::testing::Test {
protected:
    DesktopSoundSettingsTest()
    {
        qputenv("PATH", QFile::encodeName(folder_.path()));
        qputenv("XDG_CURRENT_DESKTOP", "");
    }
    ~DesktopSoundSettingsTest() override
    {
        qputenv("PATH", path_);
        qputenv("XDG_CURRENT_DESKTOP", desktop_);
    }

    /// A program that notes its name and arguments.
    void install(const QString& name)
    {
        QFile program(folder_.filePath(name));
        ASSERT_TRUE(program.open(QIODevice::WriteOnly));
        program.write("#!/bin/sh\necho \"" + name.toUtf8() + " $*\" > " + QFile::encodeName(started() + ".part")
                      + "\n/bin/mv " + QFile::encodeName(started() + ".part") + " " + QFile::encodeName(started())
                      + "\n");
        program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }

    /// Programs started since the last call.
    std::string takeStarted()
    {
        QFile note(started());
        for (int i = 0; i < 500 && !note.exists(); ++i)
            QThread::msleep(10);
        EXPECT_TRUE(note.open(QIODevice::ReadOnly));
        const std::string line = note.readAll().trimmed().toStdString();
        note.remove();
        return line;
    }

    QString started() const { return folder_.filePath("started"); }

    QTemporaryDir folder_;
    QByteArray path_ = qgetenv("PATH");
    QByteArray desktop_ = qgetenv("XDG_CURRENT_DESKTOP");
    DesktopSoundSettings settings_;
};

TEST_F(DesktopSoundSettingsTest, RunningDesktopsOwnProgramComesFirst)
{
    EXPECT_FALSE(settings_.open()) << "nothing is installed";
    for (const char* name : {"pavucontrol", "gnome-control-center", "budgie-control-center", "pavucontrol-qt"})
        install(name);
    const std::pair<const char*, const char*> expected[] = {
        {"ubuntu:GNOME", "gnome-control-center sound"},
        {"Budgie:GNOME", "budgie-control-center sound"},
        {"LXQt", "pavucontrol-qt --tab=4"},
        {"", "pavucontrol --tab=4"},
    };
    for (const auto& [desktop, command] : expected) {
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        EXPECT_TRUE(settings_.open());
        EXPECT_EQ(takeStarted(), command) << desktop;
    }
}

TEST_F(DesktopSoundSettingsTest, AlsaNamesTheFirstCardThatRecords)
{
    const auto inputOf = [this](const char* text) {
        QFile list(folder_.filePath("pcm"));
        EXPECT_TRUE(list.open(QIODevice::WriteOnly));
        list.write(text);
        list.close();
        return firstAlsaInput(list.fileName());
    };
    EXPECT_EQ(inputOf("00-03: HDMI 0 : HDMI 0 : playback 1\n"
                      "01-00: ALC257 Analog : capture box : playback 1 : capture 1\n"
                      "02-00: USB Audio : USB Audio : capture 1\n"),
              QStringLiteral("ALC257 Analog"));
    EXPECT_EQ(inputOf("00-03: capture box : capture box : playback 1\n"), std::nullopt);
    EXPECT_EQ(inputOf(""), std::nullopt);
    EXPECT_EQ(firstAlsaInput(folder_.filePath("none")), std::nullopt);
}

} // namespace
} // namespace lumavex
