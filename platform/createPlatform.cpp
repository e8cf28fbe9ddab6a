// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Platform.h"

namespace lumavex {

Platform createPlatform()
{
    return {};
}

} // namespace lumavex
