#include "OnboardingWindowController.h"

#include <QCoreApplication>
#include <QPointer>

#include <utility>

namespace tessly {

OnboardingWindowController::OnboardingWindowController(
    AppModel& model, ViewFactory viewFactory, std::function<void()> complete)
    : m_viewFactory(std::move(viewFactory))
    , m_complete(std::move(complete))
    , m_onboarding(model, [this] { completeSoon(); })
{
}

OnboardingWindowController::~OnboardingWindowController() = default;

void OnboardingWindowController::show()
{
    if (!m_view) {
        m_view = m_viewFactory(m_onboarding);
    }
    if (m_view) {
        m_view->show();
    }
}

void OnboardingWindowController::close()
{
    if (m_view) {
        m_view->close();
    }
}

bool OnboardingWindowController::isShown() const
{
    return m_view && m_view->isShown();
}

void OnboardingWindowController::completeSoon()
{
    // The button's press is still on the stack of the window that is about to go.
    QMetaObject::invokeMethod(
        qApp,
        [alive = QPointer(&m_onboarding), complete = m_complete] {
            if (alive && complete) {
                complete();
            }
        },
        Qt::QueuedConnection);
}

} // namespace tessly
