// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "capture/ModeGuide.h"

#include <memory>

namespace Ui {
class Window_FollowCursor_How_It_Works;
}

namespace lumavex {

/// The guide of the follow-cursor capture type.
class Window_FollowCursor_How_It_Works final : public ModeGuide {
    Q_OBJECT
public:
    explicit Window_FollowCursor_How_It_Works(StopShowing stopShowing);
    ~Window_FollowCursor_How_It_Works() override;

private:
    std::unique_ptr<Ui::Window_FollowCursor_How_It_Works> ui_;
};

} // namespace lumavex
