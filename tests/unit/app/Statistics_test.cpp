// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace lumavex;
using namespace std::chrono_literals;

namespace {

struct Statistics : Program {
    QString path = home.filePath(QStringLiteral("statistics.jsonl"));

    static std::vector<QJsonObject> linesOf(const QByteArray& text)
    {
        std::vector<QJsonObject> found;
        for (const QByteArray& line : text.trimmed().split('\n'))
            found.push_back(QJsonDocument::fromJson(line).object());
        return found;
    }

    std::vector<QJsonObject> lines() const
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return linesOf(file.readAll());
    }

    bool launchAt(int framesPerSecond)
    {
        options.stats = path;
        store->setObject_forKey(QStringLiteral("0"), QStringLiteral("Orbelkin_b_Screen_Include_Mouse_02"));
        store->setObject_forKey(QString::number(framesPerSecond), QStringLiteral("Orbelkin_i_Screen_Capture_FPS_02"));
        return launch() && app->openStatistics().isEmpty();
    }

    static std::int64_t sum(const std::vector<QJsonObject>& lines, const char* name)
    {
        std::int64_t total = 0;
        for (const QJsonObject& line : lines)
            total += line.value(QLatin1String(name)).toInteger();
        return total;
    }
    std::int64_t sum(const char* name) const { return sum(lines(), name); }
};

} // namespace

TEST_F(Statistics, EverySecondHasALineAndTheyAddUpToTheMovie)
{
    ASSERT_TRUE(launch()); // writes the first-run settings
    ASSERT_TRUE(launchAt(10));
    window->btnRecord->trigger();
    loop->advance(1500ms);
    paint(Qt::blue);
    loop->advance(700ms);
    window->btnPause->trigger();
    loop->advance(5s);
    window->btnRecord->trigger();
    loop->advance(1s);
    window->btnStop->trigger();

    const auto told = lines();
    ASSERT_EQ(told.size(), 4U) << "three whole seconds without the pause, and the rest";
    EXPECT_NEAR(told[1].value(QLatin1String("time")).toDouble(), 2, 1e-6);
    for (std::size_t second = 0; second < 3; ++second) {
        EXPECT_EQ(told[second].value(QLatin1String("encoded")).toInteger()
                      + told[second].value(QLatin1String("repeated")).toInteger(),
                  10);
        EXPECT_NEAR(told[second].value(QLatin1String("skew")).toDouble(1), 0, 1e-6) << "of second " << second;
    }
    EXPECT_TRUE(told[3].value(QLatin1String("skew")).isNull());
    const auto appends = static_cast<std::int64_t>(movie->appends().size());
    EXPECT_NEAR(told[0].value(QLatin1String("new")).toDouble(), 1 / 10.0, 1e-6) << "the first one of ten";
    EXPECT_NEAR(told[2].value(QLatin1String("new")).toDouble(1), 0, 1e-6);
    EXPECT_EQ(sum("composed"), 2);
    EXPECT_EQ(sum("encoded"), 2);
    EXPECT_EQ(sum("repeated"), appends - 2);
    EXPECT_EQ(sum("bytes"), appends);
}

TEST_F(Statistics, FramesTheMachineWasTooSlowForAreLate)
{
    ASSERT_TRUE(launch());
    ASSERT_TRUE(launchAt(10));
    window->btnRecord->trigger();
    loop->advance(500ms);
    loop->stall(350ms);
    loop->advance(1s);
    window->btnStop->trigger();
    EXPECT_EQ(sum("late"), 3) << "of the four that were due";
    double lateness = 0;
    for (const QJsonObject& line : lines())
        lateness = std::max(lateness, line.value(QLatin1String("lateness")).toDouble());
    EXPECT_NEAR(lateness, 0.850 - (0.5 + 1 / 30.0), 1e-6) << "of the first of them";
}

TEST_F(Statistics, AReaderWhoFallsBehindGetsFewerLinesThatStillAddUp)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    const FileDescriptor reader(::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK));
    ASSERT_TRUE(launch());
    ASSERT_TRUE(launchAt(1));
    window->btnRecord->trigger();
    loop->advance(1000s);
    window->btnStop->trigger();

    QByteArray text;
    const auto isWhole = [&] {
        char piece[4096];
        const ssize_t count = ::read(reader.get(), piece, sizeof piece);
        text.append(piece, std::max<qsizetype>(0, count));
        return text.endsWith('\n') && linesOf(text).back().value(QLatin1String("skew")).isNull(); // the last line's
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return isWhole(); }, 10'000));
    const auto told = linesOf(text);
    EXPECT_LT(told.size(), 1000U);
    EXPECT_EQ(sum(told, "encoded") + sum(told, "repeated"), std::int64_t(movie->appends().size()));
}

TEST_F(Statistics, AFileThatCannotBeWrittenIsTold)
{
    options.stats = QStringLiteral("/dev/full");
    ASSERT_TRUE(launch());
    ASSERT_EQ(app->openStatistics(), QString());
    window->btnRecord->trigger();
    loop->advance(5s);
    EXPECT_EQ(app->recording.m_RecordStatus, Recording) << "the movie matters more";
    window->btnStop->trigger();
    EXPECT_TRUE(message().contains(options.stats));
}
