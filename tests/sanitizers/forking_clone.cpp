// SPDX-License-Identifier: GPL-3.0-or-later
// Part of every program built with the thread sanitizer. QProcess starts a program by a clone that shares this
// process's memory until it runs. What GCC 12's sanitizer notes of such a child it notes in the thread that made it,
// which it then believes to ignore every lock from there on. So the child gets memory of its own here.
#include <cstdarg>
#include <dlfcn.h>
#include <sched.h>
#include <sys/types.h>

extern "C" int clone(int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept
{
    va_list more;
    va_start(more, argument);
    auto* const parentTid = va_arg(more, pid_t*); // or the process's descriptor, as the flags say
    va_end(more);
    using Clone = int (*)(int (*)(void*), void*, int, void*, ...);
    const auto next = reinterpret_cast<Clone>(dlsym(RTLD_NEXT, "clone"));
    return next(run, stack, flags & ~(CLONE_VM | CLONE_VFORK), argument, parentTid, nullptr, nullptr);
}
