// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "capture/ModeGuide.h"

#include <functional>
#include <memory>

namespace Ui {
class Window_WindowExclusive_How_It_Works;
}

namespace lumavex {

/// The guide of the window-exclusive capture type.
class Window_WindowExclusive_How_It_Works final : public ModeGuide {
    Q_OBJECT
public:
    /// Called at most once, when the user changed the second box and pressed OK.
    using ChooseHolding = std::function<void(bool hold)>;

    /// `hold`: the second box is ticked, so that a window that disappears leaves its last picture.
    explicit Window_WindowExclusive_How_It_Works(StopShowing stopShowing, bool hold = false,
                                                 ChooseHolding chooseHolding = {});
    ~Window_WindowExclusive_How_It_Works() override;

private:
    std::unique_ptr<Ui::Window_WindowExclusive_How_It_Works> ui_;
};

} // namespace lumavex
