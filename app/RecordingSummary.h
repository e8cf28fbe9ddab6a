// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>

#include <cstdint>
#include <optional>

class QLabel;

namespace lumavex {

/// Facts about the coming recording that the summary shows.
struct SummaryFacts {
    QString picture; ///< visible content, e.g. "Entire screen with the camera"
    int width = 0;   ///< size of the movie in pixels
    int height = 0;
    int rate = 1; ///< frames per second
    bool sound = false;
    std::optional<std::int64_t> frames; ///< number of frames recorded so far; std::nullopt: no recording
    friend bool operator==(const SummaryFacts&, const SummaryFacts&) = default;
};

/// The line below the toolbar that summarises the coming recording and, while recording, counts the frames. It is
/// redrawn only when its text changes, since it may be on the recorded screen. The first event after it is shown lays
/// out the text, so that the window does not wait for its fonts.
class RecordingSummary final : public QWidget {
    Q_OBJECT
public:
    explicit RecordingSummary(QWidget* parent = nullptr);

    void show(const SummaryFacts& facts);
    /// The shown text without markup.
    QString text() const;
    /// The size that shows the text on one line, with room for the frame count of some hours.
    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;

Q_SIGNALS:
    /// The user clicked a part that the settings control.
    void settingsWanted();
    /// The text has changed and may need more room.
    void roomChanged();

private:
    void layOut();

    SummaryFacts facts_;
    QLabel* what_;
    int lineWidth_ = 0; ///< width of the text of what_ on one line
    QLabel* frames_;
};

} // namespace lumavex
