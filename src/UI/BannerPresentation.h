#pragma once

#include "AppModel.h"

namespace tessly {

/// What views call a kind of banner: "information", "warning" or "error".
[[nodiscard]] QString bannerKindName(AppModel::BannerKind kind);

} // namespace tessly
