#include "WaylandDesktopConnection.h"

#include "LoopAnswer.h"
#include "WaylandToplevels.h"

#include <utility>

namespace tessly {

namespace {

constexpr auto threadName = "tessly-wayland";

/// One that waits for the compositor.
struct Paste
{
    LoopAnswer<KeySender::Sending> answer;
    /// It has waited too long.
    bool isOver = false;
};

/// What is asked of the compositor, until it is known, or until it is too late.
struct Question
{
    LoopAnswer<bool> answer;
};

} // namespace

WaylandDesktopConnection::WaylandDesktopConnection(const Options& options)
    : m_options(options)
    , m_loop(options.display)
    , m_registry(m_loop)
{
}

WaylandDesktopConnection::~WaylandDesktopConnection()
{
    // What lives on the loop refers to it: first nothing runs any more, then it goes.
    m_loop.stop();
}

void WaylandDesktopConnection::start(std::function<void()> ended)
{
    m_ended = std::move(ended);
    m_loop.roundTrip(m_options.deadline);
    makeSeat();
    // The seat tells what it has, and then its keyboard what that is.
    m_loop.roundTrip(m_options.deadline);
    m_loop.roundTrip(m_options.deadline);
    m_keyboard->start();
    // After the last wait: the windows are told of on the loop's thread, which reads desktop
    // entries for them.
    makeToplevels();
    m_loop.start(threadName, [this] { lost(); });
}

void WaylandDesktopConnection::startLater(std::function<void()> ready, std::function<void()> ended)
{
    m_ended = std::move(ended);
    const auto tellWindows = [this, ready = std::move(ready)] {
        m_keyboard->start();
        makeToplevels();
        // The windows are told of first, and then what they are.
        m_loop.awaitRoundTrip([this, ready] { m_loop.awaitRoundTrip(ready); });
    };
    m_loop.post([this, tellWindows] {
        m_loop.awaitRoundTrip([this, tellWindows] {
            makeSeat();
            m_loop.awaitRoundTrip([this, tellWindows] { m_loop.awaitRoundTrip(tellWindows); });
        });
    });
    m_loop.start(threadName, [this] { lost(); });
}

void WaylandDesktopConnection::makeSeat()
{
    m_keyboard = std::make_unique<WaylandKeyboard>(m_loop, m_registry);
    m_modifiers = PlasmaModifiers::find(m_registry);
    m_seat = std::make_unique<WaylandSeat>(
        m_registry,
        WaylandSeat::Events{
            .changed = [this](wl_seat* seat) { m_keyboard->setSeat(seat); },
            .keymapChanged = [this](const QByteArray& keymap) { m_keyboard->setKeymap(keymap); }});
}

void WaylandDesktopConnection::makeToplevels()
{
    m_toplevels = std::make_shared<WaylandToplevels>(
        m_loop, m_registry, *m_seat, m_options.entries, m_options.history,
        WaylandToplevels::Events{
            .frontChanged = m_options.frontChanged, .ended = [this] { tellEnd(); }});
}

QFuture<KeySender::Sending> WaylandDesktopConnection::press(
    WaylandKeyboard::Way way, PasteChord chord, std::shared_ptr<const TrackedWindow> target,
    KeySender::IsThere isThere)
{
    using Sending = KeySender::Sending;
    return askLoop(
        m_loop, Sending::failed,
        [this, way, chord, target = std::move(target),
         isThere = std::move(isThere)](const auto& answer) {
            // Held by what waits for the compositor, so that the answer comes if that is dropped.
            const auto paste = std::make_shared<Paste>(Paste{.answer = answer});
            const auto deadline =
                m_loop.callAfter(m_options.timeout, [late = std::weak_ptr<Paste>(paste)] {
                    if (const auto paste = late.lock()) {
                        paste->isOver = true;
                        paste->answer(Sending::failed);
                    }
                });
            // What the user and other programs did by now may not be known here yet.
            m_loop.awaitOtherPrograms([this, way, chord, target, isThere, paste, deadline] {
                if (paste->isOver) {
                    return;
                }
                const auto done = [this, paste, deadline](Sending sending) {
                    m_loop.cancel(deadline);
                    paste->answer(sending);
                };
                const bool isInFront =
                    m_toplevels->front() == target && (!target || !target->isGone());
                const bool isSpoiled =
                    way == WaylandKeyboard::Way::fakeInput && m_modifiers && !m_modifiers->areUp();
                if (!isInFront || isSpoiled) {
                    done(Sending::notInFront);
                } else if (!isThere()) {
                    done(Sending::contentReplaced);
                } else {
                    m_keyboard->press(way, chord, done);
                }
            });
        });
}

QFuture<bool> WaylandDesktopConnection::modifiersUp()
{
    return askInTime([this](const std::function<void()>& yes) {
        // What was pressed by now may not be known here yet.
        m_loop.awaitOtherPrograms([this, yes] {
            if (m_modifiers) {
                m_modifiers->whenUp(yes);
            } else {
                yes();
            }
        });
    });
}

QFuture<bool> WaylandDesktopConnection::catchUp()
{
    return askInTime([this](const std::function<void()>& yes) { m_loop.awaitOtherPrograms(yes); });
}

QFuture<std::optional<WaylandGround::Pointer>>
WaylandDesktopConnection::layGround(std::function<void()> pressed)
{
    using Pointer = std::optional<WaylandGround::Pointer>;
    return askLoop(m_loop, Pointer(), [this, pressed = std::move(pressed)](const auto& answer) {
        m_ground.lay(answer, pressed);
    });
}

void WaylandDesktopConnection::liftGround()
{
    m_loop.post([this] { m_ground.lift(); });
}

/// True when `ask`, which is called on the loop's thread, has called what it is given; false if it
/// does not in time, or drops it.
QFuture<bool>
WaylandDesktopConnection::askInTime(std::function<void(const std::function<void()>& yes)> ask)
{
    return askLoop(m_loop, false, [this, ask = std::move(ask)](const auto& answer) {
        // Held by what waits for the compositor, so that the answer comes if that is dropped.
        const auto question = std::make_shared<Question>(Question{.answer = answer});
        const auto deadline =
            m_loop.callAfter(m_options.timeout, [late = std::weak_ptr<Question>(question)] {
                if (const auto question = late.lock()) {
                    question->answer(false);
                }
            });
        ask([this, question, deadline] {
            m_loop.cancel(deadline);
            question->answer(true);
        });
    });
}

void WaylandDesktopConnection::callAfter(std::chrono::milliseconds delay, std::function<void()> job)
{
    m_loop.post(
        [this, delay, job = std::move(job)]() mutable { m_loop.callAfter(delay, std::move(job)); });
}

void WaylandDesktopConnection::lost()
{
    m_isConnected = false;
    if (m_toplevels) {
        m_toplevels->lost();
    }
    tellEnd();
}

void WaylandDesktopConnection::tellEnd()
{
    if (const auto ended = std::exchange(m_ended, nullptr)) {
        ended();
    }
}

} // namespace tessly
