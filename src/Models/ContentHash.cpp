#include "ContentHash.h"

#include <QtEndian>

#include <array>

namespace tessly {

ContentHash::ContentHash()
{
    sha256_init(&m_context);
}

void ContentHash::addSection(QByteArrayView label, const std::optional<QByteArray>& data)
{
    const auto length = qToBigEndian(static_cast<quint64>(data ? data->size() : 0));
    add(label);
    add({reinterpret_cast<const char*>(&length), sizeof length});
    if (data) {
        add(*data);
    }
}

void ContentHash::add(QByteArrayView bytes)
{
    sha256_update(
        &m_context, static_cast<size_t>(bytes.size()),
        reinterpret_cast<const uint8_t*>(bytes.data()));
}

QByteArray ContentHash::result()
{
    std::array<uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&m_context, digest.size(), digest.data());
    return QByteArray(reinterpret_cast<const char*>(digest.data()), digest.size()).toHex();
}

} // namespace tessly
