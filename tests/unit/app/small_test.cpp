// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"
#include "app/ProcessorUsage.h"
#include "app/SettingsTable.h"
#include "app/Unattended.h"
#include "platform/fake/FakeUserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lumavex;

TEST(SettingsTable, NumbersAreReadFromTheBeginningOfTheText)
{
    const std::pair<const char*, std::int64_t> cases[] = {
        {"30", 30},
        {"12abc", 12},
        {"  -7 ", -7},
        {"+5", 5},
        {"abc", 0},
        {"", 0},
        {"-", 0},
        {"- 3", 0},
        {"99999999999999999999", INT64_MAX},
        {"-99999999999999999999", INT64_MIN},
        {"9223372036854775807", INT64_MAX},
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
}

TEST(ProcessorUsage, BusyFractionsOverHalfTheProcessors)
{
    using Ticks = std::vector<std::int32_t>;
    const auto busy = [](int processors, int busyOnes) {
        Ticks ticks;
        for (int i = 0; i < processors; ++i)
            for (const int value : {50, 30, 0, 20})
                ticks.push_back(i < busyOnes ? value : value == 0 ? 100 : 0);
        return ticks;
    };
    const auto usage = [&](int processors, int busyOnes) {
        const Ticks before(static_cast<std::size_t>(4 * processors), 0);
        return processorUsage(busy(processors, busyOnes), before, static_cast<std::uint32_t>(processors));
    };
    EXPECT_EQ(usage(8, 0), 0.0F);
    EXPECT_EQ(usage(8, 4), 1.0F);
    EXPECT_EQ(usage(2, 1), 1.0F);
    EXPECT_EQ(usage(4, 1), 0.5F);
    EXPECT_EQ(usage(1, 1), 2.0F);
    EXPECT_EQ(usage(8, 8), 2.0F);
    // Counters that wrap, and a sample with fewer processors than counted at start-up.
    EXPECT_EQ(processorUsage({INT32_MIN + 9, 0, 10, 0}, {INT32_MAX, 0, 0, 0}, 2), 0.5F);
    // No tick at all since the sample before.
    EXPECT_EQ(processorUsage({5, 5, 5, 5}, {5, 5, 5, 5}, 1), 0.0F);
}

TEST(CommandLine, OptionsInBothFormsAndMistakesInTheUsersWords)
{
    const auto parse = [](const QString& line) { return parseCommandLine(line.split(u' ', Qt::SkipEmptyParts)); };
    const CommandLine good = parse(QStringLiteral(
        "--record 2.5 --output=a.mov --fps 25 --size 1280x720 --sound no --cursor=yes --overwrite --ignore-load"));
    ASSERT_FALSE(good.exitStatus.has_value()) << good.text.toStdString();
    EXPECT_EQ(good.options.recordSeconds, 2.5);
    EXPECT_EQ(good.options.framesPerSecond, 25);
    EXPECT_EQ(good.options.size, (CGSize{1280, 720}));
    EXPECT_EQ(good.options.sound, false);
    EXPECT_EQ(good.options.cursor, true);
    EXPECT_EQ(good.options.existing, LaunchOptions::Existing::Overwrite);
    EXPECT_EQ(parse(QStringLiteral("--size screen")).options.size, (CGSize{0, 0}));
    EXPECT_EQ(parse(QStringLiteral("--region 1,2,30,40")).options.captureType, 2);
    EXPECT_EQ(parse(QStringLiteral("--follow 320x240")).options.captureType, 1);
    EXPECT_TRUE(parse(QStringLiteral("--source both-camera")).options.needsCamera());

    for (const char* wrong : {"--record",
                              "--record 0 --output a",
                              "--record nan --output a",
                              "--record 3",
                              "--fps 0",
                              "--fps 2.5",
                              "--size 12",
                              "--size 99999x99999",
                              "--sound maybe",
                              "--overwrite=1",
                              "--unknown",
                              "--source telephone",
                              "--region 1,2,3",
                              "--region 0,0,0,5",
                              "--follow 0x3",
                              "--camera-size 8",
                              "--type entire --region 1,2,3,4",
                              "--follow 6x4 --window a",
                              "--record 1 --output a --type region",
                              "--record 1 --output a --type window",
                              "file.mov",
                              "--output a.mov"}) {
        const CommandLine result = parse(QLatin1String(wrong));
        EXPECT_EQ(result.exitStatus, 2) << wrong;
        EXPECT_TRUE(result.text.startsWith(QLatin1String("lumavex: "))) << wrong;
    }
    EXPECT_EQ(parse(QStringLiteral("--help")).exitStatus, 0);
    EXPECT_TRUE(parse(QStringLiteral("--help")).text.contains(QLatin1String("--hide-own-windows")));
}

TEST(CommandLine, TheOutputIsCheckedBeforeAnythingIsRecorded)
{
    QTemporaryDir folder;
    const auto problem = [&](const QString& name, LaunchOptions::Existing existing = LaunchOptions::Existing::Refuse) {
        LaunchOptions options;
        options.output = folder.filePath(name);
        options.existing = existing;
        return outputProblem(options);
    };
    QFile file(folder.filePath(QStringLiteral("there.mov")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(problem(QStringLiteral("new.mov")), QString());
    EXPECT_TRUE(problem(QStringLiteral("there.mov")).contains(QLatin1String("--overwrite")));
    EXPECT_EQ(problem(QStringLiteral("there.mov"), LaunchOptions::Existing::Overwrite), QString());
    EXPECT_TRUE(problem(QStringLiteral("no/folder.mov")).contains(QLatin1String("no folder")));
    EXPECT_FALSE(problem(QStringLiteral(".")).isEmpty());
}

TEST(UnattendedDialogs, AFileThatCameMeanwhileIsNotReplaced)
{
    const QTemporaryDir folder;
    for (const auto& [wanted, given] : {std::pair{"a.mov", "a-2.mov"}, {"a", "a-2"}}) {
        LaunchOptions options;
        options.output = folder.filePath(QLatin1String(wanted));
        QFile file(options.output);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(UnattendedDialogs(options).runSavePanel({}), folder.filePath(QLatin1String(given)));
        options.existing = LaunchOptions::Existing::Overwrite;
        EXPECT_EQ(UnattendedDialogs(options).runSavePanel({}), options.output);
    }
}
