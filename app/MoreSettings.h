// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"

#include <QString>

#include <algorithm>
#include <iterator>
#include <span>

namespace lumavex {

/// A choice outside the settings dialog. The program offers it in its context and stores it under `key` in
/// lumavex/more.ini as a word: `words` names the values 0, 1, … of `Value`, an enumeration or bool.
template <class Value>
struct Choice {
    const char* key;
    Value standard; ///< default until the user chooses
    std::span<const char* const> words;
};

/// Replacement for the single recorded window while it is not on the screen.
enum class WhenWindowGoes { Others, Hold };

/// All choices. A new choice is a row here; no other place lists them.
namespace choices {

inline constexpr const char* goneWindowWords[] = {"others", "hold"};
inline constexpr Choice<WhenWindowGoes> whenWindowGoes{"when_window_goes", WhenWindowGoes::Others, goneWindowWords};

} // namespace choices

/// The user's choices, each written to the store at once. Main thread only.
class MoreSettings {
public:
    /// `store` must outlive this object.
    explicit MoreSettings(UserDefaults& store) : store_(store) {}

    /// An unknown stored word counts as not chosen and stays stored.
    template <class Value>
    Value operator[](const Choice<Value>& choice) const
    {
        const auto word = store_.stringForKey(QString::fromLatin1(choice.key));
        const auto found =
            std::ranges::find_if(choice.words, [&](const char* name) { return word && *word == QLatin1String(name); });
        return found == choice.words.end() ? choice.standard
                                           : static_cast<Value>(std::distance(choice.words.begin(), found));
    }

    template <class Value>
    void choose(const Choice<Value>& choice, Value value)
    {
        store_.setObject_forKey(QString::fromLatin1(choice.words[static_cast<std::size_t>(value)]),
                                QString::fromLatin1(choice.key));
    }

private:
    UserDefaults& store_;
};

} // namespace lumavex
