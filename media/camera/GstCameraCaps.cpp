// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/camera/GstCameraCaps.h"

#include <gst/video/video.h>

#include <algorithm>
#include <utility>

namespace lumavex {
namespace {

constexpr int kWantedRate = 30;
constexpr int kCostNative = 1;
constexpr int kCostConverted = 2;
constexpr int kCostJpeg = 3;

struct Extent {
    int low = 0;
    int high = 0;
    int step = 1;
};

/// Reads a number, a range, or a list of these.
std::vector<Extent> extentsOf(const GValue* value)
{
    std::vector<Extent> extents;
    if (!value)
        return extents;
    if (G_VALUE_HOLDS_INT(value))
        return {{g_value_get_int(value), g_value_get_int(value), 1}};
    if (GST_VALUE_HOLDS_INT_RANGE(value))
        return {{gst_value_get_int_range_min(value), gst_value_get_int_range_max(value),
                 gst_value_get_int_range_step(value)}};
    if (GST_VALUE_HOLDS_LIST(value))
        for (guint i = 0; i < gst_value_list_get_size(value); ++i)
            for (const Extent& extent : extentsOf(gst_value_list_get_value(value, i)))
                extents.push_back(extent);
    return extents;
}

std::vector<std::string> textsOf(const GValue* value)
{
    std::vector<std::string> texts;
    if (!value)
        return texts;
    if (G_VALUE_HOLDS_STRING(value))
        return {g_value_get_string(value)};
    if (GST_VALUE_HOLDS_LIST(value))
        for (guint i = 0; i < gst_value_list_get_size(value); ++i)
            for (std::string& text : textsOf(gst_value_list_get_value(value, i)))
                texts.push_back(std::move(text));
    return texts;
}

bool isInSystemMemory(const GstCaps* caps, guint index)
{
    const GstCapsFeatures* features = gst_caps_get_features(caps, index);
    return !features || gst_caps_features_is_equal(features, GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY);
}

bool isNative(const std::string& format)
{
    return format == "YUY2" || format == "NV12" || format == "I420" || format == "BGRx" || format == "BGRA";
}

bool isReadable(const std::string& format)
{
    const GstVideoFormat known = gst_video_format_from_string(format.c_str());
    return known != GST_VIDEO_FORMAT_UNKNOWN && known != GST_VIDEO_FORMAT_ENCODED;
}

} // namespace

GstCameraCaps::GstCameraCaps(const GstCaps* caps)
{
    const guint count = caps ? gst_caps_get_size(caps) : 0;
    for (guint i = 0; i < count; ++i) {
        const GstStructure* structure = gst_caps_get_structure(caps, i);
        if (!isInSystemMemory(caps, i))
            continue;
        const std::string media = gst_structure_get_name(structure);
        if (media == "image/jpeg")
            add(structure, {.media = media, .format = {}}, kCostJpeg);
        if (media != "video/x-raw")
            continue;
        // Some programs that act as cameras do not fix the format in advance.
        if (!gst_structure_has_field(structure, "format"))
            add(structure, {.media = media, .format = {}, .converted = true}, kCostConverted);
        for (const std::string& format : textsOf(gst_structure_get_value(structure, "format")))
            if (isReadable(format))
                add(structure, {.media = media, .format = format, .converted = !isNative(format)},
                    isNative(format) ? kCostNative : kCostConverted);
    }
}

void GstCameraCaps::add(const GstStructure* structure, Kind kind, int cost)
{
    double rate = 0;
    const std::unique_ptr<GstStructure, decltype(&gst_structure_free)> copy(gst_structure_copy(structure),
                                                                            gst_structure_free);
    if (gst_structure_has_field(copy.get(), "framerate")) {
        gst_structure_fixate_field_nearest_fraction(copy.get(), "framerate", kWantedRate, 1);
        if (gst_structure_get_fraction(copy.get(), "framerate", &kind.rateNumerator, &kind.rateDenominator))
            rate = double(kind.rateNumerator) / std::max(kind.rateDenominator, 1);
    }
    const auto widths = extentsOf(gst_structure_get_value(structure, "width"));
    const auto heights = extentsOf(gst_structure_get_value(structure, "height"));
    for (const Extent& width : widths)
        for (const Extent& height : heights)
            modes_.push_back({.smallest = {width.low, height.low},
                              .largest = {width.high, height.high},
                              .step = {width.step, height.step},
                              .rate = rate,
                              .cost = cost,
                              .id = kinds_.size()});
    kinds_.push_back(std::move(kind));
}

GstPtr<GstCaps> GstCameraCaps::capsOf(const CameraChoice& choice) const
{
    const Kind& kind = kinds_.at(choice.id);
    GstPtr<GstCaps> caps(gst_caps_new_simple(kind.media.c_str(), "width", G_TYPE_INT, choice.size.width(), "height",
                                             G_TYPE_INT, choice.size.height(), nullptr));
    if (!kind.format.empty())
        gst_caps_set_simple(caps.get(), "format", G_TYPE_STRING, kind.format.c_str(), nullptr);
    if (kind.rateNumerator > 0)
        gst_caps_set_simple(caps.get(), "framerate", GST_TYPE_FRACTION, kind.rateNumerator, kind.rateDenominator,
                            nullptr);
    return caps;
}

bool GstCameraCaps::needsConversion(const CameraChoice& choice) const
{
    return kinds_.at(choice.id).converted;
}

} // namespace lumavex
