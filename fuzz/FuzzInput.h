#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace tessly::fuzz {

/// The input as fields: what stands between two bytes FF, which no UTF-8 has, so that a corpus can
/// be read and written. Missing fields are empty.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : m_fields(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size))
                       .split('\xff'))
    {
    }

    [[nodiscard]] bool isAtEnd() const { return m_fields.isEmpty(); }
    [[nodiscard]] QByteArray next() { return isAtEnd() ? QByteArray() : m_fields.takeFirst(); }
    /// The first byte of the next field.
    [[nodiscard]] unsigned nextByte()
    {
        const QByteArray field = next();
        return field.isEmpty() ? 0U : static_cast<unsigned char>(field.front());
    }
    [[nodiscard]] QByteArrayList rest() { return std::exchange(m_fields, {}); }

private:
    QByteArrayList m_fields;
};

/// What must hold whatever the input.
inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "It does not hold that %s\n", what);
        std::abort();
    }
}

} // namespace tessly::fuzz
