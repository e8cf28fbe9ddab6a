// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CameraSource.h"

#include <QCoreApplication>

namespace lumavex {

/// Where no cameras can be read: lists none and says why none opens.
class NoCameras final : public CameraSource {
public:
    QStringList names() override { return {}; }
    QString open(const CameraRequest& request) override
    {
        return QCoreApplication::translate("NoCameras", "The camera %1 cannot be read on this system.")
            .arg(request.name);
    }
    void stop() override {}
    std::uint64_t currentSource() const override { return 0; }
    void setFrameHandler(FrameHandler) override {}
    void setPresenceHandler(PresenceHandler) override {}
};

} // namespace lumavex
