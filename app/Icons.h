// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

namespace lumavex {

/// One of the program's own icons, drawn at every size and scale from its picture ":/icons/<name>.svg". Its black parts
/// take the palette's current text colour when drawn, so that it suits light and dark themes, enabled and disabled.
QIcon themedIcon(const QString& name);

} // namespace lumavex
