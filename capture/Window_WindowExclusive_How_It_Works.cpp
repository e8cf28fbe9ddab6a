// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/Window_WindowExclusive_How_It_Works.h"

#include "ui_Window_WindowExclusive_How_It_Works.h"

#include <utility>

namespace lumavex {

Window_WindowExclusive_How_It_Works::Window_WindowExclusive_How_It_Works(StopShowing stopShowing, bool hold,
                                                                         ChooseHolding chooseHolding)
    : ModeGuide(std::move(stopShowing)), ui_(std::make_unique<Ui::Window_WindowExclusive_How_It_Works>())
{
    load(*ui_, QStringLiteral(":/guides/window_exclusive.svg"));
    ui_->checkHoldPicture->setChecked(hold);
    connect(ui_->buttonOK, &QAbstractButton::clicked, this,
            [box = ui_->checkHoldPicture, hold, choose = std::move(chooseHolding)] {
                if (choose && box->isChecked() != hold)
                    choose(box->isChecked());
            });
}

Window_WindowExclusive_How_It_Works::~Window_WindowExclusive_How_It_Works() = default;

} // namespace lumavex
