#pragma once

#include <QByteArray>

#include <memory>
#include <optional>

struct evp_md_ctx_st;

namespace tessly {

/// SHA-256 over labelled sections: of each the label, the length of its data as eight bytes (most
/// significant first), and the data. Absent data hash like empty data.
class ContentHash
{
public:
    ContentHash();
    void addSection(QByteArrayView label, const std::optional<QByteArray>& data);
    /// 64 lower-case hexadecimal digits. Ends the hash.
    [[nodiscard]] QByteArray result();

private:
    struct Free
    {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> m_context;
};

} // namespace tessly
