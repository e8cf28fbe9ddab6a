// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace lumavex {

/// The subject of a message in the main window. At most one message per topic is shown: a new one replaces it, and the
/// code that notices the end of its cause withdraws it.
enum class MessageTopic {
    General,    ///< no cause that can end; stays until closed or replaced
    Session,    ///< the desktop session as a whole
    Settings,   ///< reading and storing the settings
    Encoder,    ///< the program that joins sound and picture
    Screen,     ///< failures to read the screen
    ScreenSize, ///< the screen's size differs from that at the start
    Region,     ///< the recorded region of the screen
    Window,     ///< the single recorded window
    Camera,
    Sound,
    Rate,      ///< frames that are late
    Load,      ///< the processors are busy
    Recording, ///< outcome of the latest recording
    Saving,    ///< the recording being saved
    Picture,   ///< a snapshot
};

/// A command that a message offers. `text` is the text of its button; an ampersand marks the shortcut.
struct MessageAction {
    QString text;
    std::function<void()> run;
};

/// A text that the main window shows without interrupting the user.
struct Message {
    enum class Kind { Warning, Information };

    QString text;
    std::vector<MessageAction> actions = {}; ///< at most two
    Kind kind = Kind::Warning;
};

} // namespace lumavex
