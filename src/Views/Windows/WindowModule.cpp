#include "WindowModule.h"

using namespace Qt::StringLiterals;

void qml_register_types_Tessly_Windows();

namespace tessly {

QUrl windowModuleFile(const QString& name)
{
    // The module is part of this library; nothing else refers to its types.
    static const bool registered = (qml_register_types_Tessly_Windows(), true);
    Q_UNUSED(registered)
    return QUrl(u"qrc:/qt/qml/Tessly/Windows/"_s + name);
}

} // namespace tessly
