// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>

#include <cstdint>
#include <optional>

class QLabel;

namespace lumavex {

/// What will be recorded, as the summary says it.
struct SummaryFacts {
    QString picture; ///< what is seen, e.g. "Entire screen with the camera"
    int width = 0;   ///< of the movie, in pixels
    int height = 0;
    int rate = 1; ///< frames a second
    bool sound = false;
    std::optional<std::int64_t> frames; ///< of the recording so far; nothing: there is none
    friend bool operator==(const SummaryFacts&, const SummaryFacts&) = default;
};

/// The line below the toolbar that says at a glance what will be recorded, and while recording how many frames really
/// were. It is drawn again only when what it says changes, since it may lie on the screen that is recorded. Its text is
/// laid out by the first event after it was shown: the window does not wait for its fonts.
class RecordingSummary final : public QWidget {
    Q_OBJECT
public:
    explicit RecordingSummary(QWidget* parent = nullptr);

    void show(const SummaryFacts& facts);
    /// What it says, as plain text.
    QString text() const;
    /// What is needed to read it all on one line, with room for the frames of some hours.
    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;

Q_SIGNALS:
    /// The user clicked a part that the settings decide.
    void settingsWanted();
    /// It says something else, which may need more room.
    void roomChanged();

private:
    void layOut();

    SummaryFacts facts_;
    QLabel* what_;
    int lineWidth_ = 0; ///< of what_'s text on one line
    QLabel* frames_;
};

} // namespace lumavex
