// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

namespace lumavex {

/// The desktop's style with two changes:
/// - Links are legible on the window colour. Dark themes that define no link colour would show them blue.
/// - The arrow at the end of a bar that is too long has the text colour. The style's own arrow is a dark picture that
///   every bar requests, used or not, and for which Qt loads its plugins for all picture formats.
class DesktopStyle final : public QProxyStyle {
public:
    using QProxyStyle::polish;
    void polish(QPalette& palette) override;
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override;
};

} // namespace lumavex
