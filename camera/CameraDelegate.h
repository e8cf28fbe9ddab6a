// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/ColorMatrix.h"
#include "camera/CameraState.h"
#include "camera/FrameConverter.h"
#include "platform/CameraSource.h"

#include <QObject>

#include <atomic>
#include <mutex>
#include <optional>

namespace lumavex {

/// Lists the cameras, opens one by name and keeps the state's camera picture up to date.
///
///     captureQueue:  frame -> copyVideoFrame -> picture, its size and number, published whole
///     main thread:                                -> takePicture -> CameraState -> pictureTaken()
///
/// Pictures the main thread has no time for are replaced by later ones; they never queue up. One object, as long as the
/// program; main thread except where noted.
class CameraDelegate final : public QObject {
    Q_OBJECT
public:
    /// Both must outlive the delegate. Of the state it reads the resolution code and the colour controls, and writes
    /// imgDeviceCapture, serialCamera and size_Camera.
    CameraDelegate(CameraSource& captureSession, CameraState& state);
    ~CameraDelegate() override;

    /// Makes the next enumCameras quick. Does not wait.
    void beginListing() { m_captureSession.beginListing(); }
    /// Names of the cameras present, in the system's order.
    QStringList enumCameras() { return m_captureSession.names(); }
    /// Selects the first camera of exactly that name. False when there is none.
    bool createCamera(const QString& name);
    /// Makes the input: the selected camera at the resolution code of the state. False when no camera takes that code.
    bool attachCameraToCaptureSession();
    /// Makes the output of the opening that follows: from here on only its frames are used.
    void setupVideoOutput();
    /// Starts the camera of that name; one that runs is stopped first. True when it runs, else `trouble` says why not.
    bool startCamera(const QString& name);
    /// The same without a wait: false when it is certain at once that it cannot be started, else startFailed may
    /// follow. The last picture stays until the first one arrives.
    bool startCameraWithoutWaiting(const QString& name);
    /// What the camera was asked for at the latest start; nothing before the first.
    const std::optional<CameraRequest>& cameraInput() const { return m_cameraInput; }
    /// Gives the camera back; the last picture stays. Always true.
    bool stopCamera();

    /// Why the latest start failed, in the user's words.
    QString trouble() const { return trouble_; }
    /// Counts the pictures made; 0 until the first. Any thread.
    std::uint64_t head() const { return head_; }
    /// Frames that arrive from now on get the colours of the state. Also done with every picture that is taken over.
    void updateColorControls();

    /// For every frame, on the capture queue; frames of another output than the present one are ignored.
    void captureOutput_didOutputSampleBuffer_fromConnection(const CameraFrame& sampleBuffer);

Q_SIGNALS:
    /// The state holds a new picture, its number and its size.
    void pictureTaken();
    /// The camera that was started without waiting could not be opened after all; `trouble` says why.
    void startFailed();
    /// The first picture since a start was taken over; comes before its pictureTaken.
    void videoCameraStarted();
    /// The running camera vanished (false), or is back (true). The last picture stays meanwhile.
    void cameraPresenceChanged(bool present);

private:
    bool prepareStart(const QString& name);
    void copyVideoFrame(const CameraFrame& sampleBuffer);
    void takePicture();

    struct Published {
        QImage picture;
        std::uint64_t serial = 0;
        std::uint64_t output = 0;
    };

    CameraSource& m_captureSession;
    CameraState& state_;
    QString trouble_;
    bool awaitsFirstPicture_ = false;

    std::optional<QString> m_camera;              ///< the selected camera; nothing: none
    std::optional<CameraRequest> m_cameraInput;   ///< what is asked of it, made at the latest start
    std::atomic<std::uint64_t> m_videoOutput = 0; ///< the number of the latest start's opening; any thread
    std::atomic<std::uint64_t> head_ = 0;

    FrameConverter converter_; ///< capture queue

    std::mutex mutex_; ///< guards what follows
    std::optional<ColorMatrix> controls_;
    std::optional<Published> published_; ///< the latest picture, until the main thread takes it over
};

} // namespace lumavex
