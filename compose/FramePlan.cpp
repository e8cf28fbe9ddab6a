// SPDX-License-Identifier: GPL-3.0-or-later
#include "compose/FramePlan.h"

#include "compose/FrameLayout.h"

#include <algorithm>
#include <cmath>

namespace lumavex {

namespace {

/// Translates and scales along the axes; the whole chain of drawings from a picture to the frame is one mapping.
struct Mapping {
    double scaleX = 1;
    double scaleY = 1;
    double moveX = 0;
    double moveY = 0;

    static Mapping between(const CGRect& from, const CGRect& to)
    {
        const double scaleX = to.width / from.width;
        const double scaleY = to.height / from.height;
        return {scaleX, scaleY, to.x - from.x * scaleX, to.y - from.y * scaleY};
    }
    CGRect of(const CGRect& rect) const
    {
        return {rect.x * scaleX + moveX, rect.y * scaleY + moveY, rect.width * scaleX, rect.height * scaleY};
    }
};

CGRect wholeOf(const CGSize& size)
{
    return {0, 0, size.width, size.height};
}

CGSize sizeOf(const QImage& image)
{
    return {double(image.width()), double(image.height())};
}

CGRect commonPart(const CGRect& a, const CGRect& b)
{
    const double left = std::max(a.x, b.x);
    const double bottom = std::max(a.y, b.y);
    return {left, bottom, std::min(a.x + a.width, b.x + b.width) - left,
            std::min(a.y + a.height, b.y + b.height) - bottom};
}

/// Far outside any frame; keeps edges of absurd rectangles, and their differences, within an int.
constexpr double farAway = 1 << 28;

int edge(double position)
{
    return std::isnan(position) ? 0 : int(std::lround(std::clamp(position, -farAway, farAway)));
}

/// The pixels nearest to an upward rectangle inside an area `height` pixels high.
QRect nearestPixels(const CGRect& up, double height)
{
    const QRectF down = flippedDown(up, height);
    const int left = edge(down.x());
    const int top = edge(down.y());
    return {left, top, edge(down.x() + down.width()) - left, edge(down.y() + down.height()) - top};
}

/// The whole pixels that an upward rectangle of a picture touches, without slivers that are rounding noise.
QRect touchedPixels(const CGRect& up, const QSize& picture)
{
    constexpr double sliver = 1.0 / 256;
    const QRectF down = flippedDown(up, picture.height());
    const int left = edge(std::floor(down.x() + sliver));
    const int top = edge(std::floor(down.y() + sliver));
    const int right = edge(std::ceil(down.x() + down.width() - sliver));
    const int bottom = edge(std::ceil(down.y() + down.height() - sliver));
    return QRect(left, top, right - left, bottom - top) & QRect(QPoint(), picture);
}

class Planner {
public:
    Planner(const FrameInputs& inputs, const FrameTarget& target)
        : inputs_(inputs), target_(target), frame_(QPoint(), target.pixels),
          toPixels_(Mapping::between(wholeOf(target.units), {0, 0, double(frame_.width()), double(frame_.height())}))
    {
    }

    FramePlan plan()
    {
        if (frame_.isEmpty() || !(target_.units.width > 0) || !(target_.units.height > 0))
            return plan_;
        const bool screenFirst = inputs_.i_Video_Source_Primary == ScreenPrimary;
        const bool cameraFirst = inputs_.i_Video_Source_Primary == CameraPrimary;
        if ((screenFirst && screenFillsItsPlace()) || (cameraFirst && cameraExists()))
            screenFirst ? addPrimaryScreen() : addPrimaryCamera();
        else {
            plan_.add({FrameStep::Kind::Clear, FramePicture::None, frame_, {}, {}});
            if (screenFirst && screenSizeIsUsable())
                addScreen(wholeOf(target_.units), {}); // no grab yet: only the cursor
        }
        if (inputs_.i_Show_Secondary != 0)
            addSecondary(screenFirst, cameraFirst);
        addOverlay();
        return plan_;
    }

private:
    bool cameraExists() const { return !inputs_.camera.image.isNull(); }

    bool screenSizeIsUsable() const
    {
        const ScreenPicture& screen = inputs_.screen;
        return screen.size_Screen.width > 0 && screen.size_Screen.height > 0 && !(screen.cut && screen.cut->width == 0);
    }

    /// True when the primary picture fills the frame without keeping its shape.
    bool fillsFrame() const { return target_.pass == FramePass::Preview && inputs_.index_size_Video_Output == 0; }

    bool screenFillsFrame() const { return fillsFrame() && !inputs_.screen.keepsShape; }

    /// False when the screen picture leaves its place transparent: it is drawn unchanged and contains no grab.
    bool screenFillsItsPlace() const
    {
        return screenSizeIsUsable()
               && (!inputs_.screen.imgScreenCapture.image.isNull() || inputs_.screen.cut || !screenFillsFrame());
    }

    QRect pixelsOf(const CGRect& rect) const { return nearestPixels(rect, frame_.height()); }

    void addBlackAround(const QRect& picture, const QRect& area)
    {
        const QRect inner = picture & area;
        const auto addBlack = [this](int left, int top, int right, int bottom) {
            if (left < right && top < bottom)
                plan_.add(
                    {FrameStep::Kind::Black, FramePicture::None, {left, top, right - left, bottom - top}, {}, {}});
        };
        const int right = area.x() + area.width();
        const int bottom = area.y() + area.height();
        if (inner.isEmpty()) {
            addBlack(area.x(), area.y(), right, bottom);
            return;
        }
        const int innerRight = inner.x() + inner.width();
        const int innerBottom = inner.y() + inner.height();
        addBlack(area.x(), area.y(), right, inner.y());
        addBlack(area.x(), inner.y(), inner.x(), innerBottom);
        addBlack(innerRight, inner.y(), right, innerBottom);
        addBlack(area.x(), innerBottom, right, bottom);
    }

