// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/Window_Progress.h"

#include "ui_Window_Progress.h"

#include <QCloseEvent>
#include <QLayout>
#include <QPushButton>

#include <algorithm>
#include <cmath>

namespace lumavex {

Window_Progress::Window_Progress(QWidget* mainWindow)
    : QDialog(mainWindow, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      ui_(std::make_unique<Ui::Window_Progress>())
{
    ui_->setupUi(this);
    layout()->setSizeConstraint(QLayout::SetFixedSize); // resizing or maximising is useless
    // As wide as its widest text from the start, so that the bar keeps its length.
    ui_->labelPercentage->setMinimumWidth(
        ui_->labelPercentage->fontMetrics().horizontalAdvance(QStringLiteral("100 %")));
    showPercentage();
    setCancelling(Cancelling::Impossible);
    connect(ui_->btnCancel, &QPushButton::clicked, this, [this] {
        ui_->btnCancel->setEnabled(false);
        Q_EMIT cancelled();
    });
}

Window_Progress::~Window_Progress() = default;

void Window_Progress::setDescription(const QString& text)
{
    ui_->labelDescription->setText(text);
}

void Window_Progress::setProgress(float percentage)
{
    ui_->progressBar->setValue(static_cast<int>(std::lround(std::clamp(percentage, 0.0F, 100.0F))));
    showPercentage();
    ui_->progressBar->repaint();
    ui_->labelPercentage->repaint();
}

void Window_Progress::setCancelling(Cancelling cancelling)
{
    ui_->btnCancel->setVisible(cancelling == Cancelling::Offered);
    ui_->btnCancel->setEnabled(cancelling == Cancelling::Offered);
}

void Window_Progress::reject() {}

void Window_Progress::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

void Window_Progress::showPercentage()
{
    ui_->labelPercentage->setText(tr("%1 %").arg(ui_->progressBar->value()));
}

} // namespace lumavex
