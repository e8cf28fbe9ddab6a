// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RecordingSummary.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <cmath>

namespace lumavex {

namespace {

constexpr int fewFrames = 10; ///< per second

QString link(const QString& text)
{
    return QStringLiteral("<a href=\"settings\">%1</a>").arg(text);
}

QString rateText(int rate)
{
    return rate == 1 ? RecordingSummary::tr("1 frame a second") : RecordingSummary::tr("%1 frames a second").arg(rate);
}

QString framesText(std::int64_t frames)
{
    return RecordingSummary::tr("%Ln frames", nullptr, int(frames));
}

/// The settings cannot be changed while a recording exists, so there is no link to them then.
QString describe(const SummaryFacts& facts)
{
    const QString size = QStringLiteral("%1\u2009\u00d7\u2009%2").arg(facts.width).arg(facts.height);
    // Bold, because so low a rate may surprise the user.
    const QString rate =
        facts.rate < fewFrames ? QStringLiteral("<b>%1</b>").arg(rateText(facts.rate)) : rateText(facts.rate);
    const QString sound = facts.sound ? RecordingSummary::tr("with sound") : RecordingSummary::tr("no sound");
    const bool changeable = !facts.frames;
    return QStringList{facts.picture.toHtmlEscaped(), size, changeable ? link(rate) : rate,
                       changeable ? link(sound) : sound}
        .join(QStringLiteral(" &nbsp;\u00b7&nbsp; "));
}

QString plain(const QString& html)
{
    return QTextDocumentFragment::fromHtml(html).toPlainText();
}

} // namespace

RecordingSummary::RecordingSummary(QWidget* parent)
    : QWidget(parent), what_(new QLabel(this)), frames_(new QLabel(this))
{
    what_->setTextFormat(Qt::RichText);
    what_->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    what_->setWordWrap(true);
    what_->setToolTip(tr("What will be recorded; frame rate and sound are set in the settings"));
    what_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    connect(what_, &QLabel::linkActivated, this, &RecordingSummary::settingsWanted);
    frames_->setTextFormat(Qt::PlainText);
    frames_->setToolTip(tr("Frames recorded so far"));
    frames_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    frames_->setMinimumWidth(frames_->fontMetrics().horizontalAdvance(framesText(888888)));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 2, 10, 4);
    layout->setSpacing(16);
    layout->addWidget(what_, 1);
    layout->addWidget(frames_);
}

void RecordingSummary::show(const SummaryFacts& facts)
{
    if (facts == facts_)
        return;
    facts_ = facts;
    if (isVisible())
        layOut();
}

void RecordingSummary::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    QMetaObject::invokeMethod(this, &RecordingSummary::layOut, Qt::QueuedConnection);
}

void RecordingSummary::layOut()
{
    frames_->setText(facts_.frames ? framesText(*facts_.frames) : QString());
    if (const QString text = describe(facts_); text != what_->text()) {
        what_->setText(text);
        QTextDocument line;
        line.setDefaultFont(what_->font());
        line.setDocumentMargin(0);
        line.setHtml(text);
        lineWidth_ = static_cast<int>(std::ceil(line.idealWidth())) + 1;
        setAccessibleName(plain(text));
        Q_EMIT roomChanged();
    }
}

QSize RecordingSummary::sizeHint() const
{
    const QMargins margins = layout()->contentsMargins();
    const int width = lineWidth_ + layout()->spacing() + frames_->minimumWidth() + margins.left() + margins.right();
    return {width, frames_->sizeHint().height() + margins.top() + margins.bottom()};
}

QString RecordingSummary::text() const
{
    const QString what = plain(describe(facts_));
    return facts_.frames ? what + u' ' + framesText(*facts_.frames) : what;
}

} // namespace lumavex
