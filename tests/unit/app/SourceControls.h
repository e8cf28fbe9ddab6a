// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SettingsTable.h"
#include "capture/Window_Transparent_Region.h"
#include "tests/unit/app/Program.h"

#include <QAction>
#include <QApplication>
#include <QTest>
#include <QTimer>

#include <functional>

namespace lumavex {

const QString cameraName = QStringLiteral("Cam 1");
constexpr CGSize screenSize{640, 480};
constexpr CGSize cameraSize{320, 240};

/// A control of the main window.
using Control = QAction* Window_Main::*;

/// The commands of sources and capture types, given through the controls.
struct SourceControls : Program {
    enum class Camera { None, Running };

    /// As after an earlier run with the camera and 10 frames a second.
    bool start(Camera which)
    {
        if (!launch()) // writes the first run's settings
            return false;
        if (which == Camera::Running) {
            FakeCamera made;
            made.name = cameraName;
            cameras->add(made);
            store->texts[settingKey("s_Camera_Name")] = cameraName;
        }
        store->texts[settingKey("i_Screen_Capture_FPS")] = QStringLiteral("10");
        addWindows();
        if (!launch())
            return false;
        store->written.clear();
        QApplication::processEvents();
        return which == Camera::None || until([this] { return app->camera.size_Camera == cameraSize; });
    }

    enum class Player { There, EmptyFrame, Away };

    /// The program's own window, a blue editor, a green player, and the program's own again.
    void addWindows(Player player = Player::There)
    {
        addWindows({"Lumavex", "Editor", "Player", "Lumavex"}, {}, player);
    }

    void addWindows(const std::vector<const char*>& names, const CGPoint& place = {}, Player player = Player::There)
    {
        std::vector<FakeScreenGrabber::Window> windows(names.size());
        for (std::size_t i = 0; i < windows.size(); ++i) {
            windows[i].description.ownerName = QLatin1String(names[i]);
            windows[i].description.x = place.x;
            windows[i].description.y = place.y;
            windows[i].description.ownerPid = static_cast<int>(i) + 10;
            windows[i].description.number = static_cast<std::uint32_t>(i) + 100;
            windows[i].picture = QImage(16, 16, QImage::Format_RGB32);
            windows[i].picture.fill(i == 2 && player == Player::There ? Qt::green : Qt::blue);
            windows[i].look = {i == 2 ? QStringLiteral("A Film") : QStringLiteral("notes <b>"), windows[i].picture};
            windows[i].showsContents = i != 2 || player == Player::There;
        }
        if (player == Player::Away)
            windows.erase(windows.begin() + 2);
        screen->setWindows(windows);
    }

    static bool until(const std::function<bool()>& done) { return QTest::qWaitFor(done, 10'000); }

    /// Gives the command; a region selector that opens is closed. How many opened.
    int give(Control control)
    {
        int opened = 0;
        QTimer closer;
        QObject::connect(&closer, &QTimer::timeout, [&opened] {
            if (auto* selector = qobject_cast<Window_Transparent_Region*>(QApplication::activeModalWidget())) {
                ++opened;
                selector->close();
            }
        });
        closer.start(1);
        (window.get()->*control)->trigger();
        return opened;
    }

    template <std::size_t N>
    std::string states(const Control (&controls)[N]) const
    {
        std::string text;
        for (const Control control : controls)
            text += (window.get()->*control)->isEnabled() ? '1' : '0';
        return text;
    }

    std::string stored(const char* property) const { return store->texts.value(settingKey(property)).toStdString(); }
};

} // namespace lumavex
