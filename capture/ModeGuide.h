// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QDialog>

#include <functional>

class QCheckBox;

namespace lumavex {

/// Common part of the three guides: a dialog that explains a capture type before it is entered. Main thread.
class ModeGuide : public QDialog {
    Q_OBJECT
public:
    /// Called at most once, when the user ticked the box and pressed OK: turns the guide's setting off and stores it.
    using StopShowing = std::function<void()>;

    /// Shows the guide and returns 1 when it is closed in any way; it is hidden then.
    int runModal();

    /// The OK button.
    void OnOK();

    /// Escape and the close button.
    void reject() override;

protected:
    explicit ModeGuide(StopShowing stopShowing);

    /// Sets up the interface file's widgets; the members of `ui` have the same names in all three files.
    template <typename Interface>
    void load(Interface& ui, const QString& picture)
    {
        ui.setupUi(this);
        ui.picture->setPicture(picture);
        checkDontShowAgain = ui.checkDontShowAgain;
        connect(ui.buttonOK, &QAbstractButton::clicked, this, &ModeGuide::OnOK);
    }

private:
    void windowWillClose();

    StopShowing stopShowing_;
    QCheckBox* checkDontShowAgain = nullptr; ///< owned by the dialog; null until load
};

} // namespace lumavex
