#include "ListedPayload.h"

#include <utility>

namespace tessly {

ListedPayload::ListedPayload(const ClipPayload& payload)
    : m_content(payload)
{
}

ListedPayload::ListedPayload(Outline outline)
    : m_content(std::move(outline))
{
}

const ClipPayload* ListedPayload::held() const
{
    return std::get_if<ClipPayload>(&m_content);
}

ClipKind ListedPayload::kind() const
{
    const ClipPayload* const payload = held();
    return payload != nullptr ? payload->kind() : std::get<Outline>(m_content).kind;
}

QString ListedPayload::previewLine() const
{
    const ClipPayload* const payload = held();
    return payload != nullptr ? payload->previewLine() : std::get<Outline>(m_content).previewLine;
}

QByteArray ListedPayload::contentHash() const
{
    const ClipPayload* const payload = held();
    return payload != nullptr ? payload->contentHash() : std::get<Outline>(m_content).contentHash;
}

bool ListedPayload::operator==(const ListedPayload& other) const
{
    const ClipPayload* const payload = held();
    const ClipPayload* const otherPayload = other.held();
    return payload != nullptr && otherPayload != nullptr ? *payload == *otherPayload
                                                         : contentHash() == other.contentHash();
}

} // namespace tessly
