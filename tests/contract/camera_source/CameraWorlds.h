// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/camera/GstCameraSource.h"
#include "tests/fakes/FakeCameraSource.h"
#include "tests/support/Slowness.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lumavex {

/// Serves events until something is so, or 15 s have passed (more under a sanitizer). Whether it is so.
inline bool eventually(const std::function<bool()>& isSo)
{
    QElapsedTimer time;
    time.start();
    while (!isSo() && time.elapsed() < slowness() * 15'000)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    return isSo();
}

inline void serveEventsFor(int milliseconds)
{
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

/// An environment in which the suite plugs cameras in and out.
class FakeCameraWorld {
public:
    std::unique_ptr<CameraSource> makeSource()
    {
        auto made = std::make_unique<FakeCameraSource>();
        fake_ = made.get();
        for (const QString& name : plugged_)
            fake_->add({.name = name});
        return made;
    }
    void plugIn(const QString& name)
    {
        plugged_.append(name);
        if (fake_)
            fake_->add({.name = name});
    }
    void unplugFirst(const QString& name)
    {
        plugged_.removeOne(name);
        if (fake_)
            fake_->remove(name);
    }

private:
    QStringList plugged_;
    FakeCameraSource* fake_ = nullptr;
};

/// Camera nodes of the PipeWire server the test runs beside.
class PipeWireCameraWorld {
public:
    std::unique_ptr<CameraSource> makeSource() { return createGstCameraSource(); }
    void plugIn(const QString& name)
    {
        const QString node = QStringLiteral("test-camera-%1").arg(++created_);
        auto camera = std::make_unique<QProcess>(); // ends with it
        camera->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        camera->start(QStringLiteral(LUMAVEX_SOURCE_DIR "/tests/support/test-camera"), {node, name});
        ASSERT_TRUE(eventually([&] { return nodes().contains(QStringLiteral("node.name = \"%1\"").arg(node)); }));
        plugged_.emplace_back(name, std::move(camera));
    }
    void unplugFirst(const QString& name)
    {
        const auto first =
            std::find_if(plugged_.begin(), plugged_.end(), [&name](const auto& each) { return each.first == name; });
        ASSERT_NE(first, plugged_.end());
        first->second->kill();
        EXPECT_TRUE(first->second->waitForFinished(10'000));
        plugged_.erase(first);
    }

private:
    static QString nodes()
    {
        QProcess process;
        process.start(QStringLiteral("pw-cli"), {QStringLiteral("ls"), QStringLiteral("Node")});
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(10'000));
        return QString::fromUtf8(process.readAllStandardOutput());
    }

    int created_ = 0;
    std::vector<std::pair<QString, std::unique_ptr<QProcess>>> plugged_;
};

} // namespace lumavex
