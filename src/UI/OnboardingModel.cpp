#include "OnboardingModel.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

OnboardingModel::OnboardingModel(AppModel& model, std::function<void()> complete, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_complete(std::move(complete))
{
}

OnboardingModel::~OnboardingModel() = default;

QVariantList OnboardingModel::rows() const
{
    const auto row = [](const QString& symbol, const QString& title, const QString& detail) {
        return QVariant::fromValue(PermissionRow{symbol, title, detail});
    };
    return {
        row(u"clipboard"_s, u"Clipboard history"_s, u"Choose Always Allow"_s),
        row(u"keyboard"_s, u"Automatic paste"_s, u"Allow in Accessibility"_s),
        row(u"lock.shield"_s, u"Local storage"_s, u"No cloud"_s),
    };
}

QString OnboardingModel::hint() const
{
    return m_hasTray ? QString()
                     : u"There is no tray here. To open Quick Paste, bind “tessly toggle” to a key "
                       "in the desktop’s keyboard settings."_s;
}

void OnboardingModel::setHasTray(bool hasTray)
{
    if (std::exchange(m_hasTray, hasTray) != hasTray) {
        Q_EMIT hintChanged();
    }
}

void OnboardingModel::enable()
{
    if (std::exchange(m_isEnabled, true)) {
        return;
    }
    m_model.settings().setHasCompletedOnboarding(true);
    // Whether it was granted shows in the refresh.
    static_cast<void>(m_model.pasteService().requestAutomaticPasteAccess());
    m_model.refreshAutomaticPasteAccess(false);
    m_model.clipboardMonitor().start();
    m_model.reload(AppModel::Debounce::no);
    if (m_complete) {
        m_complete();
    }
}

} // namespace tessly
