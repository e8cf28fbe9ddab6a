// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRadioButton>

#include <array>
#include <cstdint>

namespace lumavex {

/// The nine buttons of one group, with the codes 0 to 8 in order.
class PositionRadios {
public:
    using Buttons = std::array<QRadioButton*, 9>;

    explicit PositionRadios(const Buttons& buttons) : buttons_(buttons) {}

    /// Turns every button off.
    void disable()
    {
        for (QRadioButton* button : buttons_) {
            button->setAutoExclusive(false); // an exclusive group keeps its last button checked
            button->setChecked(false);
            button->setAutoExclusive(true);
        }
        setTabStop(0);
    }
    /// Turns on the button of the code, after disable(); an unknown code turns on none.
    void turnOn(std::int64_t code)
    {
        if (code < 0 || code >= std::int64_t(buttons_.size()))
            return;
        buttons_[std::size_t(code)]->setChecked(true);
        setTabStop(std::size_t(code));
    }
    /// The code of the button that is on, the last one of several; `otherwise` when none is on.
    std::int64_t code(std::int64_t otherwise) const
    {
        for (std::size_t i = 0; i < buttons_.size(); ++i)
            if (buttons_[i]->isChecked())
                otherwise = std::int64_t(i);
        return otherwise;
    }
    const Buttons& buttons() const { return buttons_; }

private:
    /// Makes the group one stop of the Tab key; arrow keys move from one button to the next.
    void setTabStop(std::size_t stop)
    {
        for (std::size_t i = 0; i < buttons_.size(); ++i)
            buttons_[i]->setFocusPolicy(i == stop ? Qt::StrongFocus : Qt::ClickFocus);
    }

    Buttons buttons_;
};

} // namespace lumavex
