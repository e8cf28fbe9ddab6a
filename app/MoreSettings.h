// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"

#include <QString>

#include <algorithm>
#include <iterator>
#include <span>

namespace lumavex {

/// A choice beside the settings of the dialog. It is offered where it matters, remembered under `key` in
/// lumavex/more.ini, and stands there as a word: `words` names the values 0, 1, … of `Value`, an enumeration or bool.
template <class Value>
struct Choice {
    const char* key;
    Value standard; ///< what holds while nobody has chosen
    std::span<const char* const> words;
};

/// Shown in place of the one window that is recorded while it is not on the screen.
enum class WhenWindowGoes { Others, Hold };

/// Every choice there is. A new one is a row here; nothing else lists them.
namespace choices {

inline constexpr const char* goneWindowWords[] = {"others", "hold"};
inline constexpr Choice<WhenWindowGoes> whenWindowGoes{"when_window_goes", WhenWindowGoes::Others, goneWindowWords};

} // namespace choices

/// The choices that the user has made, each written at once. Main thread only.
class MoreSettings {
public:
    /// `store` must outlive this object.
    explicit MoreSettings(UserDefaults& store) : store_(store) {}

    /// A word that is none of the choice's counts as not chosen, and stays stored.
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
