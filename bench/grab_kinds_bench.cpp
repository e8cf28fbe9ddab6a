// SPDX-License-Identifier: GPL-3.0-or-later
// Cost of each kind of grab relative to that of the entire screen, while every pixel of a full-screen window changes
// with every grab: tests/support/with-display [--compositor] --size 2560x1440x24 build/ci/bench/grab_kinds_bench
// The frames keep a recording's pace, so that a compositing manager has painted each of them before the grab, whatever
// the grab costs. Its painting counts as the server's time too: with one, compare the column of the grab alone.
#include "platform/x11/XcbScreenGrabber.h"

#include <xcb/composite.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kFrames = 30;
constexpr int kRounds = 5;
constexpr std::chrono::milliseconds kServerEnds{2}; ///< time for its work after the answer
constexpr int kProfiledFrames = 900;
constexpr std::chrono::microseconds kInterval{33333};

/// A full-screen window that moves, and two small ones above it.
class Scene {
public:
    Scene() : connection_(xcb_connect(nullptr, nullptr))
    {
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const auto width = screen_->width_in_pixels;
        const auto height = screen_->height_in_pixels;
        moving = show(0, 0, width, height);
        small = {show(100, 80, 640, 200), show(static_cast<std::int16_t>(width / 2), height / 2, 640, 400)};
        picture_ = xcb_generate_id(connection_);
        xcb_create_pixmap(connection_, screen_->root_depth, picture_, screen_->root, width, height + 100);
        gc_ = xcb_generate_id(connection_);
        const std::uint32_t noExposures = 0;
        xcb_create_gc(connection_, gc_, picture_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
        for (int y = 0; y < height + 100; ++y) {
            std::vector<std::uint32_t> row(width);
            for (std::size_t x = 0; x < row.size(); ++x)
                row[x] = static_cast<std::uint32_t>(x * 2654435761U) ^ static_cast<std::uint32_t>(y * 40503);
            xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, picture_, gc_, width, 1, 0,
                          static_cast<std::int16_t>(y), 0, screen_->root_depth, width * 4U,
                          reinterpret_cast<const std::uint8_t*>(row.data()));
        }
        sync();
    }
    ~Scene() { xcb_disconnect(connection_); }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void step()
    {
        xcb_copy_area(connection_, picture_, moving, gc_, 0, static_cast<std::int16_t>(++step_ % 100), 0, 0,
                      screen_->width_in_pixels, screen_->height_in_pixels);
        sync();
    }
    void showSmall(bool shown)
    {
        for (const xcb_window_t window : small)
            shown ? xcb_map_window(connection_, window) : xcb_unmap_window(connection_, window);
        sync();
    }

