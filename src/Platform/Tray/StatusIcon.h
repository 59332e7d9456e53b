#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tessly {

/// The picture of the status item: a shape, to be tinted in the colour of the tray's own icons. Any
/// thread.
class StatusIcon
{
public:
    /// The shape at one size, as rows of opacity from the top.
    struct Drawing
    {
        int size = 0;
        std::span<const std::uint8_t> opacity;
    };

    struct Colour
    {
        std::uint8_t red = 0;
        std::uint8_t green = 0;
        std::uint8_t blue = 0;

        bool operator==(const Colour&) const = default;
    };

    /// For trays that do not tell their colour: stands out from black as well as from white, at
    /// least 3 : 1.
    static constexpr Colour defaultColour = {0x3d, 0x7f, 0xf5};

    /// The drawn sizes, the smallest first.
    [[nodiscard]] static std::span<const Drawing> drawings();

    /// The shape at any size, made of the next larger drawing.
    [[nodiscard]] static std::vector<std::uint8_t> opacity(int size);
};

} // namespace tessly
