// SPDX-License-Identifier: GPL-3.0-or-later
// The scene that the end-to-end tests record: a small window that shows the time as a code of black and white squares,
// and flashes white as a tone sounds.
//
//     e2e_scene X Y silent|sounding [SECONDS]
//
// Time is that of the sound: what is heard and what is seen belong to the same instant. Prints "ready" when both run,
// and ends with a signal. tests/e2e/lumavex_e2e.py reads what this draws and plays; the figures below stand there too.
#include "tests/contract/sound_recorder/SoundPlayer.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <numbers>
#include <optional>
#include <sys/prctl.h>
#include <thread>
#include <vector>

#include <csignal>

namespace {

using lumavex::Nanoseconds;
using namespace std::chrono_literals;

constexpr Nanoseconds kTick = 10ms;        // one step of the code
constexpr int kBits = 16;                  // from the left, the highest first
constexpr std::uint16_t kSquare = 16;      // pixels; the row below shows each bit's contrary
constexpr std::uint16_t kFlashHeight = 64; // below the code
constexpr std::uint16_t kWidth = kBits * kSquare;
constexpr std::uint16_t kHeight = 2 * kSquare + kFlashHeight;

constexpr int kRate = 44100;
constexpr Nanoseconds kBeat = 500ms; // from flash to flash
constexpr Nanoseconds kFlash = 100ms;
constexpr int kBeatsASecond = 2;

/// The tone tells which beat it belongs to.
double hertzOf(int beat)
{
    return 500.0 + 25.0 * (beat % 64);
}

std::vector<std::int16_t> soundtrack(int seconds)
{
    constexpr int beatFrames = kRate / 2;
    constexpr int toneFrames = kRate / 10;
    const int beats = seconds * kBeatsASecond;
    std::vector<std::int16_t> samples(std::size_t{2} * static_cast<std::size_t>(beats) * beatFrames);
    for (int beat = 0; beat < beats; ++beat) {
        for (int i = 0; i < toneFrames; ++i) {
            // Begins at its peak, so that the first sample shows where it begins.
            const double value = 12000 * std::cos(2 * std::numbers::pi * hertzOf(beat) * i / kRate);
            const std::size_t at = std::size_t{2} * static_cast<std::size_t>(beat * beatFrames + i);
            samples[at] = samples[at + 1] = static_cast<std::int16_t>(value);
        }
    }
    return samples;
}

/// The time of the scene: that of the sound, or without one the time since the start.
class SceneClock {
public:
    SceneClock(bool sounding, int seconds)
    {
        if (sounding)
            player_ = std::make_unique<lumavex::SoundPlayer>(soundtrack(seconds));
        else
            starts_.push_back(now());
    }

    /// A sink tells its place with a jitter of some milliseconds, so the middle one of the latest answers counts.
    void listen()
    {
        if (!player_)
            return;
        starts_.push_back(player_->firstFrameHeardAt());
        if (starts_.size() > 31)
            starts_.pop_front();
        std::vector<Nanoseconds> sorted(starts_.begin(), starts_.end());
        std::nth_element(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2), sorted.end());
        start_ = sorted[sorted.size() / 2];
    }

    Nanoseconds time() const { return now() - (player_ ? start_ : starts_.front()); }

private:
    static Nanoseconds now() { return std::chrono::steady_clock::now().time_since_epoch(); }

    std::unique_ptr<lumavex::SoundPlayer> player_;
    std::deque<Nanoseconds> starts_;
    Nanoseconds start_{0};
};

/// Everything is drawn aside and shown by one request, so that no grab sees half of it.
class SceneWindow {
public:
    SceneWindow(std::int16_t x, std::int16_t y) : connection_(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(connection_)) {
            std::fputs("e2e_scene: no display\n", stderr);
            std::exit(1);
        }
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        black_ = screen->black_pixel;
        white_ = screen->white_pixel;
        const std::uint32_t values[] = {black_, 1}; // override-redirect: stays where it is put
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, x, y, kWidth, kHeight, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_create_pixmap(connection_, screen->root_depth, picture_, window_, kWidth, kHeight);
        const std::uint32_t noEvents = 0;
        xcb_create_gc(connection_, gc_, picture_, XCB_GC_GRAPHICS_EXPOSURES, &noEvents);
        xcb_map_window(connection_, window_);
        xcb_flush(connection_);
    }
    ~SceneWindow() { xcb_disconnect(connection_); }
    SceneWindow(const SceneWindow&) = delete;
    SceneWindow& operator=(const SceneWindow&) = delete;

    void show(std::uint32_t code, bool flash)
    {
        fill(black_, {0, 0, kWidth, kHeight});
        for (int bit = 0; bit < kBits; ++bit) {
            const bool set = (code >> (kBits - 1 - bit) & 1) != 0;
            const auto x = static_cast<std::int16_t>(bit * kSquare);
            fill(white_, {x, static_cast<std::int16_t>(set ? 0 : kSquare), kSquare, kSquare});
        }
        if (flash)
            fill(white_, {0, 2 * kSquare, kWidth, kFlashHeight});
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_copy_area(connection_, picture_, window_, gc_, 0, 0, 0, 0, kWidth, kHeight);
        xcb_flush(connection_);
    }

    bool isAlive() const { return xcb_connection_has_error(connection_) == 0; }

private:
    void fill(std::uint32_t colour, const xcb_rectangle_t& rectangle)
    {
        xcb_change_gc(connection_, gc_, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(connection_, picture_, gc_, 1, &rectangle);
    }

    xcb_connection_t* connection_;
    xcb_window_t window_ = xcb_generate_id(connection_);
    xcb_pixmap_t picture_ = xcb_generate_id(connection_);
    xcb_gcontext_t gc_ = xcb_generate_id(connection_);
    std::uint32_t black_ = 0;
    std::uint32_t white_ = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 4 && argc != 5) {
        std::fputs("usage: e2e_scene X Y silent|sounding [SECONDS]\n", stderr);
        return 64;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    SceneWindow window(static_cast<std::int16_t>(std::atoi(argv[1])), static_cast<std::int16_t>(std::atoi(argv[2])));
    SceneClock clock(std::strcmp(argv[3], "sounding") == 0, argc == 5 ? std::atoi(argv[4]) : 180);
    for (int i = 0; i < 25; ++i) { // the sink's own clock settles
        clock.listen();
        std::this_thread::sleep_for(20ms);
    }
    for (std::int64_t last = -1; window.isAlive();) {
        const Nanoseconds time = clock.time();
        const std::int64_t tick = time / kTick;
        if (tick != last) {
            window.show(static_cast<std::uint32_t>(tick), time % kBeat < kFlash);
            if (tick % 5 == 0)
                clock.listen();
        }
        if (last < 0) {
            std::puts("ready");
            std::fflush(stdout);
        }
        last = tick;
        std::this_thread::sleep_for(kTick - clock.time() % kTick);
    }
}
