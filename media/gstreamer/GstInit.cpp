// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/gstreamer/GstInit.h"

#include "platform/PlatformText.h"

#include <gst/gst.h>

namespace lumavex {

QString initGStreamer()
{
    static const QString trouble = [] {
        GError* error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error))
            return QString();
        const QString reason = error ? QString::fromUtf8(error->message) : QString();
        g_clear_error(&error);
        return PlatformText::tr("GStreamer could not be started: %1").arg(reason);
    }();
    return trouble;
}

} // namespace lumavex
