// SPDX-License-Identifier: GPL-3.0-or-later
#include "capture/Window_FollowCursor_How_It_Works.h"

#include "ui_Window_FollowCursor_How_It_Works.h"

#include <utility>

namespace lumavex {

Window_FollowCursor_How_It_Works::Window_FollowCursor_How_It_Works(StopShowing stopShowing)
    : ModeGuide(std::move(stopShowing)), ui_(std::make_unique<Ui::Window_FollowCursor_How_It_Works>())
{
    load(*ui_, QStringLiteral(":/guides/follow_cursor.svg"));
}

Window_FollowCursor_How_It_Works::~Window_FollowCursor_How_It_Works() = default;

} // namespace lumavex
