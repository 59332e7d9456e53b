#pragma once

#include "GlobalHotKeyManager.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tessly {

/// The keys that paste the entries at the positions 1 to 10 of the history: ⌥⇧1 … ⌥⇧9, ⌥⇧0. Main
/// thread only.
class DirectPasteKeys
{
public:
    /// Called with the position, 1 to 10, of a key that was pressed.
    using Paste = std::function<void(int position)>;
    enum class State { off, on };

    /// `hotKeys` must outlive this.
    DirectPasteKeys(GlobalHotKeyManager& hotKeys, Paste paste);
    ~DirectPasteKeys();
    DirectPasteKeys(const DirectPasteKeys&) = delete;
    DirectPasteKeys& operator=(const DirectPasteKeys&) = delete;

    /// Gives up all keys and, if they are to be on, registers them again. Returns the warning for
    /// the user if some are in use elsewhere. None also if a later call, or the end of this object,
    /// came before the desktop's answers did.
    [[nodiscard]] QCoro::Task<std::optional<QString>> setUp(State state);

private:
    GlobalHotKeyManager& m_hotKeys;
    Paste m_paste;
    /// Counts the calls of setUp; gone with this object.
    std::shared_ptr<quint32> m_run = std::make_shared<quint32>(0);
};

} // namespace tessly
