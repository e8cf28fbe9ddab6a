// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <string>

namespace lumavex {

/// Reserved disk space, so that essential data can still be written after another program has filled the disk. The
/// reserve is a file without a name: it is freed with the object or when the program is killed. A file system that
/// cannot allocate in advance reserves nothing. One thread at a time.
class DiskReserve {
public:
    /// Reserves `bytes` on the disk of `folder`; nothing when that much is not free.
    void hold(const std::string& folder, std::int64_t bytes);
    /// Frees the reserve. False when nothing was reserved.
    bool giveBack();

private:
    FileDescriptor file_;
};

} // namespace lumavex
