// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "settings_dialog/DialogSettings.h"
#include "settings_dialog/PositionRadios.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <vector>

class QComboBox;
class QSlider;

namespace Ui {
class Window_Configurations;
}

namespace lumavex {

class Dialogs;
class FrameThumbnail;

/// The settings dialog, modal to the whole program. It edits its own copies: read the chosen values from `settings`
/// after OK; liveSettingsChanged reports values that take effect at once. Main thread.
class Window_Configurations final : public QDialog {
    Q_OBJECT
public:
    static constexpr int fastestRate = 30; ///< highest frame rate offered

    /// Returns the positions of the small pictures in the frame with these settings, including those of the subject.
    using OutlinesOf = std::function<std::vector<FrameOutline>(const DialogSettings&, SettingsSubject)>;

    /// `dialogs` must outlive this dialog; it asks for the overlay's file.
    Window_Configurations(QWidget* mainWindow, Dialogs& dialogs, const DialogSettings& settings,
                          const LiveSettings& live, const DialogChoices& choices, OutlinesOf outlines);
    ~Window_Configurations() override;

    /// Runs until the user presses OK or Cancel or closes the window. Returns the return code.
    int runModal();
    /// 1 after OK, 0 after Cancel and when the window was closed.
    std::int64_t returnCode() const { return returnCode_; }
    void setReturnCode(std::int64_t code) { returnCode_ = code; }

    /// The values as currently chosen. An unchanged control gives the value that it shows: for a value outside its
    /// range, the nearest one.
    DialogSettings settings() const;
    const LiveSettings& live() const { return live_; }
    FrameThumbnail& thumbnail();
    void setSoundInput(const QString& text);

    void OnOK();
    void OnCancel();

    void DisableScreenPositionRadios() { radioScreen.disable(); }
    void DisableCameraPositionRadios() { radioCamera.disable(); }
    void DisableOverlayPositionRadios() { radioOverlay.disable(); }
    void DisableOverlayRadios() { DisableOverlayPositionRadios(); }
    // One for each of the nine places, row by row from the top left.
    void OnRadioScreen0() { choose(radioScreen, 0); }
    void OnRadioScreen1() { choose(radioScreen, 1); }
    void OnRadioScreen2() { choose(radioScreen, 2); }
    void OnRadioScreen3() { choose(radioScreen, 3); }
    void OnRadioScreen4() { choose(radioScreen, 4); }
    void OnRadioScreen5() { choose(radioScreen, 5); }
    void OnRadioScreen6() { choose(radioScreen, 6); }
    void OnRadioScreen7() { choose(radioScreen, 7); }
    void OnRadioScreen8() { choose(radioScreen, 8); }

    void OnRadioCamera0() { choose(radioCamera, 0); }
    void OnRadioCamera1() { choose(radioCamera, 1); }
    void OnRadioCamera2() { choose(radioCamera, 2); }
    void OnRadioCamera3() { choose(radioCamera, 3); }
    void OnRadioCamera4() { choose(radioCamera, 4); }
    void OnRadioCamera5() { choose(radioCamera, 5); }
    void OnRadioCamera6() { choose(radioCamera, 6); }
    void OnRadioCamera7() { choose(radioCamera, 7); }
    void OnRadioCamera8() { choose(radioCamera, 8); }

    void OnRadioOverlay0() { choose(radioOverlay, 0); }
    void OnRadioOverlay1() { choose(radioOverlay, 1); }
    void OnRadioOverlay2() { choose(radioOverlay, 2); }
    void OnRadioOverlay3() { choose(radioOverlay, 3); }
    void OnRadioOverlay4() { choose(radioOverlay, 4); }
    void OnRadioOverlay5() { choose(radioOverlay, 5); }
    void OnRadioOverlay6() { choose(radioOverlay, 6); }
    void OnRadioOverlay7() { choose(radioOverlay, 7); }
    void OnRadioOverlay8() { choose(radioOverlay, 8); }

    /// Asks for a picture, which becomes the overlay at once. A file that cannot be read leaves no overlay picture.
    void OnBrowseForImage();
    void OnSoundPreferences() { Q_EMIT soundPreferencesWanted(); }
    void OnApply();
    void OnChangeSaturation();
    void OnChangeBrightness();
    void OnChangeContrast();
    /// Resets the colours to neutral.
    void OnDefaults();

    void reject() override { OnCancel(); }

Q_SIGNALS:
    /// `live` has another overlay picture or other colour controls.
    void liveSettingsChanged();
    /// The user requests the system's sound settings.
    void soundPreferencesWanted();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void windowDidLoad(const DialogChoices& choices);
    void windowWillClose();
    void fillCombos(const QStringList& cameras);
    void showSettings();
    void showColours();
    void connectControls();
    void connectColours();
    void showValues();
    void choose(PositionRadios& group, int code);
    void changeColour(float& property, const QSlider& slider);
    SettingsSubject subject() const;

    Dialogs& dialogs_;
    const DialogSettings loaded_;
    LiveSettings live_;
    OutlinesOf outlines_;
    std::int64_t returnCode_ = 0;
    std::unique_ptr<Ui::Window_Configurations> ui_;
    PositionRadios radioScreen;
    PositionRadios radioCamera;
    PositionRadios radioOverlay;
};

} // namespace lumavex
