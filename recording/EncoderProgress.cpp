// SPDX-License-Identifier: GPL-3.0-or-later
#include "recording/EncoderProgress.h"

#include <QStringDecoder>

#include <algorithm>

namespace lumavex {

namespace {

constexpr QStringView kMarker = u"time=";
constexpr qsizetype kMarkerAndValue = 13; ///< "time=" and "HH:MM:SS"

std::int64_t leadingInteger(QStringView text)
{
    std::int64_t value = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            break;
        value = value * 10 + (c.unicode() - u'0');
    }
    return value;
}

} // namespace

std::int64_t Return_Seconds_From_VOB_Duration_Str(QStringView text)
{
    const auto part = [text](qsizetype position) {
        return position < text.size() ? leadingInteger(text.mid(position, 2)) : 0;
    };
    return part(0) * 3600 + part(3) * 60 + part(6);
}

std::optional<std::int64_t> encoderSeconds(const QByteArray& chunk)
{
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decode(chunk);
    if (decode.hasError())
        return {};

    std::optional<std::int64_t> seconds;
    qsizetype position = text.indexOf(kMarker);
    while (position >= 0 && position + kMarkerAndValue <= text.size()) {
        seconds = Return_Seconds_From_VOB_Duration_Str(QStringView(text).mid(position + kMarker.size(), 8));
        position = text.indexOf(kMarker, position + kMarkerAndValue, Qt::CaseInsensitive);
    }
    return seconds;
}

float encoderPercentage(std::uint64_t seconds, std::uint64_t lengthInSeconds)
{
    if (lengthInSeconds == 0)
        return 100.0F;
    const float percentage = static_cast<float>(seconds) * 100.0F / static_cast<float>(lengthInSeconds);
    return std::clamp(percentage, 0.0F, 100.0F);
}

} // namespace lumavex
