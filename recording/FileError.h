// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lumavex {

/// What a failed call of the system (`error` is its errno) on a file in `folder` means, in the user's words, as the end
/// of a sentence. Any thread.
QString reasonForFileError(int error, const QString& folder);

} // namespace lumavex
