#pragma once

#include <QByteArrayView>

namespace tessly {

/// `utf8` without the white space and newlines (Unicode's White_Space property) at both its ends.
/// Costs what is cut off, however long the rest. At most 2 GB.
[[nodiscard]] QByteArrayView trimmed(QByteArrayView utf8);

} // namespace tessly
