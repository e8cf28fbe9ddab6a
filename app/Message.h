// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace lumavex {

/// The subject of a message in the main window. At most one message of each topic is shown: a new one replaces it, and
/// whoever sees its cause go withdraws it.
enum class MessageTopic {
    General,    ///< without a cause that could go; stays until it is closed or replaced
    Session,    ///< the desktop session as a whole
    Settings,   ///< reading and storing the settings
    Encoder,    ///< the program that joins sound and picture
    Screen,     ///< reading the screen
    ScreenSize, ///< the screen has another size than at the start
    Region,     ///< the region of the screen that is recorded
    Window,     ///< the one window that is recorded
    Camera,
    Sound,
    Rate,      ///< frames that come too late
    Load,      ///< the processors are busy
    Recording, ///< how the latest recording ended
    Saving,    ///< the recording that is being saved
    Picture,   ///< a snapshot
};

/// A command that a message offers. Its button's text is `text`; an ampersand marks the shortcut.
struct MessageAction {
    QString text;
    std::function<void()> run;
};

/// A text that the main window shows without stopping the work.
struct Message {
    enum class Kind { Warning, Information };

    QString text;
    std::vector<MessageAction> actions = {}; ///< two at most
    Kind kind = Kind::Warning;
};

} // namespace lumavex
