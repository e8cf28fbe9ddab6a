// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/options/LaunchOptionRules.h"

#include "app/options/AppText.h"
#include "capture/CaptureState.h"

namespace lumavex {

namespace {

/// An option of one capture type selects that type; options of two types contradict each other.
QString completeType(LaunchOptions& options)
{
    const struct {
        bool given;
        std::int64_t type;
        const char* name;
    } hints[] = {{options.follow.has_value(), FollowCursor, "--follow"},
                 {options.region.has_value(), Region, "--region"},
                 {!options.window.isEmpty(), WindowExclusive, "--window"}};
    for (const auto& hint : hints) {
        if (!hint.given)
            continue;
        if (options.captureType.value_or(hint.type) != hint.type)
            return AppText::tr("%1 does not go with the capture type chosen.").arg(QLatin1String(hint.name));
        options.captureType = hint.type;
    }
    const QString goal = options.recordSeconds ? QStringLiteral("--record") : QStringLiteral("--snapshot");
    if (options.isUnattended() && options.captureType == Region && !options.region)
        return AppText::tr("--type region needs --region X,Y,W,H with %1.").arg(goal);
    if (options.isUnattended() && options.captureType == WindowExclusive && options.window.isEmpty())
        return AppText::tr("--type window needs --window TEXT with %1.").arg(goal);
    // In an attended run the user may choose a window later.
    const std::int64_t laterType = options.isUnattended() ? EntireScreen : WindowExclusive;
    if (options.whenWindowGoes && options.captureType.value_or(laterType) != WindowExclusive)
        return AppText::tr("--when-window-goes is of use with --window TEXT.");
    return {};
}

QString checkFiles(const LaunchOptions& options)
{
    if (options.recordSeconds && !options.snapshot.isEmpty())
        return AppText::tr("--record and --snapshot do not go together; take the picture in a run of its own.");
    if (options.recordSeconds && options.output.isEmpty())
        return AppText::tr("--record needs --output FILE.");
    if (!options.recordSeconds && !options.output.isEmpty())
        return AppText::tr("--output is of use with --record only.");
    return {};
}

/// An option for a source that is not in the picture is an error, as far as the options tell.
QString checkPictures(const LaunchOptions& options)
{
    using Source = LaunchOptions::Source;
    const auto isSource = [&options](Source source) { return options.source == source; };
    const bool alone = isSource(Source::Screen) || isSource(Source::Camera);
    const QString withOverlay = AppText::tr("%1 needs --overlay FILE.");
    const QString withBoth = AppText::tr("%1 is of use with --source both or both-camera.");
    const QString withCamera = AppText::tr("%1 is of use with a camera, not with --source screen.");
    const struct {
        bool useless;
        const char* name;
        const QString& text;
    } rules[] = {
        {options.overlayPosition && options.overlay.isEmpty(), "--overlay-position", withOverlay},
        {options.overlaySize && options.overlay.isEmpty(), "--overlay-size", withOverlay},
        {options.secondaryPosition && alone, "--secondary-position", withBoth},
        {options.secondarySize && alone, "--secondary-size", withBoth},
        {!options.camera.isEmpty() && isSource(Source::Screen), "--camera", withCamera},
        {options.cameraSize && isSource(Source::Screen), "--camera-size", withCamera},
        {options.saturation && isSource(Source::Screen), "--saturation", withCamera},
        {options.brightness && isSource(Source::Screen), "--brightness", withCamera},
        {options.contrast && isSource(Source::Screen), "--contrast", withCamera},
    };
    for (const auto& rule : rules)
        if (rule.useless)
            return rule.text.arg(QLatin1String(rule.name));
    return {};
}

} // namespace

QString completeOptions(LaunchOptions& options)
{
    for (const QString& problem : {completeType(options), checkFiles(options), checkPictures(options)})
        if (!problem.isEmpty())
            return problem;
    return {};
}

} // namespace lumavex
