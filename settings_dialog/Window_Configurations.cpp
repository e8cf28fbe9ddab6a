// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings_dialog/Window_Configurations.h"

#include "base/CameraModes.h"
#include "base/PictureFile.h"
#include "platform/Dialogs.h"

#include "ui_Window_Configurations.h"

#include <QCloseEvent>

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

constexpr int stepsPerUnit = 10; ///< a colour slider counts in tenths

const QStringList overlayTypes = {QStringLiteral("bmp"), QStringLiteral("jpg"),  QStringLiteral("gif"),
                                  QStringLiteral("png"), QStringLiteral("jpeg"), QStringLiteral("tif"),
                                  QStringLiteral("tiff")};

void fillRates(QComboBox& combo, std::int64_t rate)
{
    for (int i = 1; i <= Window_Configurations::fastestRate; ++i)
        combo.addItem(QString::number(i));
    combo.setCurrentIndex(rate >= 1 && rate <= Window_Configurations::fastestRate ? int(rate) - 1 : 0);
}

int within(const QSlider& slider, std::int64_t value)
{
    return int(std::clamp<std::int64_t>(value, slider.minimum(), slider.maximum()));
}

int stepsOf(float value)
{
    return int(std::lround(value * float(stepsPerUnit)));
}

QString textOfSize(int sizeCode)
{
    switch (sizeCode) {
    case 0:
        return Window_Configurations::tr("an eighth of the width");
    case 1:
        return Window_Configurations::tr("a quarter of the width");
    case 2:
        return Window_Configurations::tr("a third of the width");
    case 3:
        return Window_Configurations::tr("half of the width");
    default:
        return Window_Configurations::tr("the whole width");
    }
}

/// Makes the label as wide as its longest text, so that the slider beside it does not move.
void reserveRoom(QLabel& label, const QStringList& texts)
{
    int width = 0;
    for (const QString& text : texts)
        width = std::max(width, label.fontMetrics().horizontalAdvance(text));
    label.setMinimumWidth(width + 2);
}

} // namespace

Window_Configurations::Window_Configurations(QWidget* mainWindow, Dialogs& dialogs, const DialogSettings& settings,
                                             const LiveSettings& live, const DialogChoices& choices,
                                             OutlinesOf outlines)
    : QDialog(mainWindow), dialogs_(dialogs), loaded_(settings), live_(live), outlines_(std::move(outlines)),
      ui_([this] {
          auto ui = std::make_unique<Ui::Window_Configurations>();
          ui->setupUi(this);
          return ui;
      }()),
      radioScreen({ui_->radioScreen0, ui_->radioScreen1, ui_->radioScreen2, ui_->radioScreen3, ui_->radioScreen4,
                   ui_->radioScreen5, ui_->radioScreen6, ui_->radioScreen7, ui_->radioScreen8}),
      radioCamera({ui_->radioCamera0, ui_->radioCamera1, ui_->radioCamera2, ui_->radioCamera3, ui_->radioCamera4,
                   ui_->radioCamera5, ui_->radioCamera6, ui_->radioCamera7, ui_->radioCamera8}),
      radioOverlay({ui_->radioOverlay0, ui_->radioOverlay1, ui_->radioOverlay2, ui_->radioOverlay3, ui_->radioOverlay4,
                    ui_->radioOverlay5, ui_->radioOverlay6, ui_->radioOverlay7, ui_->radioOverlay8})
{
    setWindowModality(Qt::ApplicationModal);
    windowDidLoad(choices);
}

Window_Configurations::~Window_Configurations() = default;