    void addPicture(FrameStep::Kind kind, FramePicture picture, const QRect& source, const QRect& target,
                    const QRect& visible)
    {
        const QRect clip = target & visible & frame_;
        if (!source.isEmpty() && !target.isEmpty() && !clip.isEmpty())
            plan_.add({kind, picture, clip, source, target});
    }

    /// Adds the screen picture in `place`, in units. `black` is the canvas below it, empty for none.
    void addScreen(const CGRect& place, const QRect& black)
    {
        const ScreenPicture& screen = inputs_.screen;
        const CGRect whole = wholeOf(screen.size_Screen);
        const CGRect canvas = toPixels_.of(place);
        const QRect area = pixelsOf(canvas) & frame_;
        const CGRect cut = screen.cut.value_or(whole);
        CGRect cutPlace = canvas;
        if (screen.cut) {
            const auto fitted = Return_Fitted_Rect({cut.width, cut.height}, screen.size_Screen);
            cutPlace = Mapping::between(whole, canvas).of(fitted.value_or(CGRect{}));
        }
        const Mapping toFrame = Mapping::between(cut, cutPlace);
        const CGRect seen = commonPart(cut, whole);
        const bool somethingSeen = seen.width > 0 && seen.height > 0 && cutPlace.width > 0 && cutPlace.height > 0;
        const QRect visible = somethingSeen ? pixelsOf(toFrame.of(seen)) & area : QRect();

        QRect picturePixels;
        QRect source;
        QRect target;
        const QImage& grab = screen.imgScreenCapture.image;
        if (!grab.isNull() && !visible.isEmpty()) {
            const CGRect grabWhole = wholeOf(sizeOf(grab));
            source = touchedPixels(Mapping::between(whole, grabWhole).of(seen), grab.size());
            const CGRect sourceUp = flippedUp(QRectF(source), grab.height());
            target = pixelsOf(toFrame.of(Mapping::between(grabWhole, whole).of(sourceUp)));
            picturePixels = target & visible;
        }
        const QRect blackArea = !black.isEmpty() ? black : screen.cut ? area : QRect();
        if (!blackArea.isEmpty())
            addBlackAround(picturePixels, blackArea);
        if (!picturePixels.isEmpty())
            addPicture(FrameStep::Kind::Opaque, FramePicture::Screen, source, target, visible);
        if (screen.cursor && !screen.imgMouseCursor.isNull()) {
            const QRect cursor = pixelsOf(toFrame.of({screen.cursor->x, screen.cursor->y, 16, 16}));
            addPicture(FrameStep::Kind::Blended, FramePicture::Cursor, screen.imgMouseCursor.rect(), cursor, visible);
        }
    }

    void addPrimaryScreen()
    {
        if (screenFillsFrame()) {
            addScreen(wholeOf(target_.units), {});
            return;
        }
        if (const auto fitted = Return_Fitted_Rect(inputs_.screen.size_Screen, target_.units))
            addScreen(*fitted, frame_);
    }

    void addCamera(const CGRect& place, const QRect& black)
    {
        const QRect target = pixelsOf(toPixels_.of(place));
        if (!black.isEmpty())
            addBlackAround(target, black);
        addPicture(FrameStep::Kind::Opaque, FramePicture::Camera, inputs_.camera.image.rect(), target, frame_);
    }

    void addPrimaryCamera()
    {
        if (fillsFrame() && inputs_.i_Show_Secondary == 0) {
            addCamera(wholeOf(target_.units), {});
            return;
        }
        if (const auto fitted = Return_Fitted_Rect(sizeOf(inputs_.camera.image), target_.units))
            addCamera(*fitted, frame_);
    }

    void addSecondary(bool screenFirst, bool cameraFirst)
    {
        if (screenFirst && cameraExists())
            addCamera(cameraSecondaryRect(target_.units, inputs_.i_Size_Camera_Secondary,
                                          inputs_.i_Position_Camera_Secondary, inputs_.i_Camera_CRP),
                      {});
        if (cameraFirst && screenSizeIsUsable())
            addScreen(screenSecondaryRect(target_.units, inputs_.i_Size_Screen_Secondary,
                                          inputs_.i_Position_Screen_Secondary, inputs_.screen.size_Screen),
                      {});
    }

    void addOverlay()
    {
        const QImage& overlay = inputs_.imgOverlay.image;
        if (!inputs_.bOverlay || overlay.isNull())
            return;
        const std::uint64_t factor = target_.pass == FramePass::Output ? 10 : 1; // unsigned: absurd sizes may wrap
        const auto width = static_cast<std::int64_t>(factor * static_cast<std::uint64_t>(inputs_.i_Size_Overlay));
        const CGRect place = overlayRect(target_.units, width, inputs_.i_Position_Overlay, sizeOf(overlay));
        addPicture(FrameStep::Kind::Blended, FramePicture::Overlay, overlay.rect(), pixelsOf(toPixels_.of(place)),
                   frame_);
    }

    const FrameInputs& inputs_;
    const FrameTarget& target_;
    const QRect frame_;
    const Mapping toPixels_;
    FramePlan plan_;
};

} // namespace

FramePlan planFrame(const FrameInputs& inputs, const FrameTarget& target)
{
    return Planner(inputs, target).plan();
}

} // namespace lumavex
