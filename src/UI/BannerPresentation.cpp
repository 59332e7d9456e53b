#include "BannerPresentation.h"

using namespace Qt::StringLiterals;

namespace tessly {

QString bannerKindName(AppModel::BannerKind kind)
{
    switch (kind) {
    case AppModel::BannerKind::information:
        return u"information"_s;
    case AppModel::BannerKind::warning:
        return u"warning"_s;
    case AppModel::BannerKind::error:
        return u"error"_s;
    }
    Q_UNREACHABLE();
}

} // namespace tessly
