#pragma once

#include "KeyStroke.h"
#include "PasteChord.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

struct xkb_keymap;

namespace tessly {

/// A key map of a seat's keyboards, and what pasting takes on it.
class WaylandKeymap
{
public:
    /// What is in effect, as the key map numbers it.
    struct Modifiers
    {
        std::uint32_t depressed = 0;
        std::uint32_t latched = 0;
        std::uint32_t locked = 0;
        std::uint32_t group = 0;

        bool operator==(const Modifiers&) const = default;
    };
    /// A key goes down or up, after which these modifiers are in effect.
    struct Step
    {
        /// As in linux/input-event-codes.h; 0: only the modifiers change.
        std::uint32_t key = 0;
        bool isPress = false;
        Modifiers modifiers = {};

        bool operator==(const Step&) const = default;
    };
    using Steps = std::vector<Step>;

    /// From the text format of XKB; none if it is not that.
    [[nodiscard]] static std::optional<WaylandKeymap> fromText(const QByteArray& text);
    /// An American keyboard; none where XKB's own files are missing.
    [[nodiscard]] static std::optional<WaylandKeymap> american();

    /// As XKB writes it, so that equal key maps have equal texts.
    [[nodiscard]] const QByteArray& text() const { return m_text; }

    /// Everything that makes a chord, from no key held to no key held; empty if the keyboard cannot
    /// make it.
    [[nodiscard]] const Steps& steps(PasteChord chord) const;
    /// The keys of a chord for those who can move keys and nothing else, so that it has to mean the
    /// same whatever layout is in effect. None if there are no such keys: no layout has the letter,
    /// or another one has another character on its key, which with Ctrl is another command; or a
    /// modifier would have to be locked.
    [[nodiscard]] const std::optional<KeyStrokes>& strokes(PasteChord chord) const;
    /// XKB's name ("exclam") of what a key of the upper row types with Shift in the first layout;
    /// empty for other keys. `key` as in linux/input-event-codes.h.
    [[nodiscard]] QByteArray symbolWithShift(std::uint32_t key) const;
    /// Whether it can make them all by `steps`.
    [[nodiscard]] bool canMakeAll() const;

private:
    explicit WaylandKeymap(xkb_keymap* keymap);
    void findSymbolsWithShift(xkb_keymap* keymap);

    QByteArray m_text;
    /// By the chord's number.
    std::array<Steps, 3> m_steps;
    std::array<std::optional<KeyStrokes>, 3> m_strokes;
    /// From KEY_1 to KEY_0.
    std::array<QByteArray, 10> m_symbolsWithShift;
};

} // namespace tessly
