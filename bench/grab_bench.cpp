// SPDX-License-Identifier: GPL-3.0-or-later
// Run it on its own screen: tests/support/with-display --size 1920x1080x24 build/release/bench/grab_bench
#include "platform/x11/XcbScreenGrabber.h"

#include <benchmark/benchmark.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <vector>

namespace {

using lumavex::GrabOutcome;

/// Another program with some windows; it draws to one of them between the grabs.
class Program {
public:
    explicit Program(int windows) : connection_(xcb_connect(nullptr, nullptr))
    {
        const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        for (int i = 0; i < windows; ++i) {
            const xcb_window_t window = xcb_generate_id(connection_);
            const std::uint32_t values[] = {0x102030U * static_cast<std::uint32_t>(i + 1), 1};
            xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen->root,
                              static_cast<std::int16_t>(i * 40), static_cast<std::int16_t>(i * 20), 640, 480, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                              XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
            xcb_map_window(connection_, window);
            windows_.push_back(window);
        }
        gc_ = xcb_generate_id(connection_);
        xcb_create_gc(connection_, gc_, screen->root, 0, nullptr);
        sync();
    }
    ~Program() { xcb_disconnect(connection_); }

    void draw()
    {
        const xcb_rectangle_t part{0, 0, 16, 16};
        const std::uint32_t color = ++color_;
        xcb_change_gc(connection_, gc_, XCB_GC_FOREGROUND, &color);
        xcb_poly_fill_rectangle(connection_, windows_.back(), gc_, 1, &part);
        sync();
    }
    void move()
    {
        const std::uint32_t x = ++color_ % 100;
        xcb_configure_window(connection_, windows_.back(), XCB_CONFIG_WINDOW_X, &x);
        sync();
    }
    const std::vector<xcb_window_t>& windows() const { return windows_; }

private:
    void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

    xcb_connection_t* connection_;
    xcb_gcontext_t gc_ = 0;
    std::uint32_t color_ = 0;
    std::vector<xcb_window_t> windows_;
};

enum class Change { None, Drawn };

void grabMainDisplay(benchmark::State& state, Change change)
{
    Program program(1);
    const auto grabber = lumavex::createXcbScreenGrabber();
    for (auto _ : state) {
        if (change == Change::Drawn) {
            state.PauseTiming();
            program.draw();
            state.ResumeTiming();
        }
        if (grabber->grabMainDisplay().outcome != GrabOutcome::Success)
            state.SkipWithError("no picture");
    }
}

void grabTwentyWindows(benchmark::State& state, Change change)
{
    Program program(20);
    const auto grabber = lumavex::createXcbScreenGrabber();
    auto numbers = std::vector<std::uint32_t>(program.windows().rbegin(), program.windows().rend());
    numbers.push_back(grabber->windowDescriptions(lumavex::ListOnScreenOnly).back().number);
    for (auto _ : state) {
        if (change == Change::Drawn) {
            state.PauseTiming();
            program.draw();
            state.ResumeTiming();
        }
        if (grabber->grabWindows(numbers).outcome != GrabOutcome::Success)
            state.SkipWithError("no picture");
    }
}

enum class Windows { Still, Moving, Coming };

void describeTwentyWindows(benchmark::State& state, Windows windows)
{
    Program program(20);
    const auto grabber = lumavex::createXcbScreenGrabber();
    for (auto _ : state) {
        if (windows != Windows::Still) {
            state.PauseTiming();
            const Program visitor(windows == Windows::Coming ? 1 : 0);
            program.move();
            state.ResumeTiming();
            benchmark::DoNotOptimize(grabber->windowDescriptions(lumavex::ListOnScreenOnly));
            state.PauseTiming();
        } else {
            benchmark::DoNotOptimize(grabber->windowDescriptions(lumavex::ListOnScreenOnly));
        }
        if (windows != Windows::Still)
            state.ResumeTiming();
    }
}

void mouseLocation(benchmark::State& state)
{
    const auto grabber = lumavex::createXcbScreenGrabber();
    for (auto _ : state)
        benchmark::DoNotOptimize(grabber->mouseLocation());
}

} // namespace

BENCHMARK_CAPTURE(grabMainDisplay, changed, Change::Drawn)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(grabMainDisplay, unchanged, Change::None)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(grabTwentyWindows, changed, Change::Drawn)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(grabTwentyWindows, unchanged, Change::None)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(describeTwentyWindows, still, Windows::Still)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_CAPTURE(describeTwentyWindows, moving, Windows::Moving)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime()
    ->Iterations(300);
BENCHMARK_CAPTURE(describeTwentyWindows, coming, Windows::Coming)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime()
    ->Iterations(300);
BENCHMARK(mouseLocation)->Unit(benchmark::kMicrosecond)->UseRealTime();

BENCHMARK_MAIN();
