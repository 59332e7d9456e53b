#include "ViewLoader.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QLoggingCategory>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.ViewLoader")

} // namespace

ViewFactory* ViewLoader::factory()
{
    if (!m_factory) {
        QLibrary library(
            QCoreApplication::applicationDirPath() + u"/" TESSLY_PLUGIN_DIR "/tessly-views"_s);
        const auto create =
            reinterpret_cast<CreateViewFactory>(library.resolve(createViewFactorySymbol));
        if (create == nullptr) {
            qCCritical(log) << "Could not load the windows:" << library.errorString();
            return nullptr;
        }
        m_factory.reset(create());
    }
    return m_factory.get();
}

} // namespace tessly
