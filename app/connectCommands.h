// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumavex {

class AppDelegate;
class Window_Main;

/// Connects every action of the main window to the application delegate's command.
void connectCommands(Window_Main& window, AppDelegate& app);

} // namespace lumavex
