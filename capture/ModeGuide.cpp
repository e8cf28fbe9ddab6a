// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/ModeGuide.h"

#include <QCheckBox>

#include <utility>

namespace lumavex {

namespace {
constexpr int modalEnd = 1; ///< for every way to close the guide: the capture type is entered
}

ModeGuide::ModeGuide(StopShowing stopShowing) : stopShowing_(std::move(stopShowing))
{
    setWindowModality(Qt::ApplicationModal);
}

int ModeGuide::runModal()
{
    return exec();
}

void ModeGuide::OnOK()
{
    if (checkDontShowAgain->isChecked())
        stopShowing_();
    done(modalEnd);
}

void ModeGuide::reject()
{
    windowWillClose();
}

void ModeGuide::windowWillClose()
{
    // The box is not read here: closing the window never turns the guide off.
    done(modalEnd);
}

} // namespace lumavex
