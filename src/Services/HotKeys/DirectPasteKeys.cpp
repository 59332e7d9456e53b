#include "DirectPasteKeys.h"

#include <QStringList>

#include <array>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// The keys 1 to 9 and 0, in the order of the positions.
constexpr std::array<quint32, 10> keyCodes = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};
constexpr quint32 modifiers = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;

QString keyName(std::size_t index)
{
    return QString::number((index + 1) % 10);
}

} // namespace

DirectPasteKeys::DirectPasteKeys(GlobalHotKeyManager& hotKeys, Paste paste)
    : m_hotKeys(hotKeys)
    , m_paste(std::move(paste))
{
}

DirectPasteKeys::~DirectPasteKeys() = default;

QCoro::Task<std::optional<QString>> DirectPasteKeys::setUp(State state)
{
    m_hotKeys.unregisterAll();
    const std::weak_ptr<quint32> current = m_run;
    const quint32 run = ++*m_run;
    if (state == State::off) {
        co_return std::nullopt;
    }
    // All questions first, then the answers: one wait for the desktop instead of ten.
    std::vector<QCoro::Task<bool>> registrations;
    for (std::size_t index = 0; index < keyCodes.size(); ++index) {
        const int position = static_cast<int>(index) + 1;
        registrations.push_back(m_hotKeys.registerShortcut(
            {.keyCode = keyCodes.at(index), .modifiers = modifiers},
            [paste = m_paste, position] { paste(position); }));
    }
    QStringList failed;
    for (std::size_t index = 0; index < registrations.size(); ++index) {
        if (!co_await registrations[index]) {
            failed << keyName(index);
        }
    }
    const auto latest = current.lock();
    if (failed.isEmpty() || !latest || *latest != run) {
        co_return std::nullopt;
    }
    co_return u"Some direct-paste shortcuts are already in use: ⌥⇧"_s + failed.join(u", "_s) + u'.';
}

} // namespace tessly
