#include "SettingsWindowController.h"

#include <utility>

namespace tessly {

SettingsWindowController::SettingsWindowController(
    SettingsModel::Dependencies dependencies, Clock& clock, ViewFactory viewFactory)
    : m_clock(clock)
    , m_viewFactory(std::move(viewFactory))
    , m_settings(std::move(dependencies))
{
}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::show()
{
    if (!m_view) {
        m_view = m_viewFactory(m_settings);
        if (!m_view) {
            return;
        }
        m_view->setEvents({.didClose = [this] { viewDidClose(); }});
    }
    m_viewTimer.reset();
    m_settings.reload();
    m_view->show();
}

void SettingsWindowController::close()
{
    if (m_view) {
        m_view->close();
    }
}

bool SettingsWindowController::isShown() const
{
    return m_view && m_view->isShown();
}

void SettingsWindowController::viewDidClose()
{
    m_settings.cancelClearing();
    m_viewTimer = m_clock.after(viewIsKept, [this] { m_view.reset(); });
}

} // namespace tessly
