#pragma once

#include "FocusedKeyEventPoster.h"
#include "Gate.h"
#include "KeySender.h"
#include "WaylandApplications.h"

#include <algorithm>
#include <memory>

namespace tessly::test {

/// The same with a way to press keys.
class WaylandKeyApplications : public WaylandApplications
{
public:
    WaylandKeyApplications(const std::string& display, auto makeSender)
        : WaylandApplications(display)
        , m_sender(makeSender(desktop()))
    {
    }

    KeySender& sender() { return *m_sender; }
    KeyEventPoster& poster() { return *m_poster; }
    void endPoster() { m_poster.reset(); }
    int pastesSeenBy(const QString& id)
    {
        const WaylandWindows::Key paste = {
            .window = id.toStdString(), .code = 47, .isPress = true, .modifiers = 4, .group = 0};
        const auto keys = windows().keys();
        return static_cast<int>(std::ranges::count(keys, paste));
    }
    void holdKeys() { m_writes.hold(); }
    void letKeysGo() { m_writes.open(); }
    void replaceContent() { m_canWrite = false; }

private:
    // No lambda: the poster may go, and what it captures with it, while it waits.
    QCoro::Task<bool> write()
    {
        co_await m_writes.pass();
        co_return m_canWrite;
    }

    std::unique_ptr<KeySender> m_sender;
    Gate m_writes;
    bool m_canWrite = true;
    std::unique_ptr<KeyEventPoster> m_poster = std::make_unique<FocusedKeyEventPoster>(
        *m_sender, PasteClipboard{
                       .holds = [this](WriteTicket) { return write(); },
                       .begin = [](WriteTicket, bool) { return true; }});
};

} // namespace tessly::test
