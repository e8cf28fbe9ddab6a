// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FocusKeeper.h"

#include "app/Window_Main.h"

namespace lumavex {

FocusKeeper::FocusKeeper(Window_Main& window) : window_(window), focused_(window.focusWidget()) {}

FocusKeeper::~FocusKeeper()
{
    const QWidget* focused = focused_.data();
    if (!focused || focused->isEnabled())
        return;
    const QToolBar& bar = *window_.toolBar;
    const struct {
        QAction* from;
        QAction* to;
    } successors[] = {{window_.btnRecord, window_.btnPause},
                      {window_.btnPause, window_.btnRecord},
                      {window_.btnStop, window_.btnRecord}};
    for (const auto& [from, to] : successors) {
        if (bar.widgetForAction(from) == focused && to->isEnabled()) {
            bar.widgetForAction(to)->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
    if (QWidget* passedOn = window_.focusWidget())
        passedOn->clearFocus();
}

} // namespace lumavex
