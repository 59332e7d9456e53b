#include "KeyCaps.h"

#include "Presentation.h"

#include <QFontMetrics>
#include <QGuiApplication>

#include <algorithm>

namespace tessly {

QString drawableKeys(const QString& label, const std::function<bool(QChar)>& canDraw)
{
    return std::ranges::all_of(label, canDraw) ? label : keyNames(label);
}

QString drawableKeys(const QString& label)
{
    const QFontMetrics metrics(QGuiApplication::font());
    return drawableKeys(label, [&metrics](QChar key) {
        // Looks into the fonts that stand in for others, too.
        return metrics.inFontUcs4(key.unicode());
    });
}

} // namespace tessly
