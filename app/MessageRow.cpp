// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageRow.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

#include <algorithm>

namespace lumavex {

namespace {

constexpr int leftMargin = 10;
constexpr int rightMargin = 6;
constexpr int lineMargin = 4; ///< above and below
constexpr int spacing = 8;
constexpr int readableCharacters = 36; ///< per line; shorter lines are hard to read

/// Gives the row the role of an alert; the role of its base class, a frame, is not announced.
QAccessibleInterface* accessibleRow(const QString&, QObject* object)
{
    auto* row = qobject_cast<MessageRow*>(object);
    return row ? new QAccessibleWidget(row, QAccessible::AlertMessage) : nullptr;
}

} // namespace

MessageRow::MessageRow(MessageTopic topic, const Message& message, QWidget* parent)
    : QFrame(parent), topic_(topic), icon_(new QLabel(this)), text_(new QLabel(message.text, this))
{
    static const bool installed = (QAccessible::installFactory(accessibleRow), true);
    Q_UNUSED(installed)
    const auto picture =
        message.kind == Message::Kind::Warning ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    icon_->setPixmap(style()->standardIcon(picture).pixmap(style()->pixelMetric(QStyle::PM_SmallIconSize)));
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_->setForegroundRole(QPalette::ToolTipText);

    for (const MessageAction& action : message.actions) {
        auto* button = new QPushButton(action.text, this);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, run = action.run] { Q_EMIT chosen(run); });
        buttons_.append(button);
    }
    close_ = new QToolButton(this); // created after the actions, so that the Tab key reaches them first
    close_->setAutoRaise(true);
    close_->setFocusPolicy(Qt::TabFocus);
    close_->setText(QStringLiteral("\u00d7")); // the style's own picture is dark on dark
    QFont large = close_->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    close_->setFont(large);
    close_->setToolTip(tr("Close this message (Esc)"));
    close_->setAccessibleName(tr("Close this message"));
    connect(close_, &QToolButton::clicked, this, &MessageRow::closed);

    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setAccessibleName(message.text);
    colourCloseButton();
}

QString MessageRow::text() const
{
    return text_->text();
}

QSize MessageRow::minimumSizeHint() const
{
    int widest = text_->minimumSizeHint().width();
    for (const QPushButton* button : buttons_)
        widest = std::max(widest, button->sizeHint().width());
    const int width =
        leftMargin + icon_->sizeHint().width() + spacing + widest + spacing + close_->sizeHint().width() + rightMargin;
    return {width, 0};
}

int MessageRow::arrange(int width, Arrange what) const
{
    const auto put = [&](QWidget* widget, const QRect& place) {
        if (what == Arrange::Place)
            widget->setGeometry(QStyle::visualRect(layoutDirection(), {0, 0, width, height()}, place));
    };
    const auto centred = [](const QSize& size, int x, int middle) {
        return QRect(QPoint(x, middle - size.height() / 2), size);
    };
    const QSize close = close_->sizeHint();
    const int left = leftMargin + icon_->sizeHint().width() + spacing;
    const int right = width - rightMargin - close.width() - spacing;
    int beside = right - left;
    int line = close.height();
    for (const QPushButton* button : buttons_) {
        beside -= button->sizeHint().width() + spacing;
        line = std::max(line, button->sizeHint().height());
    }
    const QFontMetrics letters = text_->fontMetrics();
    const int readable =
        std::min(letters.horizontalAdvance(text_->text()), readableCharacters * letters.averageCharWidth());
    const bool below = !buttons_.isEmpty() && beside <= readable;
    const int textWidth = below ? right - left : beside;
    const int textHeight = text_->heightForWidth(textWidth);
    const int first = std::max(textHeight, below ? close.height() : line);
    const int middle = lineMargin + first / 2;
    put(icon_, centred(icon_->sizeHint(), leftMargin, middle));
    put(text_, {left, middle - textHeight / 2, textWidth, textHeight});
    put(close_, centred(close, right + spacing, middle));

    int x = below ? left : left + textWidth + spacing;
    int y = below ? lineMargin + first + lineMargin : middle - line / 2;
    for (QPushButton* button : buttons_) {
        const int needed = std::min(button->sizeHint().width(), right - left);
        if (below && x > left && x + needed > right) {
            x = left;
            y += line + lineMargin;
        }
        put(button, centred({needed, button->sizeHint().height()}, x, y + line / 2));
        x += needed + spacing;
    }
    return (below ? y + line : lineMargin + first) + lineMargin;
}

bool MessageRow::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest) { // a child wants another size
        arrange(width(), Arrange::Place);
        updateGeometry();
    }
    return QFrame::event(event);
}

void MessageRow::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    arrange(width(), Arrange::Place);
}

void MessageRow::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colourCloseButton();
}

void MessageRow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        Q_EMIT closed();
    else
        QFrame::keyPressEvent(event);
}

/// Styles draw a tool button's text in the button text colour, which may be invisible on the row's colour.
void MessageRow::colourCloseButton()
{
    QPalette colours = close_->palette();
    colours.setColor(QPalette::ButtonText, palette().color(QPalette::ToolTipText));
    close_->setPalette(colours);
}

} // namespace lumavex
