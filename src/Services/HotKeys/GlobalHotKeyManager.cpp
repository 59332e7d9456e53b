#include "GlobalHotKeyManager.h"

#include <QLoggingCategory>
#include <QPointer>

#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcHotKeys, "com.brackmoor.tessly.GlobalHotKeyManager")

/// Marks the program's keys: the four characters, the first in the most significant byte.
constexpr quint32 signature = ('T' << 24U) | ('S' << 16U) | ('L' << 8U) | 'Y';

} // namespace

GlobalHotKeyManager::GlobalHotKeyManager(HotKeyCenter& center, QObject* parent)
    : QObject(parent)
    , m_center(center)
{
}

GlobalHotKeyManager::~GlobalHotKeyManager() = default;

bool GlobalHotKeyManager::installEventHandlerIfNeeded()
{
    if (m_eventHandler != 0) {
        return true;
    }
    const auto handler = [self = QPointer(this)](const HotKeyCenter::Press& press) {
        if (!self) {
            return HotKeyCenter::notHandled;
        }
        if (press.status != HotKeyCenter::done) {
            return press.status;
        }
        // Whatever the signature: only keys of this program arrive here. The action runs after the
        // desktop's dispatch has returned.
        QMetaObject::invokeMethod(
            self, [self, id = press.key.id] { self->performAction(id); }, Qt::QueuedConnection);
        return HotKeyCenter::done;
    };
    const auto [status, reference] = m_center.installHandler(handler);
    if (status != HotKeyCenter::done || reference == 0) {
        qCCritical(lcHotKeys, "Unable to install hotkey event handler: %d", status);
        return false;
    }
    m_eventHandler = reference;
    qCInfo(lcHotKeys, "Hotkey event handler installed");
    return true;
}

QCoro::Task<bool> GlobalHotKeyManager::registerShortcut(Shortcut shortcut, Action action)
{
    if (!installEventHandlerIfNeeded()) {
        co_return false;
    }
    // Spent before the desktop is asked: a key that is refused leaves a gap.
    const quint32 id = m_nextID++;
    const QPointer self(this);
    auto registration = m_center.registerKey(
        shortcut.keyCode, shortcut.modifiers, {.signature = signature, .id = id});
    const HotKeyCenter::Reference reference = registration.key;
    m_pending.insert(reference);

    const HotKeyCenter::Status status = co_await registration.status;
    if (!self) {
        co_return false;
    }
    const bool isWanted = self->m_pending.erase(reference) == 1;
    if (status != HotKeyCenter::done || reference == 0) {
        qCCritical(
            lcHotKeys, "Unable to register hotkey keyCode=%u modifiers=%u: %d", shortcut.keyCode,
            shortcut.modifiers, status);
        co_return false;
    }
    if (!isWanted) {
        co_return false;
    }
    self->m_references.insert_or_assign(id, reference);
    self->m_actions.insert_or_assign(id, std::move(action));
    qCInfo(
        lcHotKeys, "Registered hotkey id=%u keyCode=%u modifiers=%u", id, shortcut.keyCode,
        shortcut.modifiers);
    co_return true;
}

void GlobalHotKeyManager::unregisterAll()
{
    for (const auto& [id, reference] : m_references) {
        // What cannot be given up is gone already.
        m_center.unregisterKey(reference);
    }
    for (const HotKeyCenter::Reference reference : m_pending) {
        m_center.unregisterKey(reference);
    }
    m_references.clear();
    m_pending.clear();
    m_actions.clear();
    m_nextID = 1;
}

void GlobalHotKeyManager::removeEventHandler()
{
    if (m_eventHandler != 0) {
        m_center.removeHandler(m_eventHandler);
        m_eventHandler = 0;
    }
}

void GlobalHotKeyManager::performAction(quint32 id)
{
    qCInfo(lcHotKeys, "Triggered hotkey id=%u", id);
    if (const auto found = m_actions.find(id); found != m_actions.end()) {
        // A copy: the action may register keys anew.
        const Action action = found->second;
        action();
    }
}

} // namespace tessly
