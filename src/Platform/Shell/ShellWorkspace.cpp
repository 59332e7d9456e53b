#include "ShellWorkspace.h"

#include "ShellExtension.h"

#include <optional>
#include <utility>

namespace tessly {

ShellWorkspace::ShellWorkspace(std::weak_ptr<ShellExtension> extension, Workspace& fallback)
    : m_extension(std::move(extension))
    , m_fallback(fallback)
{
}

ShellWorkspace::~ShellWorkspace()
{
    setFrontmostChanged({});
}

std::shared_ptr<RunningApplication> ShellWorkspace::frontmostApplication() const
{
    const auto extension = m_extension.lock();
    if (!extension || !extension->isPresent()) {
        return m_fallback.frontmostApplication();
    }
    return m_applications->of(extension->front().window, m_extension);
}

QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
ShellWorkspace::inFrontDuring(Clock::Duration span)
{
    // This object and the extension may go while the shell is asked.
    const std::weak_ptr<Applications> alive = m_applications;
    const std::weak_ptr<ShellExtension> weakExtension = m_extension;
    const auto since = std::chrono::steady_clock::now() - span;
    std::vector<std::shared_ptr<RunningApplication>> inFront;
    std::optional<QCoro::Task<>> caughtUp;
    if (const auto extension = weakExtension.lock()) {
        caughtUp = extension->catchUp();
    }
    if (caughtUp) {
        co_await *caughtUp;
    }
    if (alive.expired()) {
        inFront.push_back(nullptr);
        co_return inFront;
    }
    const auto extension = weakExtension.lock();
    const bool isTold = extension && extension->isPresent();
    const auto front = isTold ? extension->front().window : nullptr;
    // Those that it told of just before it went count as well.
    for (const auto& window :
         extension ? extension->history()->since(since) : ShellExtension::History::Windows()) {
        if (window != front) {
            inFront.push_back(m_applications->of(window, weakExtension));
        }
    }
    if (isTold) {
        inFront.push_back(m_applications->of(front, weakExtension));
        co_return inFront;
    }
    const auto others = co_await m_fallback.inFrontDuring(std::chrono::steady_clock::now() - since);
    inFront.insert(inFront.end(), others.begin(), others.end());
    co_return inFront;
}

void ShellWorkspace::setFrontmostChanged(std::function<void()> changed)
{
    QObject::disconnect(std::exchange(m_told, {}));
    const auto extension = m_extension.lock();
    if (changed && extension) {
        m_told = QObject::connect(
            extension.get(), &ShellExtension::frontChanged, extension.get(), changed);
    }
    // Of what it tells of, the extension has told.
    m_fallback.setFrontmostChanged(
        changed ? [changed, weak = m_extension] {
            const auto there = weak.lock();
            if (!there || !there->isPresent()) {
                changed();
            }
        } : std::function<void()>());
}

} // namespace tessly
