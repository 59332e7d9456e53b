#include "WaylandDesktop.h"

#include "WaylandDesktopConnection.h"
#include "WaylandToplevels.h"

#include <QLoggingCategory>
#include <QObject>

#include <algorithm>
#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcDesktop, "com.brackmoor.tessly.WaylandDesktop")

} // namespace

WaylandDesktop::WaylandDesktop()
    : WaylandDesktop(Options())
{
}

WaylandDesktop::WaylandDesktop(const Options& options)
    : m_options(options)
    , m_mainThread(std::make_unique<QObject>())
    , m_connection(connect())
    , m_since(std::chrono::steady_clock::now())
{
    m_connection->start([this, connection = m_connection.get()] {
        postToMainThread([this, connection] { ended(connection); });
    });
    m_hasToplevels = m_connection->toplevels()->isTold();
}

WaylandDesktop::~WaylandDesktop() = default;

WaylandDesktop::Connection WaylandDesktop::connect() const
{
    return std::make_shared<WaylandDesktopConnection>(WaylandDesktopConnection::Options{
        .display = m_options.display,
        .entries = m_options.entries,
        .deadline = m_options.deadline,
        .timeout = m_options.timeout,
        .history = m_history,
        .frontChanged = m_frontChanged.request()});
}

void WaylandDesktop::postToMainThread(std::function<void()> job)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    QMetaObject::invokeMethod(m_mainThread.get(), [this] { runJobs(); }, Qt::QueuedConnection);
}

void WaylandDesktop::runJobs()
{
    std::vector<std::function<void()>> jobs;
    {
        const std::scoped_lock lock(m_mutex);
        jobs.swap(m_jobs);
    }
    for (const auto& job : jobs) {
        job();
    }
}

void WaylandDesktop::ended(const WaylandDesktopConnection* connection)
{
    if (connection == m_next.get()) {
        m_next.reset();
        connectLater();
    } else if (connection == m_connection.get()) {
        const bool hasLasted = std::chrono::steady_clock::now() - m_since > m_options.longestDelay;
        if (hasLasted) {
            m_delay = {};
        }
        if (m_delay == std::chrono::milliseconds::zero()) {
            qCWarning(
                lcDesktop,
                "The connection over which windows and keys go has ended. It is made again.");
        }
        connectLater();
    }
}

void WaylandDesktop::connectLater()
{
    m_delay = m_delay == std::chrono::milliseconds::zero()
                  ? m_options.firstDelay
                  : std::min(2 * m_delay, m_options.longestDelay);
    // The thread of the connection that has ended has nothing else to do.
    m_connection->callAfter(m_delay, [this] {
        Connection next;
        try {
            next = connect();
        } catch (const WaylandError&) {
            // Nobody is there, yet: tried again.
        }
        postToMainThread([this, next] { connected(next); });
    });
}

void WaylandDesktop::connected(Connection next)
{
    if (!next) {
        connectLater();
        return;
    }
    m_next = std::move(next);
    m_next->startLater(
        [this, connection = m_next.get()] {
            postToMainThread([this, connection] { ready(connection); });
        },
        [this, connection = m_next.get()] {
            postToMainThread([this, connection] { ended(connection); });
        });
}

void WaylandDesktop::ready(const WaylandDesktopConnection* connection)
{
    if (connection != m_next.get()) {
        return;
    }
    if (m_hasToplevels && !m_next->toplevels()->isTold()) {
        // One that knows nothing of windows is no better than the one that ended.
        m_next.reset();
        connectLater();
        return;
    }
    if (const auto front = m_connection->toplevels()->front()) {
        // The record of the same window, or of one that went meanwhile: it counted as in front.
        m_history->add(front);
    }
    m_connection = std::exchange(m_next, nullptr);
    m_frontChanged.request()();
    m_since = std::chrono::steady_clock::now();
}

bool WaylandDesktop::hasToplevels() const
{
    return m_connection->toplevels()->isTold();
}

bool WaylandDesktop::canPress(WaylandKeyboard::Way way) const
{
    return m_connection->isConnected() && m_connection->keyboard().has(way);
}

bool WaylandDesktop::hasVirtualKeyboard() const
{
    return canPress(WaylandKeyboard::Way::virtualKeyboard);
}

bool WaylandDesktop::hasFakeInput() const
{
    return canPress(WaylandKeyboard::Way::fakeInput);
}

std::optional<KeyStrokes> WaylandDesktop::strokes(PasteChord chord) const
{
    return m_connection->keyboard().strokes(chord);
}

QByteArray WaylandDesktop::symbolWithShift(std::uint32_t key) const
{
    return m_connection->keyboard().symbolWithShift(key);
}

QFuture<bool> WaylandDesktop::modifiersUp()
{
    return m_connection->modifiersUp();
}

QFuture<KeySender::Sending> WaylandDesktop::press(
    WaylandKeyboard::Way way, PasteChord chord, std::shared_ptr<const TrackedWindow> target,
    KeySender::IsThere isThere)
{
    return m_connection->press(way, chord, std::move(target), std::move(isThere));
}

QFuture<std::optional<WaylandGround::Pointer>>
WaylandDesktop::layGround(std::function<void()> pressed)
{
    return m_connection->layGround(std::move(pressed));
}

void WaylandDesktop::liftGround()
{
    m_connection->liftGround();
}

std::shared_ptr<WaylandToplevels> WaylandDesktop::toplevels() const
{
    return m_connection->toplevels();
}

QFuture<bool> WaylandDesktop::catchUp()
{
    return m_connection->catchUp();
}

void WaylandDesktop::setFrontChanged(std::function<void()> changed)
{
    m_frontChanged.setCallback(std::move(changed));
}

} // namespace tessly
