// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

namespace lumavex {

/// The desktop's style with two changes:
/// - Links can be read on the windows' colour. Where a dark theme gives none of its own they would be blue.
/// - The arrow at the end of a bar that is too long is drawn in the colour of the text. The style's own is a dark
///   picture, and every bar asks for it, used or not, for which Qt loads its plugins of all picture formats.
class DesktopStyle final : public QProxyStyle {
public:
    using QProxyStyle::polish;
    void polish(QPalette& palette) override;
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override;
};

} // namespace lumavex
