// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/options/OptionValues.h"

#include "app/options/AppText.h"
#include "recording/MovieContainer.h"

#include <QFileInfo>

#include <cmath>

namespace lumavex {

namespace {

QString readWholeNumber(const QString& value, std::int64_t lowest, std::int64_t highest, const QString& problem,
                        std::optional<std::int64_t>& target)
{
    bool isNumber = false;
    const std::int64_t number = value.toLongLong(&isNumber);
    if (!isNumber || number < lowest || number > highest)
        return problem;
    target = number;
    return {};
}

QString readColour(const QString& value, float lowest, float highest, float neutral, std::optional<float>& target)
{
    bool isNumber = false;
    const float number = value.toFloat(&isNumber);
    if (!isNumber || !std::isfinite(number) || number < lowest || number > highest)
        return AppText::tr("must be a number from %1 to %2; %3 changes nothing").arg(lowest).arg(highest).arg(neutral);
    target = number;
    return {};
}

} // namespace

QString readPosition(const QString& value, std::optional<std::int64_t>& target)
{
    return readWholeNumber(value, 0, 8,
                           AppText::tr("must be a place from 0 to 8, row by row from the top left to the bottom right"),
                           target);
}

QString readSecondarySize(const QString& value, std::optional<std::int64_t>& target)
{
    return readWholeNumber(
        value, 0, 4,
        AppText::tr("must be a size from 0 to 4: an eighth, a quarter, a third, a half or all of the "
                    "movie's width"),
        target);
}

QString readOverlaySize(const QString& value, std::optional<std::int64_t>& target)
{
    return readWholeNumber(
        value, 1, 1638, AppText::tr("must be a width from 1 to 1638, in tens of pixels: 30 makes 300 pixels"), target);
}

QString readSaturation(const QString& value, std::optional<float>& target)
{
    return readColour(value, 0, 20, 10, target);
}

QString readBrightness(const QString& value, std::optional<float>& target)
{
    return readColour(value, -10, 10, 0, target);
}

QString readContrast(const QString& value, std::optional<float>& target)
{
    return readColour(value, 0, 20, 10, target);
}

QString readMoviePath(const QString& value, QString& target)
{
    const QFileInfo file(value);
    if (file.fileName().isEmpty())
        return AppText::tr("must name a file");
    if (!file.suffix().isEmpty() && !containerOf(value) && !file.isDir())
        return AppText::tr("must name a .mov, .mkv or .avi file; no other kind holds what is recorded as it is");
    target = value;
    return {};
}

QString readPicturePath(const QString& value, QString& target)
{
    const QFileInfo file(value);
    if (file.fileName().isEmpty())
        return AppText::tr("must name a file");
    if (!file.suffix().isEmpty() && file.suffix().compare(QLatin1String("png"), Qt::CaseInsensitive) != 0)
        return AppText::tr("must name a .png file, the one kind of picture that is written");
    target = value;
    return {};
}

} // namespace lumavex
