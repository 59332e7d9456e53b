#include "ViewLoader.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <dlfcn.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.ViewLoader")

} // namespace

ViewLoader::ViewLoader()
    : m_library(
          QCoreApplication::applicationDirPath() + u"/" TESSLY_PLUGIN_DIR "/tessly-views.so"_s)
{
    // A failure is told when the library is needed.
    (void)m_library.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

ViewFactory* ViewLoader::factory()
{
    if (!m_factory) {
        if (!m_library.isOpen() && !m_library.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            qCCritical(log) << "Could not load the windows:" << m_library.errorString();
            return nullptr;
        }
        // By the open file, whatever stands under its name by now.
        const QByteArray path = "/proc/self/fd/" + QByteArray::number(m_library.handle());
        void* const library = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL);
        const auto create =
            library == nullptr
                ? nullptr
                : reinterpret_cast<CreateViewFactory>(dlsym(library, createViewFactorySymbol));
        if (create == nullptr) {
            qCCritical(log) << "Could not load the windows:" << dlerror();
            return nullptr;
        }
        m_factory.reset(create());
    }
    return m_factory.get();
}

} // namespace tessly
