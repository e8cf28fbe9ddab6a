// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/WindowComposite.h"

namespace lumavex {

Grab WindowComposite::compose(const PaintRequest& request)
{
    if (!painter_.prepare(request))
        return {};
    const ChangedArea changed = painter_.paint();
    if (!series_.read(painter_.canvas(), QRect(QPoint(0, 0), request.canvas.size()), changed)) {
        painter_.repaint();
        return {};
    }
    series_.compare();
    return series_.finish();
}

} // namespace lumavex
