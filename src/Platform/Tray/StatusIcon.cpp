#include "StatusIcon.h"

#include <algorithm>

namespace tessly {

namespace {

/// One pixel of a row that is drawn anew from a row of another length.
class Pixel
{
public:
    Pixel(int index, int length, int sourceLength)
        : m_index(index)
        , m_length(length)
        , m_sourceLength(sourceLength)
    {
    }

    /// The source's pixels that it covers, in whole or in part.
    [[nodiscard]] int first() const { return m_index * m_sourceLength / m_length; }
    [[nodiscard]] int last() const { return ((m_index + 1) * m_sourceLength - 1) / m_length; }

    /// How much of it a pixel of the source makes up; all of them together, the source's length.
    [[nodiscard]] int share(int source) const
    {
        const int begin = std::max(source * m_length, m_index * m_sourceLength);
        const int end = std::min((source + 1) * m_length, (m_index + 1) * m_sourceLength);
        return end - begin;
    }

private:
    int m_index;
    int m_length;
    int m_sourceLength;
};

} // namespace

std::vector<std::uint8_t> StatusIcon::opacity(int size)
{
    const auto all = drawings();
    auto drawing =
        std::ranges::find_if(all, [size](const auto& each) { return each.size >= size; });
    if (drawing == all.end()) {
        --drawing;
    }
    const int length = drawing->size;
    const int whole = length * length;
    std::vector<std::uint8_t> pixels;
    pixels.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    for (int y = 0; y < size; ++y) {
        const Pixel row(y, size, length);
        for (int x = 0; x < size; ++x) {
            const Pixel column(x, size, length);
            int sum = 0;
            for (int sourceY = row.first(); sourceY <= row.last(); ++sourceY) {
                for (int sourceX = column.first(); sourceX <= column.last(); ++sourceX) {
                    const auto at =
                        static_cast<std::size_t>(sourceY) * static_cast<std::size_t>(length) +
                        static_cast<std::size_t>(sourceX);
                    sum += row.share(sourceY) * column.share(sourceX) * drawing->opacity[at];
                }
            }
            pixels.push_back(static_cast<std::uint8_t>((sum + whole / 2) / whole));
        }
    }
    return pixels;
}

} // namespace tessly
