// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OutputSize.h"

#include "app/options/AppText.h"
#include "compose/FrameLayout.h"

#include <cmath>

namespace lumavex {

QString vanishingProblem(const CGSize& picture, const CGSize& movie)
{
    const auto fitted = Return_Fitted_Rect(picture, movie);
    if (!fitted || (fitted->width >= 1 && fitted->height >= 1))
        return {};
    const auto text = [](const CGSize& size) { return QStringLiteral("%1x%2").arg(size.width).arg(size.height); };
    const double height = std::round(movie.width * picture.height / picture.width);
    return AppText::tr("A movie of %1 is too flat or too narrow for a picture of %2, of which nothing "
                       "would be seen. Choose a size nearer to its shape, like %3.")
        .arg(text(movie), text(picture), text({movie.width, height}));
}

} // namespace lumavex
