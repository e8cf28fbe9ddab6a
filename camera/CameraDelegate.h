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

/// Lists the cameras, opens one by name and keeps the camera picture of the state up to date.
///
///     captureQueue:  frame -> copyVideoFrame -> picture, its size and number, published whole
///     main thread:                                -> takePicture -> CameraState -> pictureTaken()
///
/// Later pictures replace those that the main thread had no time for; they never queue up. One object, as long as the
/// program; main thread except where noted.
class CameraDelegate final : public QObject {
    Q_OBJECT
public:
    /// Both must outlive the delegate. It reads the resolution code and the colour controls of the state, and writes
    /// imgDeviceCapture, serialCamera and size_Camera.
    CameraDelegate(CameraSource& captureSession, CameraState& state);
    ~CameraDelegate() override;

    /// Prepares a quick answer of the next enumCameras(). Does not wait.
    void beginListing() { m_captureSession.beginListing(); }
    /// Names of the cameras present, in the system's order.
    QStringList enumCameras() { return m_captureSession.names(); }
    /// Selects the first camera of exactly that name. False when there is none.
    bool createCamera(const QString& name);
    /// Makes the input from the selected camera and the state's resolution code. False when no camera accepts that
    /// code.
    bool attachCameraToCaptureSession();
    /// Makes the output of the next opening: from here on only its frames are used.
    void setupVideoOutput();
    /// Starts the camera of that name, after stopping a running one. True when it runs; else see trouble().
    bool startCamera(const QString& name);
    /// Like startCamera() without waiting: false when it certainly cannot be started, else startFailed() may follow.
    /// The last picture stays until the first one arrives.
    bool startCameraWithoutWaiting(const QString& name);
    /// The request of the latest start; std::nullopt before the first.
    const std::optional<CameraRequest>& cameraInput() const { return m_cameraInput; }
    /// Releases the camera; the last picture stays. Always true.
    bool stopCamera();

    /// Reason for the latest failed start, as text for the user.
    QString trouble() const { return trouble_; }
    /// Number of pictures made so far. Any thread.
    std::uint64_t head() const { return head_; }
    /// Applies the state's colour controls to frames that arrive from now on. Also done with every accepted picture.
    void updateColorControls();

    /// Called for every frame, on the capture queue. Ignores frames of an output other than the current one.
    void captureOutput_didOutputSampleBuffer_fromConnection(const CameraFrame& sampleBuffer);

Q_SIGNALS:
    /// The state holds a new picture, its number and its size.
    void pictureTaken();
    /// The camera that was started without waiting could not be opened; see trouble().
    void startFailed();
    /// The first picture since a start has been accepted; precedes its pictureTaken().
    void videoCameraStarted();
    /// The running camera has vanished (false), or is back (true). The last picture stays meanwhile.
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

    std::optional<QString> m_camera;              ///< the selected camera, if any
    std::optional<CameraRequest> m_cameraInput;   ///< the request to it, made at the latest start
    std::atomic<std::uint64_t> m_videoOutput = 0; ///< number of the latest start's opening; any thread
    std::atomic<std::uint64_t> head_ = 0;

    FrameConverter converter_; ///< capture queue

    std::mutex mutex_; ///< guards the members below
    std::optional<ColorMatrix> controls_;
    std::optional<Published> published_; ///< the latest picture, until the main thread accepts it
};

} // namespace lumavex
