#include "FakeHotKeyCenter.h"

#include <QCoreApplication>

#include <algorithm>
#include <ranges>

namespace tessly::test {

namespace {

/// The keys 1 to 0 of the upper row.
constexpr std::array<quint32, 10> knownKeys = {18, 19, 20, 21, 22, 23, 25, 26, 28, 29};

} // namespace

FakeHotKeyCenter::FakeHotKeyCenter() = default;
FakeHotKeyCenter::~FakeHotKeyCenter() = default;

bool FakeHotKeyCenter::takeElsewhere(Combination combination)
{
    const bool isOwn = std::ranges::any_of(m_held, [&combination](const auto& entry) {
        return entry.second.combination == combination;
    });
    return !isOwn && m_heldElsewhere.insert(combination).second;
}

void FakeHotKeyCenter::press(Combination combination)
{
    for (const auto& held : m_held | std::views::values) {
        if (held.combination == combination) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [this, alive = std::weak_ptr(m_alive), key = held.key] {
                    if (!alive.expired()) {
                        deliver({.status = done, .key = key});
                    }
                },
                Qt::QueuedConnection);
        }
    }
}

HotKeyCenter::Status FakeHotKeyCenter::deliver(const Press& press)
{
    return m_handler ? m_handler(press) : notHandled;
}

void FakeHotKeyCenter::failHandlers(Status status)
{
    m_handlerFailure = status;
}

void FakeHotKeyCenter::allowHandlers()
{
    m_handlerFailure.reset();
}

std::vector<FakeHotKeyCenter::Held> FakeHotKeyCenter::held() const
{
    const auto values = m_held | std::views::values;
    return {values.begin(), values.end()};
}

HotKeyCenter::Installation FakeHotKeyCenter::installHandler(Handler handler)
{
    if (m_handlerFailure) {
        return {*m_handlerFailure, 0};
    }
    if (m_handler) {
        return {taken, 0};
    }
    ++m_handlersInstalled;
    m_handler = std::move(handler);
    m_handlerReference = m_nextReference++;
    return {done, m_handlerReference};
}

HotKeyCenter::Status FakeHotKeyCenter::removeHandler(Reference handler)
{
    if (!m_handler || handler != m_handlerReference) {
        return invalid;
    }
    m_handler = nullptr;
    return done;
}

HotKeyCenter::Registration
FakeHotKeyCenter::registerKey(quint32 keyCode, quint32 modifiers, KeyID key)
{
    m_asked.push_back(key);
    const Reference reference = m_nextReference++;
    const Status status = grab({keyCode, modifiers}, key, reference);
    return {.key = m_givesReferences ? reference : 0, .status = answer(status)};
}

HotKeyCenter::Status FakeHotKeyCenter::grab(Combination combination, KeyID key, Reference reference)
{
    constexpr quint32 knownModifiers = commandKey | shiftKey | optionKey | controlKey;
    if (std::ranges::count(knownKeys, combination.first) == 0 ||
        (combination.second & ~knownModifiers) != 0) {
        return invalid;
    }
    if (!takeElsewhere(combination)) {
        return taken;
    }
    releaseElsewhere(combination);
    m_held.emplace(reference, Held{combination, key});
    return done;
}

QCoro::Task<HotKeyCenter::Status> FakeHotKeyCenter::answer(Status status)
{
    const std::weak_ptr alive = m_alive;
    co_await m_gate.pass();
    co_return alive.expired() ? unavailable : status;
}

HotKeyCenter::Status FakeHotKeyCenter::unregisterKey(Reference key)
{
    return m_held.erase(key) == 1 ? done : invalid;
}

} // namespace tessly::test
