// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/BlendedLayer.h"

namespace lumavex {

void BlendedLayer::draw(const QImage& picture, std::uint64_t serial, const QRect& target, const QRect& clip,
                        const QRect& part, const Canvas& canvas)
{
    const Key key{serial, picture.size(), target.size(), clip.translated(-target.topLeft()), canvas.order};
    const auto width = std::size_t(clip.width());
    if (pixels_.empty() || !(key == key_)) {
        pixels_.resize(width * std::size_t(clip.height()));
        const Canvas kept{pixels_.data(), clip.size(), clip.width(), canvas.order};
        resampler_.draw(picture.convertToFormat(QImage::Format_ARGB32_Premultiplied), picture.rect(),
                        target.translated(-clip.topLeft()), QRect(QPoint(), clip.size()), kept, AlphaUse::Kept);
        key_ = key;
    }
    const QPoint inside = part.topLeft() - clip.topLeft();
    const std::uint32_t* row = pixels_.data() + std::size_t(inside.y()) * width + std::size_t(inside.x());
    for (int y = part.top(); y <= part.bottom(); ++y, row += width)
        rowFunctions().blend(canvas.at(part.x(), y), row, std::size_t(part.width()), canvas.order);
}

} // namespace lumavex
