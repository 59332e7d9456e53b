#include "PanelLoader.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QLoggingCategory>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.PanelLoader")

} // namespace

std::unique_ptr<PanelView> loadPanelView(PanelModel& model)
{
    QLibrary library(
        QCoreApplication::applicationDirPath() + u"/" TESSLY_PLUGIN_DIR "/tessly-panel"_s);
    const auto create =
        reinterpret_cast<PanelView* (*)(PanelModel*)>(library.resolve("tesslyCreatePanelView"));
    if (create == nullptr) {
        qCCritical(log) << "Could not load the panel:" << library.errorString();
        return nullptr;
    }
    return std::unique_ptr<PanelView>(create(&model));
}

} // namespace tessly
