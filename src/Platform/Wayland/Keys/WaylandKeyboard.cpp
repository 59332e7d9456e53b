#include "WaylandKeyboard.h"

#include "WaylandVirtualKeyboard.h"
#include "fake-input-client-protocol.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"

#include <algorithm>
#include <array>
#include <linux/input-event-codes.h>
#include <utility>
#include <wayland-client.h>

namespace tessly {

namespace {

/// The first version that has keys.
constexpr std::uint32_t fakeInputVersion = 4;

/// Where two keyboards take turns, as with input methods, so do their key maps with every key;
/// reading one takes milliseconds.
constexpr std::size_t mostTold = 2;

constexpr std::array<std::uint32_t, 8> modifierKeys = {KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTALT,
                                                       KEY_RIGHTALT,  KEY_LEFTMETA,   KEY_RIGHTMETA,
                                                       KEY_LEFTCTRL,  KEY_RIGHTCTRL};

} // namespace

WaylandKeyboard::WaylandKeyboard(WaylandEventLoop& loop, const WaylandRegistry& registry)
    : m_loop(loop)
    , m_virtualKeyboards(registry.bind<zwp_virtual_keyboard_manager_v1>(
          registry.find(zwp_virtual_keyboard_manager_v1_interface.name),
          zwp_virtual_keyboard_manager_v1_interface, 1))
    , m_fakeInput(registry.bind<org_kde_kwin_fake_input>(
          registry.find(org_kde_kwin_fake_input_interface.name), org_kde_kwin_fake_input_interface,
          fakeInputVersion))
{
    if (m_fakeInput && org_kde_kwin_fake_input_get_version(m_fakeInput.get()) < fakeInputVersion) {
        m_fakeInput.reset();
    }
    if (m_fakeInput) {
        org_kde_kwin_fake_input_authenticate(
            m_fakeInput.get(), "Tessly",
            "Pasting what is chosen from the clipboard history into other programs");
    }
}

WaylandKeyboard::~WaylandKeyboard() = default;

void WaylandKeyboard::Deleter::operator()(org_kde_kwin_fake_input* object) const
{
    org_kde_kwin_fake_input_destroy(object);
}

void WaylandKeyboard::Deleter::operator()(zwp_virtual_keyboard_manager_v1* object) const
{
    zwp_virtual_keyboard_manager_v1_destroy(object);
}

bool WaylandKeyboard::has(Way way) const
{
    switch (way) {
    case Way::virtualKeyboard:
        return m_virtualKeyboards != nullptr;
    case Way::fakeInput:
        return m_fakeInput != nullptr;
    }
    return false;
}

void WaylandKeyboard::setSeat(wl_seat* seat)
{
    m_virtualKeyboard.reset();
    m_seat = seat;
    if (m_isStarted) {
        makeVirtualKeyboard();
    }
}

void WaylandKeyboard::setKeymap(const QByteArray& text)
{
    // The compositor also tells the key map that the virtual keyboard was given here, whenever that
    // has been the last to press a key. To take it for the user's does no harm: it is the same, or
    // the one that would be used in place of the user's.
    const auto known = std::ranges::find(m_told, text, &Told::text);
    if (known != m_told.end()) {
        std::rotate(m_told.begin(), known, known + 1);
    } else if (auto keymap = WaylandKeymap::fromText(text)) {
        m_told.push_front({.text = text, .keymap = std::move(*keymap)});
        if (m_told.size() > mostTold) {
            m_told.pop_back();
        }
    } else {
        return;
    }
    publishKeymap();
}

void WaylandKeyboard::publishKeymap()
{
    const auto* const keymap = m_told.empty() ? american() : &m_told.front().keymap;
    auto published = keymap != nullptr ? std::optional(*keymap) : std::nullopt;
    const std::scoped_lock lock(m_mutex);
    std::swap(m_published, published);
}

std::optional<KeyStrokes> WaylandKeyboard::strokes(PasteChord chord) const
{
    const std::scoped_lock lock(m_mutex);
    return m_published ? m_published->strokes(chord) : std::nullopt;
}

QByteArray WaylandKeyboard::symbolWithShift(std::uint32_t key) const
{
    const std::scoped_lock lock(m_mutex);
    return m_published ? m_published->symbolWithShift(key) : QByteArray();
}

void WaylandKeyboard::start()
{
    m_isStarted = true;
    if (m_told.empty()) {
        publishKeymap();
    }
    makeVirtualKeyboard();
}

void WaylandKeyboard::makeVirtualKeyboard()
{
    if (m_virtualKeyboards && m_seat != nullptr) {
        m_virtualKeyboard =
            std::make_unique<WaylandVirtualKeyboard>(m_virtualKeyboards.get(), m_seat);
        if (const auto* const keymap = usableKeymap()) {
            // Else tried again when there are keys to press.
            [[maybe_unused]] const bool hasKeymap = m_virtualKeyboard->setKeymap(*keymap);
        }
    }
}

void WaylandKeyboard::press(Way way, PasteChord chord, Done done)
{
    const auto sending = way == Way::virtualKeyboard ? pressVirtually(chord) : fake(chord);
    if (sending == KeySender::Sending::sent) {
        m_loop.awaitRoundTrip([done = std::move(done), sending] { done(sending); });
    } else {
        done(sending);
    }
}

KeySender::Sending WaylandKeyboard::pressVirtually(PasteChord chord)
{
    const auto* const keymap = usableKeymap();
    if (!m_virtualKeyboard || keymap == nullptr || !m_virtualKeyboard->setKeymap(*keymap)) {
        return KeySender::Sending::failed;
    }
    m_virtualKeyboard->play(keymap->steps(chord));
    return KeySender::Sending::sent;
}

KeySender::Sending WaylandKeyboard::fake(PasteChord chord)
{
    if (!m_fakeInput) {
        return KeySender::Sending::failed;
    }
    const auto strokes = this->strokes(chord);
    if (!strokes) {
        return KeySender::Sending::noKeys;
    }
    // All keyboards have one state together here. What the user holds is let go of, where the
    // compositor still does that, and not pressed again, since the user may let go meanwhile. Which
    // keys those are is not told: windows see the release of one that is not held only if it has
    // never been pressed, and it means nothing to them.
    for (const auto key : modifierKeys) {
        fakeKey(key, false);
    }
    for (const auto& stroke : *strokes) {
        fakeKey(stroke.key, stroke.isPress);
    }
    return KeySender::Sending::sent;
}

void WaylandKeyboard::fakeKey(std::uint32_t key, bool isPress)
{
    org_kde_kwin_fake_input_keyboard_key(
        m_fakeInput.get(), key,
        isPress ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

const WaylandKeymap* WaylandKeyboard::usableKeymap()
{
    if (!m_told.empty() && m_told.front().keymap.canMakeAll()) {
        return &m_told.front().keymap;
    }
    return american();
}

const WaylandKeymap* WaylandKeyboard::american()
{
    if (!m_american) {
        m_american = WaylandKeymap::american();
    }
    return m_american ? &*m_american : nullptr;
}

} // namespace tessly
