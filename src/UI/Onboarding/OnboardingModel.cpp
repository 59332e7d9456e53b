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
    const auto row = [](const QString& symbol, const QString& title, const QString& detail,
                        const QString& note) {
        return QVariant::fromValue(PermissionRow{symbol, title, detail, note});
    };
    return {
        row(u"clipboard"_s, u"Clipboard history"_s, u"Choose Always Allow"_s, m_desktop.recording),
        row(u"keyboard"_s, u"Automatic paste"_s, u"Allow in Accessibility"_s, m_desktop.pasting),
        row(u"lock.shield"_s, u"Local storage"_s, u"No cloud"_s, m_desktop.storage),
    };
}

QString OnboardingModel::hint() const
{
    return m_desktop.hasTray
               ? u"To open Quick Paste, click the Tessly icon in the bar."_s
               : u"There is no tray here. To open Quick Paste, bind “tessly toggle” to a key "
                 "in the desktop’s keyboard settings."_s;
}

QString OnboardingModel::command() const
{
    return m_desktop.hasTray ? QString() : u"tessly toggle"_s;
}

void OnboardingModel::setDesktop(const OnboardingDesktop& desktop)
{
    if (m_desktop != desktop) {
        m_desktop = desktop;
        Q_EMIT desktopChanged();
    }
}

void OnboardingModel::copyCommand()
{
    copy(this);
}

QCoro::Task<> OnboardingModel::copy(QPointer<OnboardingModel> self)
{
    const QByteArray command = self->command().toUtf8();
    const QPointer<PasteService> pasteboard(&self->m_model.pasteService());
    const auto turn = co_await pasteboard->turn();
    if (pasteboard) {
        // Whether it is still there shows when it is pasted.
        static_cast<void>(pasteboard->write(ClipPayload({.plainText = command}), true));
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
