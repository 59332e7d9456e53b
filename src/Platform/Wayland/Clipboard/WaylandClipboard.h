#pragma once

#include "LoopClipboard.h"
#include "PasteboardOffer.h"
#include "WaylandClipboardContent.h"
#include "WaylandClipboardDeadlines.h"
#include "WaylandDataControl.h"
#include "WaylandEventLoop.h"
#include "WaylandPipeReader.h"
#include "WaylandPipeWriter.h"
#include "WaylandRegistry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

struct wl_seat;

namespace tessly {

/// The half of WaylandPasteboard that lives on the loop thread: follows the clipboard of the first
/// seat, and owns it for the program. Writable while there is a seat.
class WaylandClipboard final : public LoopClipboard
{
public:
    /// Before the loop is started; waits for the compositor. What the change count shows now stands
    /// for the content that there is. Throws WaylandError if the compositor lets no program read
    /// the clipboard, or does not answer.
    WaylandClipboard(
        WaylandEventLoop& loop, const WaylandClipboardDeadlines& deadlines, State& state);
    ~WaylandClipboard() override;

    void connectionLost() override;
    void types(qint64 changeCount, TypesDone done) override;
    void read(qint64 changeCount, Flavour flavour, qint64 byteLimit, ReadDone done) override;
    void readFileURLs(qint64 changeCount, qint64 byteLimit, FileURLsDone done) override;
    void catchUp(std::function<void()> done) override;
    void write(const std::vector<PasteboardItem>& items, WriteTicket ticket) override;
    void holds(WriteTicket ticket, OwnDone done) override;
    void offerAsPrimary(WriteTicket ticket, OwnDone done) override;
    void clear() override;
    void keepWhenOwnerLeaves(
        qint64 changeCount, std::vector<PasteboardItem> items,
        Pasteboard::HasSourceEnded hasSourceEnded) override;

private:
    enum class Owner { nobody, self, other };
    using Offer = std::shared_ptr<PasteboardOffer>;
    struct SeatDeleter
    {
        void operator()(wl_seat* seat) const;
    };
    /// What to offer when the other program leaves.
    struct Kept
    {
        std::vector<PasteboardItem> items;
        Pasteboard::HasSourceEnded hasSourceEnded;
        /// Once it is about to be offered.
        Offer offer = {};
        /// Until the source is looked for again.
        WaylandEventLoop::TimerID timer = 0;
    };
    /// What was written, until the compositor says that something else took its place.
    struct Written
    {
        Offer offer;
        /// Whether the compositor has said that it is the clipboard's content.
        bool isAnnounced = false;
        std::unique_ptr<WaylandDataSource> source = {};
    };

    void attachSeat();
    void detachSeat();
    void selected(std::unique_ptr<WaylandDataOffer> offer);
    [[nodiscard]] bool isOwn(const WaylandDataOffer& offer) const;
    void ownSelected();
    void nothingSelected();
    void cleared();
    void dropContent();
    void own(Offer offer);
    [[nodiscard]] Offer offerOf(WriteTicket ticket) const;
    [[nodiscard]] std::unique_ptr<WaylandDataSource>
    sourceOf(const Offer& offer, std::function<void()> cancelled);
    void cancelled(const Written* written);
    void primaryCancelled(std::uint64_t number);
    void dropPrimary();
    void ownerLeft(int looksLeft);
    [[nodiscard]] bool isSourceGone() const;
    void offerKept();
    void forgetKept();
    [[nodiscard]] bool isCurrent(qint64 changeCount) const;

    WaylandEventLoop& m_loop;
    const WaylandClipboardDeadlines m_deadlines;
    State& m_state;
    WaylandPipeReader m_reader;
    WaylandPipeWriter m_writer;
    WaylandRegistry m_registry;
    std::unique_ptr<WaylandDataControl> m_control;
    WaylandRegistry::Name m_seatName = 0;
    std::unique_ptr<wl_seat, SeatDeleter> m_seat;
    std::unique_ptr<WaylandDataDevice> m_device;

    Owner m_owner = Owner::nobody;
    /// The content, if another program owns it.
    std::shared_ptr<WaylandClipboardContent> m_foreign;
    /// The content, if this program owns it.
    Offer m_own;
    /// The oldest first.
    std::vector<std::unique_ptr<Written>> m_written;
    /// What is offered as PRIMARY, until another program copies there.
    std::unique_ptr<WaylandDataSource> m_primary;
    /// Of the offers as PRIMARY, so that one is not taken for another.
    std::uint64_t m_primaryNumber = 0;
    /// Whether the compositor has ever told of PRIMARY.
    bool m_hasPrimary = false;
    std::optional<Kept> m_kept;
    bool m_hasOwnerLeft = false;
    /// The compositor was asked to clear the clipboard, and has not done so yet.
    bool m_isClearing = false;
    bool m_isStarting = true;
    bool m_isLost = false;
};

} // namespace tessly
