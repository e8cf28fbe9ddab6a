// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QWidget>

namespace lumavex {

/// Shows a picture as large as it fits, on a chequered background where it is transparent.
class PictureView final : public QWidget {
    Q_OBJECT
public:
    explicit PictureView(QWidget* parent = nullptr) : QWidget(parent) {}

    /// A null picture shows `emptyText` instead.
    void setPicture(const QImage& picture, const QString& emptyText);
    const QImage& picture() const { return picture_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture_;
    QString emptyText_;
};

} // namespace lumavex
