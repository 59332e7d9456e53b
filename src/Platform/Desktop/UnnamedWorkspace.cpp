#include "UnnamedWorkspace.h"

#include "UnnamedApplication.h"
#include "UrlOpener.h"

namespace tessly {

UnnamedWorkspace::UnnamedWorkspace(const Workspace* told)
    : m_told(told)
    , m_unnamed(std::make_shared<UnnamedApplication>())
{
}

UnnamedWorkspace::~UnnamedWorkspace() = default;

std::shared_ptr<RunningApplication> UnnamedWorkspace::frontmostApplication() const
{
    auto told = m_told != nullptr ? m_told->frontmostApplication() : nullptr;
    return told ? told : m_unnamed;
}

bool UnnamedWorkspace::openURL(const QUrl& url)
{
    return openWithDesktop(url);
}

} // namespace tessly
