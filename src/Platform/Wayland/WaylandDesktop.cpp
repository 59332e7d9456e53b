#include "WaylandDesktop.h"

#include "LoopAnswer.h"
#include "WaylandToplevels.h"

#include <QLoggingCategory>

#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcDesktop, "com.brackmoor.tessly.WaylandDesktop")

/// One that waits for the compositor.
struct Paste
{
    LoopAnswer<KeySender::Sending> answer;
    /// It has waited too long.
    bool isOver = false;
};

} // namespace

WaylandDesktop::WaylandDesktop()
    : WaylandDesktop(Options())
{
}

WaylandDesktop::WaylandDesktop(Options options)
    : m_patience(options.patience)
    , m_loop(options.display)
    , m_registry(m_loop)
{
    m_loop.roundTrip(options.deadline);
    m_keyboard = std::make_unique<WaylandKeyboard>(m_loop, m_registry);
    m_seat = std::make_unique<WaylandSeat>(
        m_registry,
        WaylandSeat::Events{
            .changed = [this](wl_seat* seat) { m_keyboard->setSeat(seat); },
            .keymapChanged = [this](const QByteArray& keymap) { m_keyboard->setKeymap(keymap); }});
    // The seat tells what it has, and then its keyboard what that is.
    m_loop.roundTrip(options.deadline);
    m_loop.roundTrip(options.deadline);
    m_keyboard->start();
    // After the last wait: the windows are told of on the loop's thread, which reads desktop
    // entries for them.
    m_toplevels =
        std::make_shared<WaylandToplevels>(m_loop, m_registry, *m_seat, std::move(options.entries));
    m_loop.start("tessly-wayland", [this] { lost(); });
}

WaylandDesktop::~WaylandDesktop()
{
    // What lives on the loop refers to it: first nothing runs any more, then it goes.
    m_loop.stop();
}

bool WaylandDesktop::hasToplevels() const
{
    return m_toplevels->isTold();
}

bool WaylandDesktop::canPress(WaylandKeyboard::Way way) const
{
    return m_isConnected && m_keyboard->has(way);
}

bool WaylandDesktop::hasVirtualKeyboard() const
{
    return canPress(WaylandKeyboard::Way::virtualKeyboard);
}

bool WaylandDesktop::hasFakeInput() const
{
    return canPress(WaylandKeyboard::Way::fakeInput);
}

quint32 WaylandDesktop::letterVKey() const
{
    return m_keyboard->letterVKey();
}

std::optional<KeyStrokes> WaylandDesktop::strokes(PasteChord chord) const
{
    return m_keyboard->strokes(chord);
}

QFuture<KeySender::Sending> WaylandDesktop::press(
    WaylandKeyboard::Way way, PasteChord chord, std::shared_ptr<const TrackedWindow> target)
{
    using Sending = KeySender::Sending;
    return askLoop(
        m_loop, Sending::failed,
        [this, way, chord, target = std::move(target)](const auto& answer) {
            // Held by what waits for the compositor, so that the answer comes if that is dropped.
            const auto paste = std::make_shared<Paste>(Paste{.answer = answer});
            const auto deadline =
                m_loop.callAfter(m_patience, [late = std::weak_ptr<Paste>(paste)] {
                    if (const auto paste = late.lock()) {
                        paste->isOver = true;
                        paste->answer(Sending::failed);
                    }
                });
            // What the user and other programs did by now may not be known here yet.
            m_loop.awaitOtherPrograms([this, way, chord, target, paste, deadline] {
                if (paste->isOver) {
                    return;
                }
                const auto done = [this, paste, deadline](Sending sending) {
                    m_loop.cancel(deadline);
                    paste->answer(sending);
                };
                if (m_toplevels->front() == target) {
                    m_keyboard->press(way, chord, done);
                } else {
                    done(Sending::notInFront);
                }
            });
        });
}

void WaylandDesktop::lost()
{
    m_isConnected = false;
    qCWarning(lcDesktop, "The connection over which windows and keys go has ended.");
    m_toplevels->lost();
}

} // namespace tessly
