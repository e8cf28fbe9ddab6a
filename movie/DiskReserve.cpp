// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/DiskReserve.h"

#include <fcntl.h>

namespace lumavex {

void DiskReserve::hold(const std::string& folder, std::int64_t bytes)
{
    file_ = FileDescriptor(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (file_.isOpen() && ::fallocate(file_.get(), 0, 0, bytes) != 0)
        file_ = {};
}

bool DiskReserve::giveBack()
{
    const bool held = file_.isOpen();
    file_ = {};
    return held;
}

} // namespace lumavex
