// SPDX-License-Identifier: GPL-3.0-or-later
// Preloaded into a program, lets every answer with pixels of the screen take longer, by LUMAVEX_SLOW_MILLISECONDS.
#include <xcb/shm.h>

#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

extern "C" xcb_shm_get_image_reply_t*
xcb_shm_get_image_reply(xcb_connection_t* connection, xcb_shm_get_image_cookie_t cookie, xcb_generic_error_t** error)
{
    using Function = decltype(&xcb_shm_get_image_reply);
    static const auto library = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "xcb_shm_get_image_reply"));
    static const char* const milliseconds = std::getenv("LUMAVEX_SLOW_MILLISECONDS");
    usleep(static_cast<useconds_t>(milliseconds ? std::atoi(milliseconds) : 0) * 1000);
    return library(connection, cookie, error);
}
