#include "Pasteboard.h"

using namespace Qt::StringLiterals;

namespace tessly {

const QString Pasteboard::markerType = u"com.brackmoor.tessly.internal-origin"_s;
const QString Pasteboard::concealedType = u"org.nspasteboard.ConcealedType"_s;

bool PasteboardItem::isEmpty() const
{
    return !plainText && !rtf && !html && !png && !fileURL;
}

} // namespace tessly
