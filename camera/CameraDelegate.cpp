// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/CameraDelegate.h"

#include "base/CameraModes.h"

#include <QLoggingCategory>

#include <utility>

namespace lumavex {
namespace {

Q_LOGGING_CATEGORY(logCamera, "lumavex.camera", QtWarningMsg)

} // namespace

CameraDelegate::CameraDelegate(CameraSource& captureSession, CameraState& state)
    : m_captureSession(captureSession), state_(state)
{
    m_captureSession.setFrameHandler(
        [this](const CameraFrame& frame) { captureOutput_didOutputSampleBuffer_fromConnection(frame); });
    m_captureSession.setPresenceHandler([this](bool present) { Q_EMIT cameraPresenceChanged(present); });
}

CameraDelegate::~CameraDelegate()
{
    m_captureSession.stop();
    m_captureSession.setFrameHandler(nullptr);
    m_captureSession.setPresenceHandler(nullptr);
}

bool CameraDelegate::createCamera(const QString& name)
{
    m_camera.reset();
    if (m_captureSession.names().contains(name))
        m_camera = name;
    return m_camera.has_value();
}

bool CameraDelegate::attachCameraToCaptureSession()
{
    Q_ASSERT_X(m_camera, "CameraDelegate::attachCameraToCaptureSession", "NULL != m_camera");
    m_cameraInput.reset();
    if (m_camera && cameraPreset(state_.i_Camera_CRP))
        m_cameraInput = CameraRequest{*m_camera, state_.i_Camera_CRP};
    return m_cameraInput.has_value();
}

void CameraDelegate::setupVideoOutput()
{
    m_videoOutput = m_captureSession.currentSource() + 1;
    awaitsFirstPicture_ = true;
    updateColorControls();
    const std::lock_guard lock(mutex_);
    published_.reset();
}

bool CameraDelegate::prepareStart(const QString& name)
{
    trouble_.clear();
    if (!createCamera(name)) {
        trouble_ = m_captureSession.trouble();
        if (trouble_.isEmpty())
            trouble_ = tr("There is no camera named %1.").arg(name);
        return false;
    }
    if (!attachCameraToCaptureSession()) {
        trouble_ = tr("The camera %1 has no resolution number %2.").arg(name).arg(state_.i_Camera_CRP);
        return false;
    }
    setupVideoOutput();
    return true;
}

bool CameraDelegate::startCamera(const QString& name)
{
    if (!prepareStart(name))
        return false;
    trouble_ = m_captureSession.open(*m_cameraInput);
    return trouble_.isEmpty();
}

bool CameraDelegate::startCameraWithoutWaiting(const QString& name)
{
    if (!prepareStart(name))
        return false;
    trouble_ = m_captureSession.beginOpening(*m_cameraInput, [this](const QString& trouble) {
        trouble_ = trouble;
        if (!trouble_.isEmpty())
            Q_EMIT startFailed();
    });
    return trouble_.isEmpty();
}

bool CameraDelegate::stopCamera()
{
    m_captureSession.stop();
    return true;
}

void CameraDelegate::updateColorControls()
{
    std::optional<ColorMatrix> controls;
    if (state_.bApplyColorControls)
        controls.emplace(state_.f_ColorControls_Saturation, state_.f_ColorControls_Brightness,
                         state_.f_ColorControls_Contrast);
    const std::lock_guard lock(mutex_);
    controls_ = controls;
}

void CameraDelegate::captureOutput_didOutputSampleBuffer_fromConnection(const CameraFrame& sampleBuffer)
{
    if (sampleBuffer.source != m_videoOutput)
        return;
    qCDebug(logCamera, "New Frame");
    copyVideoFrame(sampleBuffer);
}

void CameraDelegate::copyVideoFrame(const CameraFrame& sampleBuffer)
{
    std::optional<ColorMatrix> controls;
    {
        const std::lock_guard lock(mutex_);
        controls = controls_;
    }
    const QImage picture = converter_.convert(sampleBuffer, controls);
    if (picture.isNull())
        return; // a damaged frame: the previous picture stays
    bool announced = false;
    {
        const std::lock_guard lock(mutex_);
        announced = published_.has_value();
        published_ = Published{picture, ++head_, sampleBuffer.source};
    }
    if (!announced)
        QMetaObject::invokeMethod(this, &CameraDelegate::takePicture, Qt::QueuedConnection);
}

void CameraDelegate::takePicture()
{
    std::optional<Published> taken;
    {
        const std::lock_guard lock(mutex_);
        taken = std::exchange(published_, std::nullopt);
    }
    updateColorControls();
    // A picture that an earlier camera announced before another one was started must not count as the new one's.
    if (!taken || taken->output != m_videoOutput)
        return;
    state_.imgDeviceCapture = taken->picture;
    state_.serialCamera = taken->serial;
    state_.size_Camera = {double(taken->picture.width()), double(taken->picture.height())};
    if (std::exchange(awaitsFirstPicture_, false))
        Q_EMIT videoCameraStarted();
    Q_EMIT pictureTaken();
}

} // namespace lumavex
