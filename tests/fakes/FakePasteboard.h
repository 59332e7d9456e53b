#pragma once

#include "Gate.h"
#include "Pasteboard.h"

#include <memory>
#include <set>

namespace tessly::test {

/// A clipboard in memory, with the owners that a desktop's has: `copy` is another application
/// copying, `ownerLeaves` that application going away. Reads are answered from the event loop, or,
/// once `gate` is held, when the test says so; a newer content ends them at once.
class FakePasteboard final : public Pasteboard
{
public:
    /// What another application offers.
    struct Content
    {
        std::optional<QByteArray> plainText = {};
        std::optional<QByteArray> rtf = {};
        std::optional<QByteArray> html = {};
        std::optional<QByteArray> png = {};
        std::optional<QByteArray> otherImage = {};
        QByteArrayList fileURLs = {};
        /// Type names offered beside those of the flavours.
        QSet<QString> extraTypes = {};
        /// Flavours that are offered and then never delivered: the read times out.
        std::set<Flavour> hanging = {};
        /// Flavours that are offered and then refused.
        std::set<Flavour> refused = {};
        /// Flavours for which the reader has not enough memory.
        std::set<Flavour> beyondMemory = {};
        /// The owner does not even list its types.
        bool hidesTypes = false;
        /// The owner leaves once it has delivered one flavour.
        bool leavesAfterOneRead = false;
    };

    /// One question to the pasteboard.
    struct Request
    {
        enum class What { types, flavour, fileURLs };
        What what = What::types;
        qint64 changeCount = 0;
        Flavour flavour = Flavour::plainText;
        qint64 byteLimit = 0;

        bool operator==(const Request&) const = default;
    };

    struct Keep
    {
        qint64 changeCount = 0;
        std::vector<PasteboardItem> items;
        /// Not asked by this desktop, which knows who leaves and who takes back.
        HasSourceEnded hasSourceEnded;
    };

    FakePasteboard();
    ~FakePasteboard() override;

    /// Another application copies; returns the new change count.
    qint64 copy(Content content);
    /// Another application copies this text.
    qint64 copyText(QByteArrayView text);
    /// The owner of the content goes away, and its content with it, unless it is kept.
    void ownerLeaves();
    void setAccess(PasteboardAccess access) { m_access = access; }
    /// The desktop refuses writes from now on.
    void refuseWrites() { m_refusesWrites = true; }
    /// The desktop tells of no change, so that the program has to look. To be said before anybody
    /// asks.
    void stopNotifying() { m_notifies = false; }
    /// The owner changes what it offers without copying anew.
    void changeSilently(Content content) { m_content = std::move(content); }
    /// Copies that came and went before the program could look at them, told of once.
    void missCopies(int count) { m_copiesMissed = count; }
    /// Whether what was written with this ticket is there when the paste keys are pressed.
    [[nodiscard]] bool beginPaste(WriteTicket ticket);
    /// Another program asks for content that the program offers.
    void fetch() { ++m_fetchCount; }
    /// How long the content has been there when its change is told of.
    void setContentAge(Clock::Duration age) { m_contentAge = age; }

    [[nodiscard]] bool isEmpty() const { return !m_content; }
    /// Whether the program itself owns the content, by a write or by keeping another's.
    [[nodiscard]] bool isOwn() const { return m_content && m_isOwn; }
    /// What another application gets that pastes plain text; none if there is nothing for it.
    [[nodiscard]] std::optional<QByteArray> pastedText() const
    {
        return m_content && !m_ownerLeft ? m_content->plainText : std::nullopt;
    }
    /// What the program offers; empty if the content is another's.
    [[nodiscard]] const std::vector<PasteboardItem>& ownItems() const { return m_ownItems; }

    [[nodiscard]] const std::vector<Request>& requests() const { return m_requests; }
    [[nodiscard]] std::size_t typesRequests() const;
    /// Reads of flavours and of file URLs.
    [[nodiscard]] std::size_t contentRequests() const;
    [[nodiscard]] std::size_t requests(Flavour flavour) const;
    [[nodiscard]] std::size_t fileURLRequests() const;
    void forgetRequests() { m_requests.clear(); }
    /// The writes that were accepted.
    [[nodiscard]] const std::vector<std::vector<PasteboardItem>>& writes() const
    {
        return m_writes;
    }
    /// Every call of keepWhenOwnerLeaves.
    [[nodiscard]] const std::vector<Keep>& keeps() const { return m_keeps; }
    /// Where types and reads wait.
    [[nodiscard]] Gate& gate() { return m_gate; }

    [[nodiscard]] qint64 changeCount() const override { return m_changeCount; }
    [[nodiscard]] Clock::Duration contentAge() const override { return m_contentAge; }
    [[nodiscard]] int copiesMissed(qint64 changeCount, Clock::Duration shortestStay) const override;
    [[nodiscard]] bool followsOwnerThatLeft(qint64 changeCount) const override
    {
        return changeCount == m_afterOwnerThatLeft;
    }
    [[nodiscard]] bool notifiesOfChanges() const override { return m_notifies; }
    void setChanged(std::function<void()> changed) override { m_changed = std::move(changed); }
    [[nodiscard]] QCoro::Task<> catchUp() override;
    [[nodiscard]] PasteboardAccess access() const override { return m_access; }
    [[nodiscard]] QCoro::Task<std::optional<QSet<QString>>> types(qint64 changeCount) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArray>>
    read(qint64 changeCount, Flavour flavour, qint64 byteLimit) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArrayList>>
    readFileURLs(qint64 changeCount, qint64 byteLimit) override;
    [[nodiscard]] WriteTicket write(std::vector<PasteboardItem> items) override;
    [[nodiscard]] QCoro::Task<bool> holds(WriteTicket ticket) override;
    [[nodiscard]] quint64 fetchCount() const override { return m_fetchCount; }
    void clear() override;
    void keepWhenOwnerLeaves(
        qint64 changeCount, std::vector<PasteboardItem> items,
        HasSourceEnded hasSourceEnded = {}) override;

private:
    void change();
    void own(std::vector<PasteboardItem> items);
    [[nodiscard]] QSet<QString> offeredTypes() const;
    [[nodiscard]] const std::optional<QByteArray>& offered(Flavour flavour) const;
    void delivered();

    qint64 m_changeCount = 1;
    bool m_notifies = true;
    std::function<void()> m_changed;
    Clock::Duration m_contentAge{};
    quint64 m_fetchCount = 0;
    mutable int m_copiesMissed = 0;
    quint64 m_lastTicket = 0;
    /// That of the content; none if it is another's.
    WriteTicket m_ticket;
    PasteboardAccess m_access = PasteboardAccess::available;
    bool m_refusesWrites = false;
    std::optional<Content> m_content;
    bool m_isOwn = false;
    bool m_ownerLeft = false;
    /// The same, until somebody copies or the program writes.
    bool m_hasOwnerLeft = false;
    qint64 m_afterOwnerThatLeft = 0;
    /// Whether the owner has handed anything over.
    bool m_hasDelivered = false;
    /// The owner hung after that, and is not asked again.
    bool m_isSilent = false;
    std::vector<PasteboardItem> m_ownItems;
    std::optional<Keep> m_kept;
    std::vector<Request> m_requests;
    std::vector<std::vector<PasteboardItem>> m_writes;
    std::vector<Keep> m_keeps;
    Gate m_gate;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly::test
