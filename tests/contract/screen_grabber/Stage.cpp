// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/contract/screen_grabber/Stage.h"

#include "platform/x11/XcbScreenGrabber.h"
#include "tests/contract/screen_grabber/TestClient.h"
#include "tests/contract/screen_grabber/TestServer.h"
#include "tests/fakes/FakeScreenGrabber.h"

#include <QPainter>

#include <algorithm>

namespace lumavex::test {

namespace {

constexpr QSize kScreen(640, 480);

QImage full(const QSize& size, QRgb color)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(color);
    return picture;
}

class FakeStage final : public Stage {
public:
    FakeStage()
    {
        grabber_.setDesktop(full(kScreen, kDesktop));
        publish();
    }
    ScreenGrabber& grabber() override { return grabber_; }
    std::uint32_t show(const QRect& bounds, QRgb color) override
    {
        FakeScreenGrabber::Window window;
        window.description.x = bounds.x();
        window.description.y = bounds.y();
        window.description.number = nextNumber_++;
        window.picture = full(bounds.size(), color);
        windows_.push_back(std::move(window));
        publish();
        return windows_.back().description.number;
    }
    void draw(std::uint32_t number, const QRect& part, QRgb color) override
    {
        for (auto& window : windows_) {
            if (window.description.number == number)
                QPainter(&window.picture).fillRect(part, QColor(color));
        }
        publish();
    }
    void movePointer(int x, int y) override
    {
        grabber_.setMouseLocation({static_cast<double>(x), static_cast<double>(kScreen.height() - 1 - y)});
    }

private:
    void publish()
    {
        QImage screen = full(kScreen, kDesktop);
        QPainter painter(&screen);
        for (const auto& window : windows_)
            painter.drawImage(QPointF(window.description.x, window.description.y), window.picture);
        painter.end();
        grabber_.setScreen(screen);
        grabber_.setWindows({windows_.rbegin(), windows_.rend()});
    }

    FakeScreenGrabber grabber_;
    std::vector<FakeScreenGrabber::Window> windows_; ///< bottom to top
    std::uint32_t nextNumber_ = 100;
};

class ServerStage final : public Stage {
public:
    explicit ServerStage(const TestServer::Options& options) : server_(options)
    {
        client_.leaveWallpaper(kDesktop);
        // The wallpaper only lies in a property; the root shows it as a window at the very bottom.
        client_.fillRoot(QRect(QPoint(0, 0), kScreen), kDesktop);
        grabber_ = createXcbScreenGrabber();
    }
    ScreenGrabber& grabber() override { return *grabber_; }
    std::uint32_t show(const QRect& bounds, QRgb color) override { return client_.show(bounds, color); }
    void draw(std::uint32_t window, const QRect& part, QRgb color) override { client_.fill(window, part, color); }
    void movePointer(int x, int y) override { client_.movePointer(x, y); }

private:
    TestServer server_;
    TestClient client_;
    std::unique_ptr<ScreenGrabber> grabber_;
};

} // namespace

std::unique_ptr<Stage> createStage(StageKind kind)
{
    if (kind == StageKind::Fake)
        return std::make_unique<FakeStage>();
    TestServer::Options options;
    options.compositingManager = kind == StageKind::CompositedServer;
    options.windowManager = kind == StageKind::ManagedServer || options.compositingManager;
    if (kind == StageKind::ServerWithoutSharedMemory)
        options.arguments = {"-extension", "MIT-SHM"};
    return std::make_unique<ServerStage>(options);
}

} // namespace lumavex::test
