// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OutputSize.h"
#include "app/SettingsTable.h"
#include "app/StandardStreams.h"
#include "app/Unattended.h"
#include "app/options/CommandLine.h"
#include "tests/fakes/FakeUserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lumavex;

TEST(SettingsTable, NumbersAreReadFromTheBeginningOfTheText)
{
    const std::pair<const char*, std::int64_t> cases[] = {
        {"12abc", 12},
        {"  -7 ", -7},
        {"+5", 5},
        {"abc", 0},
        {"", 0},
        {"- 3", 0},
        {"99999999999999999999", INT64_MAX},
        {"-99999999999999999999", INT64_MIN},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(integerValue(QLatin1String(text)), value) << text;
}

TEST(SettingsTable, OnlyTheDefaultingRuleWritesAndTheLayerIsNeverStored)
{
    FakeUserDefaults store;
    EXPECT_EQ(readInteger(store, "a", ReadRule::Plain), 0);
    EXPECT_TRUE(store.written.isEmpty());
    EXPECT_EQ(readInteger(store, "a", ReadRule::Defaulting), 1);
    EXPECT_EQ(store.texts.value(QStringLiteral("Orbelkin_a_02")), QStringLiteral("1"));
    store.texts.insert(settingKey("a"), QStringLiteral("0"));
    EXPECT_EQ(readInteger(store, "a", ReadRule::Defaulting), 0);

    LayeredUserDefaults layer(store);
    layer.lay(QStringLiteral("25"), settingKey("a"));
    EXPECT_EQ(readInteger(layer, "a", ReadRule::Plain), 25);
    layer.setObject_forKey(QStringLiteral("3"), settingKey("a"));
    EXPECT_EQ(readInteger(layer, "a", ReadRule::Plain), 25);
    EXPECT_EQ(store.texts.value(settingKey("a")), QStringLiteral("0"));
    layer.setObject_forKey(QStringLiteral("4"), settingKey("b"));
    EXPECT_EQ(store.texts.value(settingKey("b")), QStringLiteral("4"));
    layer.lay(QStringLiteral("5"), settingKey("c"));
    layer.setObject_forKey(QStringLiteral("1"), settingKey("c"));
    EXPECT_EQ(store.texts.value(settingKey("c")), QStringLiteral("1")) << "a first run stores all its defaults";
    layer.startingIsOver();
    layer.setObject_forKey(QStringLiteral("6"), settingKey("c"));
    EXPECT_EQ(readInteger(layer, "c", ReadRule::Plain), 6) << "what the user chooses holds";
}

TEST(CommandLine, OptionsInBothFormsAndMistakesInTheUsersWords)
{
    const auto parse = [](const QString& line) { return parseCommandLine(line.split(u' ', Qt::SkipEmptyParts)); };
    for (const char* right :
         {"--record 2.5 --output=a.mov --fps 25 --size 1280x720 --sound no --cursor=yes --overwrite --ignore-load",
          "--overlay a.tif --overlay-position 0 --overlay-size 1638 --secondary-position 8 --secondary-size 4 "
          "--source both --saturation 0 --brightness -2.5 --contrast 20 --snapshot a.PNG",
          "--when-window-goes hold", "--record 1 --output a --window a --when-window-goes=others"})
        EXPECT_FALSE(parse(QLatin1String(right)).exitStatus.has_value()) << right;

    const QString wrongOnes = QStringLiteral(
        "--record|--record 0 --output a|--record 3|--output a.mov|"
        "--fps 0|--fps 2.5|--size 12|--size 99999x99999|--sound maybe|--source telephone|"
        "--overwrite=1|--region 1,2,3|--region 0,0,0,5|--follow 0x3|--camera-size 8|"
        "--type entire --region 1,2,3,4|--follow 6x4 --window a|--record 1 --output a --type window|"
        "--overlay=|--overlay-position 3|--overlay-size 3|--overlay a.png --overlay-position -1|--secondary-position x|"
        "--record nan --output a|--record 1 --output a --type region|--overlay a.png --overlay-position 9|--overlay "
        "a.png --overlay-size 0|"
        "--overlay a.png --overlay-size 1639|--secondary-size 5|--secondary-size 1 --source camera|"
        "--secondary-position 1 --source screen|--saturation -1|--saturation nan|--brightness 10.1|--contrast 21|"
        "--contrast 5 --source screen|--snapshot a.jpg|--snapshot a.png --record 1 --output a|"
        "--snapshot a.png --output a|--snapshot a.png --type region|--record 1 --output a.mp4|--camera a --source "
        "screen|"
        "--when-window-goes vanish|--when-window-goes hold --region 1,2,3,4|--when-window-goes hold --snapshot a.png");
    for (const QString& wrong : wrongOnes.split(u'|')) {
        const CommandLine result = parse(wrong);
        EXPECT_EQ(result.exitStatus, 2) << wrong.toStdString();
        EXPECT_TRUE(result.text.startsWith(QLatin1String("lumavex: "))) << wrong.toStdString();
    }
}

TEST(CommandLine, AMovieWithoutAnEndingGetsTheUsualOneAndThatIsTold)
{
    for (const auto& [given, output] : {std::pair{"talk", "talk.mov"}, {"talk.", "talk.mov"}, {"b.MKV", "b.MKV"}}) {
        const CommandLine line = parseCommandLine({QStringLiteral("--record=1"), QStringLiteral("--output"), given});
        EXPECT_EQ(line.options.output, output);
        EXPECT_EQ(line.note.contains(QLatin1String(output)), line.options.output != given);
    }
}

TEST(OutputSize, ThatWouldShowNothingOfThePictureIsRefused)
{
    EXPECT_TRUE(vanishingProblem({1920, 1080}, {1920, 100}).contains(QLatin1String("1920x1080")));
    EXPECT_EQ(vanishingProblem({1280, 800}, {1920, 100}), QString()) << "the last step but one leaves 128x80 of it";
    EXPECT_EQ(vanishingProblem({0, 0}, {1920, 100}), QString()) << "a camera before its first picture";
}

TEST(UnattendedDialogs, AFileThatCameMeanwhileIsNotReplaced)
{
    const QTemporaryDir folder;
    for (const auto& [wanted, given] : {std::pair{"a.mov", "a-2.mov"}, {"a", "a-2"}}) {
        LaunchOptions options;
        options.output = folder.filePath(QLatin1String(wanted));
        QFile file(options.output);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        StandardStreams streams;
        EXPECT_EQ(UnattendedDialogs(options, streams).runSavePanel({}), folder.filePath(QLatin1String(given)));
        options.existing = LaunchOptions::Existing::Overwrite;
        EXPECT_EQ(UnattendedDialogs(options, streams).runSavePanel({}), options.output);
    }
}
