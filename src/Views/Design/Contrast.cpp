#include "Contrast.h"

#include <algorithm>
#include <cmath>

namespace tessly {

namespace {

double linear(float component)
{
    const auto value = static_cast<double>(component);
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

} // namespace

double contrastRatio(const QColor& one, const QColor& other)
{
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor over(const QColor& top, const QColor& bottom)
{
    const float share = top.alphaF();
    const auto mixed = [share](float above, float below) {
        return std::clamp(above * share + below * (1 - share), 0.0F, 1.0F);
    };
    return QColor::fromRgbF(
        mixed(top.redF(), bottom.redF()), mixed(top.greenF(), bottom.greenF()),
        mixed(top.blueF(), bottom.blueF()));
}

QColor withOpacity(QColor color, float opacity)
{
    color.setAlphaF(opacity);
    return color;
}

} // namespace tessly
