#pragma once

#include "ActionOutcome.h"

#include <QString>

namespace tessly {

inline const QString busName = QStringLiteral("com.brackmoor.tessly");
inline const QString busPath = QStringLiteral("/com/brackmoor/tessly");
inline const QString busInterface = QStringLiteral("com.brackmoor.tessly");

/// The name of the D-Bus error by which a refused or failed action is answered.
[[nodiscard]] QString busErrorName(ActionOutcome::Case resultCase);

} // namespace tessly
