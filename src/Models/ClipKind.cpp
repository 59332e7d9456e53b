#include "ClipKind.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace tessly {

QString rawValue(ClipKind kind)
{
    switch (kind) {
    case ClipKind::text:
        return u"text"_s;
    case ClipKind::richText:
        return u"richText"_s;
    case ClipKind::image:
        return u"image"_s;
    case ClipKind::files:
        return u"files"_s;
    case ClipKind::link:
        return u"link"_s;
    }
    Q_UNREACHABLE();
}

std::optional<ClipKind> clipKind(QStringView name)
{
    const auto* const found = std::ranges::find_if(
        allClipKinds, [name](ClipKind kind) { return rawValue(kind) == name; });
    return found == allClipKinds.end() ? std::nullopt : std::optional(*found);
}

} // namespace tessly
