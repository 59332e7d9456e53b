#include "ContentHash.h"

#include <QtEndian>

#include <openssl/evp.h>

#include <array>
#include <new>

namespace tessly {

namespace {

// With a context at hand, SHA-256 fails only for want of memory.
void require(int succeeded)
{
    if (succeeded != 1) {
        throw std::bad_alloc();
    }
}

} // namespace

void ContentHash::Free::operator()(evp_md_ctx_st* context) const
{
    EVP_MD_CTX_free(context);
}

ContentHash::ContentHash()
    : m_context(EVP_MD_CTX_new())
{
    require(m_context ? 1 : 0);
    require(EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr));
}

void ContentHash::addSection(QByteArrayView label, const std::optional<QByteArray>& data)
{
    const QByteArrayView bytes = data ? QByteArrayView(*data) : QByteArrayView();
    const auto length = qToBigEndian(static_cast<quint64>(bytes.size()));
    require(EVP_DigestUpdate(m_context.get(), label.data(), static_cast<size_t>(label.size())));
    require(EVP_DigestUpdate(m_context.get(), &length, sizeof length));
    require(EVP_DigestUpdate(m_context.get(), bytes.data(), static_cast<size_t>(bytes.size())));
}

QByteArray ContentHash::result()
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    require(EVP_DigestFinal_ex(m_context.get(), digest.data(), &length));
    return QByteArray(reinterpret_cast<const char*>(digest.data()), length).toHex();
}

} // namespace tessly
