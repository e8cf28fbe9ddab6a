// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

#include <memory>

namespace lumavex {

struct GstUnref {
    void operator()(GstObject* object) const { gst_object_unref(object); }
    void operator()(GstElement* element) const { gst_object_unref(element); }
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    void operator()(GstClock* clock) const { gst_object_unref(clock); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
};

/// Owns one reference to a GStreamer object, or null.
template <typename T>
using GstPtr = std::unique_ptr<T, GstUnref>;

} // namespace lumavex
