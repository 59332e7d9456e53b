#pragma once

#include <QByteArray>

#include <nettle/sha2.h>
#include <optional>

namespace tessly {

/// SHA-256 over labelled sections: of each the label, the length of its data as eight bytes (most
/// significant first), and the data. Absent data hash like empty data.
class ContentHash
{
public:
    ContentHash();
    void addSection(QByteArrayView label, const std::optional<QByteArray>& data);
    /// 64 lower-case hexadecimal digits. Begins anew.
    [[nodiscard]] QByteArray result();

private:
    void add(QByteArrayView bytes);

    sha256_ctx m_context;
};

} // namespace tessly
