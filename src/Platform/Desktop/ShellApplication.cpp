#include "ShellApplication.h"

#include "ShellExtension.h"

#include <QGuiApplication>

#include <utility>

namespace tessly {

ShellApplication::ShellApplication(
    std::shared_ptr<const ShellWindow> window, std::weak_ptr<ShellExtension> extension)
    : m_window(std::move(window))
    , m_extension(std::move(extension))
{
}

std::optional<QString> ShellApplication::localizedName() const
{
    return m_window->owner().name;
}

std::optional<QString> ShellApplication::bundleIdentifier() const
{
    return m_window->owner().applicationID;
}

QStringList ShellApplication::names() const
{
    return m_window->owner().names;
}

bool ShellApplication::isActive() const
{
    const auto extension = m_extension.lock();
    // The shell may not have told yet that one of the program's own windows has taken the focus.
    return QGuiApplication::focusWindow() == nullptr && extension &&
           extension->front() == ShellExtension::Front{m_window, true};
}

bool ShellApplication::isTerminated() const
{
    return m_window->isGone() || m_extension.expired();
}

void ShellApplication::activate()
{
    if (const auto extension = m_extension.lock()) {
        extension->activate(*m_window);
    }
}

PasteChord ShellApplication::pasteChord() const
{
    return m_window->owner().chord;
}

} // namespace tessly
