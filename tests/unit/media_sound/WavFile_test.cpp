// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound/WavFile.h"
#include "tests/support/contentOf.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <vector>

namespace lumavex {
namespace {

std::uint32_t field(const QByteArray& bytes, qsizetype offset)
{
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.constData() + offset, sizeof value);
    return value;
}

class WavFileTest : public ::testing::Test {
protected:
    QTemporaryDir folder_;
    QString path_ = folder_.filePath("sound.wav");
    const std::vector<std::int16_t> second_ = std::vector<std::int16_t>(88200, 0x1234);
};

TEST_F(WavFileTest, HeaderIsThatOfPcmAfterEveryAppend)
{
    WavFile(path_).append(std::vector<std::int16_t>{1, -1});
    EXPECT_EQ(contentOf(path_).toHex(' '), "52 49 46 46 28 00 00 00 57 41 56 45 66 6d 74 20 10 00 00 00 01 00 02 00 "
                                           "44 ac 00 00 10 b1 02 00 04 00 10 00 64 61 74 61 04 00 00 00 01 00 ff ff");
    WavFile file(path_);
    for (std::uint32_t seconds = 0; seconds < 3; ++seconds) {
        const QByteArray bytes = contentOf(path_);
        EXPECT_EQ(bytes.size(), 44 + 176400 * seconds);
        EXPECT_EQ(field(bytes, 4), 36 + 176400 * seconds);
        EXPECT_EQ(field(bytes, 40), 176400 * seconds);
        file.append(second_);
    }
    file.truncate(100'000);
    EXPECT_EQ(file.frames(), 100'000);
    EXPECT_EQ(contentOf(path_).size(), 44 + 400'000);
    EXPECT_EQ(field(contentOf(path_), 40), 400'000u);
}

TEST_F(WavFileTest, SizesStopAtWhatTheFieldsHold)
{
    const auto sizes = [](std::uint64_t bytes) {
        const auto header = wavHeader(bytes);
        const QByteArray view(reinterpret_cast<const char*>(header.data()), header.size());
        return std::pair(field(view, 4), field(view, 40));
    };
    EXPECT_EQ(sizes(0xFFFFFFD8), std::pair(0xFFFFFFFCu, 0xFFFFFFD8u));
    EXPECT_EQ(sizes(std::uint64_t{5} << 30), std::pair(0xFFFFFFFFu, 0xFFFFFFFFu));
}

TEST_F(WavFileTest, FullDiskKeepsWhatIsThere)
{
    // A limit on the size of files stands for the full disk: a write ends short, the next one fails.
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{.rlim_cur = 44 + 176400 + 1001, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    WavFile file(path_);
    file.append(second_);
    EXPECT_EQ(file.error(), QString());
    file.append(second_);
    const QString error = file.error();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_NE(error, QString());
    file.append(second_); // there is room again, but a hole would be worse than an end
    file.close();
    EXPECT_EQ(file.error(), error);
    EXPECT_EQ(file.frames(), 44100 + 250);
    const QByteArray bytes = contentOf(path_);
    EXPECT_EQ(field(bytes, 40), 176400u + 1000u);
    EXPECT_EQ(bytes.size(), 44 + 176400 + 1000);
    EXPECT_EQ(bytes.back(), 0x12);
}

} // namespace
} // namespace lumavex
