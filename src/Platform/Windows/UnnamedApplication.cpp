#include "UnnamedApplication.h"

#include <QGuiApplication>

#include <utility>

namespace tessly {

UnnamedApplication::UnnamedApplication()
    : UnnamedApplication([] { return QGuiApplication::focusWindow() != nullptr; })
{
}

UnnamedApplication::UnnamedApplication(HasOwnFocus hasOwnFocus)
    : m_hasOwnFocus(std::move(hasOwnFocus))
{
}

UnnamedApplication::~UnnamedApplication() = default;

bool UnnamedApplication::isActive() const
{
    return !m_hasOwnFocus();
}

} // namespace tessly
