#include "ShellApplication.h"

#include "ShellExtension.h"

#include <QGuiApplication>

namespace tessly {

bool ShellApplication::isActive() const
{
    const auto extension = windows();
    // The shell may not have told yet that one of the program's own windows has taken the focus.
    return QGuiApplication::focusWindow() == nullptr && extension &&
           extension->front() == ShellExtension::Front{window(), true};
}

void ShellApplication::activate()
{
    if (const auto extension = windows()) {
        extension->activate(*window());
    }
}

} // namespace tessly
