// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <string>

namespace lumavex {

/// Space held on a disk, so that what must still be written can be when another program has filled the disk meanwhile.
/// It has no name and is given back with the object, or when the program is killed. Where the file system cannot hold
/// space nothing is held. One thread at a time.
class DiskReserve {
public:
    /// Holds so many bytes on the disk of the folder; nothing when that much is not free.
    void hold(const std::string& folder, std::int64_t bytes);
    /// False when nothing was held.
    bool giveBack();

private:
    FileDescriptor file_;
};

} // namespace lumavex
