// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

namespace lumavex {

/// The desktop's style, but for two things:
/// - Links can be read on the windows' colour. Where a dark theme gives none of its own they would be blue.
/// - The arrow at the end of a bar that is too long is drawn in the colour of the text. The style's own is a picture,
/// dark
///   on dark, and every bar asks for it, used or not: Qt loaded its plugins for all picture formats before the window
///   could come.
class Style final : public QProxyStyle {
public:
    using QProxyStyle::polish;
    void polish(QPalette& palette) override;
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override;
};

} // namespace lumavex
