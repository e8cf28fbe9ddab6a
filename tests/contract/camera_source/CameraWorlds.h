// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/fake/FakeCameraSource.h"
#include "platform/gstreamer/GstCameraSource.h"
#include "tests/support/Slowness.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

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

/// Where the suite plugs cameras in and out.
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
    ~PipeWireCameraWorld()
    {
        for (const auto& [name, node] : nodes_)
            destroy(node);
    }
    std::unique_ptr<CameraSource> makeSource() { return createGstCameraSource(); }
    void plugIn(const QString& name)
    {
        const QString node = QStringLiteral("test-camera-%1").arg(++created_);
        pwCli({QStringLiteral("create-node"), QStringLiteral("spa-node-factory"),
               QStringLiteral("{ factory.name=videotestsrc node.name=%1 node.description=\"%2\" "
                              "media.class=Video/Source media.role=Camera live=true object.linger=true }")
                   .arg(node, name)});
        nodes_.emplace_back(name, node);
    }
    void unplugFirst(const QString& name)
    {
        const auto first =
            std::find_if(nodes_.begin(), nodes_.end(), [&name](const auto& each) { return each.first == name; });
        ASSERT_NE(first, nodes_.end());
        destroy(first->second);
        nodes_.erase(first);
    }

private:
    static QString pwCli(const QStringList& arguments)
    {
        QProcess process;
        process.start(QStringLiteral("pw-cli"), arguments);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(10'000));
        return QString::fromUtf8(process.readAllStandardOutput());
    }
    static void destroy(const QString& node)
    {
        const QString nodes = pwCli({QStringLiteral("ls"), QStringLiteral("Node")});
        const QRegularExpression entry(
            QStringLiteral("id (\\d+), type (?:(?!\\bid \\d+, type).)*node\\.name = \"%1\"").arg(node),
            QRegularExpression::DotMatchesEverythingOption);
        const auto match = entry.match(nodes);
        ASSERT_TRUE(match.hasMatch()) << qPrintable(nodes);
        pwCli({QStringLiteral("destroy"), match.captured(1)});
    }

    int created_ = 0;
    std::vector<std::pair<QString, QString>> nodes_;
};

} // namespace lumavex
