// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/x11/RenderFormats.h"

namespace lumavex {

namespace {

bool isArgb32(const xcb_render_pictforminfo_t& format)
{
    const xcb_render_directformat_t& d = format.direct;
    return format.type == XCB_RENDER_PICT_TYPE_DIRECT && format.depth == 32 && d.alpha_mask == 0xff
           && d.alpha_shift == 24 && d.red_mask == 0xff && d.red_shift == 16 && d.green_mask == 0xff
           && d.green_shift == 8 && d.blue_mask == 0xff && d.blue_shift == 0;
}

} // namespace

RenderFormats::RenderFormats(const XcbConnection& connection)
{
    if (!connection.extensions().render)
        return;
    xcb_connection_t* const c = connection.get();
    const XcbOwned<xcb_render_query_pict_formats_reply_t> reply(
        xcb_render_query_pict_formats_reply(c, xcb_render_query_pict_formats(c), nullptr));
    if (!reply)
        return;
    std::unordered_map<xcb_render_pictformat_t, Format> formats;
    for (auto it = xcb_render_query_pict_formats_formats_iterator(reply.get()); it.rem;
         xcb_render_pictforminfo_next(&it)) {
        const Format format{it.data->id, it.data->direct.alpha_mask != 0};
        formats.emplace(format.id, format);
        if (isArgb32(*it.data))
            argb32_ = format;
    }
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(reply.get()); screen.rem;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem;
             xcb_render_pictdepth_next(&depth)) {
            for (auto visual = xcb_render_pictdepth_visuals_iterator(depth.data); visual.rem;
                 xcb_render_pictvisual_next(&visual))
                byVisual_.emplace(visual.data->visual, formats[visual.data->format]);
        }
    }
}

RenderFormats::Format RenderFormats::ofVisual(xcb_visualid_t visual) const
{
    const auto found = byVisual_.find(visual);
    return found == byVisual_.end() ? Format{} : found->second;
}

} // namespace lumavex