    /// Has the server draw the moving window off the screen and copy each drawing to the screen, as it must for whoever
    /// reads what lies behind other windows.
    void redirect(bool redirected)
    {
        redirected ? xcb_composite_redirect_window(connection_, moving, XCB_COMPOSITE_REDIRECT_AUTOMATIC)
                   : xcb_composite_unredirect_window(connection_, moving, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        sync();
    }

    xcb_window_t moving;
    std::vector<xcb_window_t> small;

private:
    xcb_window_t show(std::int16_t x, std::int16_t y, std::uint16_t width, std::uint16_t height)
    {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {0x806040, 1};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, x, y, width, height, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(connection_, window);
        return window;
    }
    void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
    xcb_pixmap_t picture_ = 0;
    xcb_gcontext_t gc_ = 0;
    int step_ = 0;
};

struct Cost {
    double own = 0; ///< milliseconds of processor time a frame
    double server = 0;
    double grab = 0; ///< of both, from the call to just after it
    double both() const { return own + server; }
};

Cost now()
{
    timespec own{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
    Cost cost{static_cast<double>(own.tv_sec) * 1e3 + static_cast<double>(own.tv_nsec) / 1e6};
    if (const char* const server = std::getenv("LUMAVEX_TEST_X_SERVER")) {
        double nanoseconds = 0;
        std::ifstream("/proc/" + std::string(server) + "/schedstat") >> nanoseconds;
        cost.server = nanoseconds / 1e6;
    }
    return cost;
}

struct Kind {
    const char* name;
    bool smallShown;
    std::function<lumavex::Grab(lumavex::ScreenGrabber&)> grab; ///< null: nobody reads
    bool redirected = false;                                    ///< whoever grabs
    std::vector<Cost> costs = {};
};

void measure(Scene& scene, Kind& kind, int frames = kFrames)
{
    scene.showSmall(kind.smallShown);
    const auto grabber = lumavex::createXcbScreenGrabber(); // ends the redirections of the previous kind
    if (kind.redirected)
        scene.redirect(true);
    auto due = std::chrono::steady_clock::now();
    double grabs = 0;
    const auto frame = [&] {
        std::this_thread::sleep_until(due += kInterval / 2);
        scene.step();
        std::this_thread::sleep_until(due += kInterval / 2);
        const Cost before = now();
        if (kind.grab && kind.grab(*grabber).outcome != lumavex::GrabOutcome::Success)
            std::puts("no picture");
        std::this_thread::sleep_for(kServerEnds);
        grabs += now().both() - before.both();
    };
    for (int i = 0; i < 4; ++i)
        frame();
    grabs = 0;
    const Cost before = now();
    for (int i = 0; i < frames; ++i)
        frame();
    const Cost after = now();
    if (kind.redirected)
        scene.redirect(false);
    kind.costs.push_back({(after.own - before.own) / frames, (after.server - before.server) / frames, grabs / frames});
}

/// The least of all rounds, because other programs can only add to it.
Cost least(const Kind& kind)
{
    Cost cost = kind.costs.front();
    for (const Cost& other : kind.costs)
        cost = {std::min(cost.own, other.own), std::min(cost.server, other.server), std::min(cost.grab, other.grab)};
    return cost;
}

} // namespace

int main(int argc, char** argv)
{
    Scene scene;
    const std::uint32_t desktop =
        lumavex::createXcbScreenGrabber()->windowDescriptions(lumavex::ListOnScreenOnly).back().number;
    const auto entire = [](lumavex::ScreenGrabber& grabber) { return grabber.grabMainDisplay(); };
    const auto follow = [](lumavex::ScreenGrabber& grabber) {
        grabber.mouseLocation();
        return grabber.grabMainDisplay();
    };
    const auto windows = [](std::vector<std::uint32_t> numbers) {
        return [numbers](lumavex::ScreenGrabber& grabber) { return grabber.grabWindows(numbers); };
    };
    std::vector<Kind> kinds{
        {"the scene alone", true, nullptr},
        {"entire screen", true, entire},
        {"nobody reads, window redirected", true, nullptr, true},
        {"entire screen, window redirected", true, entire, true},
        {"follow cursor", true, follow},
        {"one window", false, windows({scene.moving})},
        {"one window, partly covered", true, windows({scene.moving})},
        {"windows left out", true, windows({scene.moving, desktop})},
        {"every pixel painted (another order than the screen's)", true,
         windows({scene.moving, scene.small[0], scene.small[1], desktop})},
    };
    if (const auto i = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : kinds.size(); i < kinds.size()) {
        measure(scene, kinds[i], kProfiledFrames);
        return 0;
    }
    for (int round = 0; round < kRounds; ++round)
        for (Kind& kind : kinds)
            measure(scene, kind);
    const Cost scenery = least(kinds[0]);
    const Cost entirely = least(kinds[1]);
    std::printf("%-56s %9s %9s %7s %9s %7s\n", "milliseconds of processor time a frame", "own", "X server", "ratio",
                "grab", "ratio");
    std::printf("%-56s %9.2f %9.2f\n", kinds[0].name, scenery.own, scenery.server);
    for (std::size_t i = 1; i < kinds.size(); ++i) {
        const Cost cost = least(kinds[i]);
        std::printf("%-56s %9.2f %9.2f %7.2f %9.2f %7.2f\n", kinds[i].name, cost.own - scenery.own,
                    cost.server - scenery.server, (cost.both() - scenery.both()) / (entirely.both() - scenery.both()),
                    cost.grab - scenery.grab, (cost.grab - scenery.grab) / (entirely.grab - scenery.grab));
    }
}
