// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace lumavex {

/// The meaning of a failed system call (`error` is its errno) on a file in `folder`, as text for the user that ends a
/// sentence. Any thread.
QString reasonForFileError(int error, const QString& folder);

} // namespace lumavex
