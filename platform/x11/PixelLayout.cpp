// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/PixelLayout.h"

#include "platform/PlatformText.h"

#include <bit>

namespace lumavex {

namespace {

const xcb_visualtype_t* visualOf(const xcb_screen_t& screen, xcb_visualid_t id)
{
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem; xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem; xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == id)
                return visuals.data;
        }
    }
    return nullptr;
}

int bitsPerPixel(const xcb_setup_t& setup, int depth)
{
    for (auto formats = xcb_setup_pixmap_formats_iterator(&setup); formats.rem; xcb_format_next(&formats)) {
        if (formats.data->depth == depth)
            return formats.data->bits_per_pixel;
    }
    return 0;
}

/// Shift of the upper 8 bits of a colour's field; negative when the field has fewer.
int upperBits(std::uint32_t mask)
{
    return static_cast<int>(std::bit_width(mask)) - 8 - (std::popcount(mask) < 8 ? 32 : 0);
}

} // namespace

QImage PixelLayout::toRgb32(const QImage& raw) const
{
    if (isRgb32() || raw.isNull())
        return raw;
    QImage picture(raw.size(), QImage::Format_RGB32);
    for (int y = 0; y < raw.height(); ++y) {
        const auto* const from = reinterpret_cast<const std::uint32_t*>(raw.constScanLine(y));
        auto* const to = reinterpret_cast<std::uint32_t*>(picture.scanLine(y));
        for (int x = 0; x < raw.width(); ++x) {
            const std::uint32_t pixel = from[x];
            to[x] = 0xff000000U | ((pixel >> redShift) & 0xffU) << 16 | ((pixel >> greenShift) & 0xffU) << 8
                    | ((pixel >> blueShift) & 0xffU);
        }
    }
    return picture;
}

std::optional<PixelLayout> pixelLayoutOf(const XcbConnection& connection, QString& trouble)
{
    const xcb_screen_t& screen = *connection.screen();
    const int depth = screen.root_depth;
    const xcb_visualtype_t* const visual = visualOf(screen, screen.root_visual);
    constexpr auto nativeOrder =
        std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    if (visual && visual->_class == XCB_VISUAL_CLASS_TRUE_COLOR && (depth == 24 || depth == 30 || depth == 32)
        && bitsPerPixel(*connection.setup(), depth) == 32 && connection.setup()->image_byte_order == nativeOrder) {
        const PixelLayout layout{upperBits(visual->red_mask), upperBits(visual->green_mask),
                                 upperBits(visual->blue_mask)};
        if (layout.redShift >= 0 && layout.greenShift >= 0 && layout.blueShift >= 0)
            return layout;
    }
    trouble = PlatformText::tr("The screen shows colours in %1 bits, which cannot be recorded. "
                               "Please set the screen to 24 bit colour.")
                  .arg(depth);
    return std::nullopt;
}

} // namespace lumavex
