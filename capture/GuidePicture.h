// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QWidget>

namespace lumavex {

/// Shows a vector picture as large as the widget allows, in its own proportions and in the desktop's colours: #000000
/// stands for the text colour, #ffffff for the background of texts, #808080 for the colour between them, #0000aa for
/// the highlight. Other colours stay.
class GuidePicture final : public QWidget {
    Q_OBJECT
public:
    explicit GuidePicture(QWidget* parent = nullptr) : QWidget(parent) {}

    /// The path of an SVG file or resource.
    void setPicture(const QString& path);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QByteArray svg_;
};

} // namespace lumavex