void Window_Configurations::windowDidLoad(const DialogChoices& choices)
{
    ui_->sliderOverlaySize->setMaximum(int(std::max<std::int64_t>(choices.widestOverlay, loaded_.i_Size_Overlay)));
    ui_->sliderOverlaySize->setTickInterval(std::max(1, choices.widestOverlay / 4));
    fillCombos(choices.cameras);
    showSettings();
    showColours();
    setSoundInput(choices.soundInput);
    ui_->imageviewOverlay->setPicture(live_.imgOverlay, tr("No picture"));
    for (QLabel* label : {ui_->labelScreenSizeValue, ui_->labelCameraSizeValue})
        reserveRoom(*label, {textOfSize(0), textOfSize(1), textOfSize(2), textOfSize(3), textOfSize(4)});
    reserveRoom(*ui_->labelOverlaySizeValue, {tr("%1 pixels").arg(88880)});
    for (QLabel* label : {ui_->labelSaturationValue, ui_->labelBrightnessValue, ui_->labelContrastValue})
        reserveRoom(*label, {QStringLiteral("-88.8")});
    ui_->tabs->setCurrentIndex(0);
    connectControls();
    connectColours();
    showValues();
    // The window has the size of its contents; the longest page determines it, so that nothing moves between pages.
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void Window_Configurations::fillCombos(const QStringList& cameras)
{
    fillRates(*ui_->comboScreenFPS, loaded_.m_i_Screen_Capture_FPS);
    fillRates(*ui_->comboCameraFPS, loaded_.m_i_Camera_Capture_FPS);
    ui_->comboCameraListOfCameras->addItems(cameras);
    ui_->comboCameraListOfCameras->setCurrentIndex(
        int(std::max<qsizetype>(0, cameras.lastIndexOf(loaded_.s_Camera_Name))));
    for (const CameraPreset& preset : kCameraPresets)
        ui_->comboCameraResolution->addItem(QLatin1String(preset.name));
    const bool offered = loaded_.i_Camera_CRP >= 0 && loaded_.i_Camera_CRP < ui_->comboCameraResolution->count();
    ui_->comboCameraResolution->setCurrentIndex(offered ? int(loaded_.i_Camera_CRP) : -1);
}

void Window_Configurations::showSettings()
{
    ui_->checkOnTopOtherWindows->setChecked(loaded_.i_Top_Other_Windows == 1);
    ui_->check_Invisible->setChecked(loaded_.b_Lumavex_Invisible_To_Capture);
    DisableScreenPositionRadios();
    radioScreen.turnOn(loaded_.i_Position_Screen_Secondary);
    ui_->sliderScreenSize->setValue(within(*ui_->sliderScreenSize, loaded_.i_Size_Screen_Secondary));
    ui_->checkScreenIncludeMouse->setChecked(loaded_.b_Screen_Include_Mouse == 1);
    DisableCameraPositionRadios();
    radioCamera.turnOn(loaded_.i_Position_Camera_Secondary);
    ui_->sliderCameraSize->setValue(within(*ui_->sliderCameraSize, loaded_.i_Size_Camera_Secondary));
    ui_->checkIncludeAudio->setChecked(loaded_.b_Record_Include_Audio != 0);
    ui_->checkOverlay->setChecked(loaded_.bOverlay);
    DisableOverlayRadios();
    radioOverlay.turnOn(loaded_.i_Position_Overlay);
    ui_->sliderOverlaySize->setValue(within(*ui_->sliderOverlaySize, loaded_.i_Size_Overlay));
}

void Window_Configurations::showColours()
{
    ui_->checkApply->setChecked(live_.bApplyColorControls);
    ui_->sliderSaturation->setValue(stepsOf(live_.f_ColorControls_Saturation));
    ui_->sliderBrightness->setValue(stepsOf(live_.f_ColorControls_Brightness));
    ui_->sliderContrast->setValue(stepsOf(live_.f_ColorControls_Contrast));
}

void Window_Configurations::connectControls()
{
    using Self = Window_Configurations;
    using Handler = void (Self::*)();
    const struct {
        PositionRadios& group;
        Handler handlers[9];
    } groups[] = {
        {radioScreen,
         {&Self::OnRadioScreen0, &Self::OnRadioScreen1, &Self::OnRadioScreen2, &Self::OnRadioScreen3,
          &Self::OnRadioScreen4, &Self::OnRadioScreen5, &Self::OnRadioScreen6, &Self::OnRadioScreen7,
          &Self::OnRadioScreen8}},
        {radioCamera,
         {&Self::OnRadioCamera0, &Self::OnRadioCamera1, &Self::OnRadioCamera2, &Self::OnRadioCamera3,
          &Self::OnRadioCamera4, &Self::OnRadioCamera5, &Self::OnRadioCamera6, &Self::OnRadioCamera7,
          &Self::OnRadioCamera8}},
        {radioOverlay,
         {&Self::OnRadioOverlay0, &Self::OnRadioOverlay1, &Self::OnRadioOverlay2, &Self::OnRadioOverlay3,
          &Self::OnRadioOverlay4, &Self::OnRadioOverlay5, &Self::OnRadioOverlay6, &Self::OnRadioOverlay7,
          &Self::OnRadioOverlay8}},
    };
    for (const auto& [group, handlers] : groups)
        for (std::size_t i = 0; i < group.buttons().size(); ++i)
            connect(group.buttons()[i], &QRadioButton::clicked, this, handlers[i]);
    for (QSlider* slider : {ui_->sliderScreenSize, ui_->sliderCameraSize, ui_->sliderOverlaySize})
        connect(slider, &QSlider::valueChanged, this, &Self::showValues);
    connect(ui_->comboCameraListOfCameras, &QComboBox::currentIndexChanged, this, &Self::showValues);
    connect(ui_->comboCameraResolution, &QComboBox::currentIndexChanged, this, &Self::showValues);
    connect(ui_->checkOverlay, &QCheckBox::toggled, this, &Self::showValues);
    connect(ui_->tabs, &QTabWidget::currentChanged, this, &Self::showValues);
    connect(ui_->buttonBrowse, &QPushButton::clicked, this, &Self::OnBrowseForImage);
    connect(ui_->buttonSoundPreferences, &QPushButton::clicked, this, &Self::OnSoundPreferences);
    connect(ui_->buttonBox, &QDialogButtonBox::accepted, this, &Self::OnOK);
    connect(ui_->buttonBox, &QDialogButtonBox::rejected, this, &Self::OnCancel);
}

void Window_Configurations::connectColours()
{
    using Self = Window_Configurations;
    connect(ui_->checkApply, &QCheckBox::clicked, this, &Self::OnApply);
    connect(ui_->sliderSaturation, &QSlider::valueChanged, this, &Self::OnChangeSaturation);
    connect(ui_->sliderBrightness, &QSlider::valueChanged, this, &Self::OnChangeBrightness);
    connect(ui_->sliderContrast, &QSlider::valueChanged, this, &Self::OnChangeContrast);
    connect(ui_->buttonDefaults, &QPushButton::clicked, this, &Self::OnDefaults);
}

int Window_Configurations::runModal()
{
    exec();
    return int(returnCode_);
}

DialogSettings Window_Configurations::settings() const
{
    DialogSettings chosen;
    chosen.i_Top_Other_Windows = ui_->checkOnTopOtherWindows->isChecked() ? 1 : 0;
    chosen.b_Lumavex_Invisible_To_Capture = ui_->check_Invisible->isChecked();
    chosen.m_i_Screen_Capture_FPS = ui_->comboScreenFPS->currentText().toInt();
    chosen.i_Position_Screen_Secondary = radioScreen.code(loaded_.i_Position_Screen_Secondary);
    chosen.i_Size_Screen_Secondary = ui_->sliderScreenSize->value();
    chosen.b_Screen_Include_Mouse = ui_->checkScreenIncludeMouse->isChecked() ? 1 : 0;
    chosen.bOverlay = ui_->checkOverlay->isChecked();
    chosen.i_Position_Overlay = radioOverlay.code(loaded_.i_Position_Overlay);
    chosen.i_Size_Overlay = ui_->sliderOverlaySize->value();
    const bool connects = ui_->comboCameraListOfCameras->currentIndex() > 0;
    chosen.m_i_Camera_Capture_FPS = connects ? ui_->comboCameraFPS->currentText().toInt() : 1;
    chosen.s_Camera_Name = ui_->comboCameraListOfCameras->currentText();
    chosen.i_Camera_CRP = ui_->comboCameraResolution->currentIndex();
    chosen.i_Position_Camera_Secondary = radioCamera.code(loaded_.i_Position_Camera_Secondary);
    chosen.i_Size_Camera_Secondary = ui_->sliderCameraSize->value();
    chosen.b_Record_Include_Audio = ui_->checkIncludeAudio->isChecked() ? 1 : 0;
    return chosen;
}

FrameThumbnail& Window_Configurations::thumbnail()
{
    return *ui_->thumbnail;
}

void Window_Configurations::setSoundInput(const QString& text)
{
    ui_->labelSoundInputName->setText(text);
}

SettingsSubject Window_Configurations::subject() const
{
    const QWidget* page = ui_->tabs->currentWidget();
    if (page == ui_->pageScreen)
        return SettingsSubject::Screen;
    if (page == ui_->pageCamera)
        return SettingsSubject::Camera;
    return page == ui_->pageOverlay ? SettingsSubject::Overlay : SettingsSubject::Other;
}

void Window_Configurations::showValues()
{
    const bool connects = ui_->comboCameraListOfCameras->currentIndex() > 0;
    for (QWidget* control :
         {static_cast<QWidget*>(ui_->comboCameraResolution), static_cast<QWidget*>(ui_->comboCameraFPS)})
        control->setEnabled(connects);
    ui_->comboCameraListOfCameras->setToolTip(ui_->comboCameraListOfCameras->currentText());
    ui_->labelScreenSizeValue->setText(textOfSize(ui_->sliderScreenSize->value()));
    ui_->labelCameraSizeValue->setText(textOfSize(ui_->sliderCameraSize->value()));
    ui_->labelOverlaySizeValue->setText(tr("%1 pixels").arg(10 * ui_->sliderOverlaySize->value()));
    const auto number = [](float value) { return QString::number(double(value), 'f', 1); };
    ui_->labelSaturationValue->setText(number(live_.f_ColorControls_Saturation));
    ui_->labelBrightnessValue->setText(number(live_.f_ColorControls_Brightness));
    ui_->labelContrastValue->setText(number(live_.f_ColorControls_Contrast));
    ui_->thumbnail->setOutlines(outlines_(settings(), subject()));
}

void Window_Configurations::choose(PositionRadios& group, int code)
{
    group.disable();
    group.turnOn(code);
    showValues();
}

void Window_Configurations::OnOK()
{
    setReturnCode(1);
    done(Accepted);
}

void Window_Configurations::OnCancel()
{
    windowWillClose();
    done(Rejected);
}

void Window_Configurations::closeEvent(QCloseEvent* event)
{
    windowWillClose();
    QDialog::closeEvent(event);
}

void Window_Configurations::windowWillClose()
{
    setReturnCode(0);
}

void Window_Configurations::OnBrowseForImage()
{
    const std::optional<QString> path = dialogs_.runOpenPanel(tr("Choose the overlay picture"), overlayTypes);
    if (!path)
        return;
    live_.imgOverlay = readPictureFile(*path);
    ui_->imageviewOverlay->setPicture(live_.imgOverlay, tr("This file cannot be read as a picture."));
    Q_EMIT liveSettingsChanged();
    showValues();
}

void Window_Configurations::OnApply()
{
    live_.bApplyColorControls = ui_->checkApply->isChecked();
    Q_EMIT liveSettingsChanged();
}

void Window_Configurations::changeColour(float& property, const QSlider& slider)
{
    property = float(slider.value()) / float(stepsPerUnit);
    showValues();
    Q_EMIT liveSettingsChanged();
}

void Window_Configurations::OnChangeSaturation()
{
    changeColour(live_.f_ColorControls_Saturation, *ui_->sliderSaturation);
}

void Window_Configurations::OnChangeBrightness()
{
    changeColour(live_.f_ColorControls_Brightness, *ui_->sliderBrightness);
}

void Window_Configurations::OnChangeContrast()
{
    changeColour(live_.f_ColorControls_Contrast, *ui_->sliderContrast);
}

void Window_Configurations::OnDefaults()
{
    const LiveSettings defaults;
    live_.f_ColorControls_Saturation = defaults.f_ColorControls_Saturation;
    live_.f_ColorControls_Brightness = defaults.f_ColorControls_Brightness;
    live_.f_ColorControls_Contrast = defaults.f_ColorControls_Contrast;
    showColours();
    showValues();
    Q_EMIT liveSettingsChanged();
}

} // namespace lumavex
