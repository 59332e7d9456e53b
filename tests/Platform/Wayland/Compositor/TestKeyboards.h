#pragma once

#include <QByteArray>

#include <cstdint>
#include <vector>

struct wl_display;

namespace tessly::test {

/// Virtual keyboards for a TestCompositor, by zwp_virtual_keyboard_manager_v1, which notes what is
/// done with them. On its thread.
class TestKeyboards
{
public:
    struct Key
    {
        std::uint32_t code = 0;
        bool isPress = false;
        /// What was told to be held before it.
        std::uint32_t modifiers = 0;

        bool operator==(const Key&) const = default;
    };

    explicit TestKeyboards(wl_display* display);

    /// How many there have been.
    [[nodiscard]] int made() const { return m_made; }
    /// How many there are.
    [[nodiscard]] int alive() const { return m_alive; }
    /// In the order in which they were given, with the zero byte at the end.
    [[nodiscard]] const std::vector<QByteArray>& keymaps() const { return m_keymaps; }
    [[nodiscard]] const std::vector<Key>& keys() const { return m_keys; }
    /// What is said to be held now.
    [[nodiscard]] std::uint32_t modifiers() const { return m_modifiers; }

private:
    struct Requests;
    friend struct Requests;

    int m_made = 0;
    int m_alive = 0;
    std::vector<QByteArray> m_keymaps;
    std::vector<Key> m_keys;
    std::uint32_t m_modifiers = 0;
};

} // namespace tessly::test
