// SPDX-License-Identifier: GPL-3.0-or-later
// first_window PROGRAM [ARGUMENT...]: starts the program and prints the seconds until the server maps its first window
// on DISPLAY, which is before it is painted; then kills it. It waits for the server's event, so that it takes no
// processor time from the program. Needs a window manager whose frames are mapped as ordinary windows, such as openbox,
// and no other program that opens windows.
#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPatience{20'000};
constexpr int kSmallest = 50; ///< pixels; toolkits map small invisible helper windows

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

/// Ignores windows that the window manager does not manage: users do not regard them as windows.
bool isFirstWindow(xcb_connection_t* connection, const xcb_generic_event_t& event)
{
    if ((event.response_type & 0x7f) != XCB_MAP_NOTIFY)
        return false;
    const auto& mapped = reinterpret_cast<const xcb_map_notify_event_t&>(event);
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, mapped.window), nullptr));
    return !mapped.override_redirect && geometry && geometry->width >= kSmallest;
}

/// False when no window came in time.
bool waitForWindow(xcb_connection_t* connection, Clock::time_point deadline)
{
    for (;;) {
        while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)})
            if (isFirstWindow(connection, *event))
                return true;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd server{xcb_get_file_descriptor(connection), POLLIN, 0};
        if (left <= 0 || poll(&server, 1, static_cast<int>(left)) <= 0)
            return false;
    }
}

} // namespace

int main(int argc, char** argv)
{
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    if (argc < 2 || xcb_connection_has_error(connection))
        return 2;
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root,
                                 XCB_CW_EVENT_MASK, &mask);
    const Owned<xcb_get_input_focus_reply_t> synced(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));

    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&quiet, stream, "/dev/null", stream == STDIN_FILENO ? O_RDONLY : O_WRONLY, 0);
    const Clock::time_point begun = Clock::now();
    pid_t program = 0;
    if (posix_spawnp(&program, argv[1], &quiet, nullptr, argv + 1, environ) != 0)
        return 2;
    const bool came = waitForWindow(connection, begun + kPatience);
    const std::chrono::duration<double> taken = Clock::now() - begun;
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    if (came)
        std::printf("%.6f\n", taken.count());
    return came ? 0 : 1;
}
