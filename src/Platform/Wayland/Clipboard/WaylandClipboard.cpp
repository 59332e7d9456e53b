#include "WaylandClipboard.h"

#include "FlavourTargets.h"

#include <algorithm>
#include <utility>
#include <wayland-client.h>

namespace tessly {

namespace {

/// How often the source of content that has gone is looked for.
constexpr int sourceLooks = 10;

} // namespace

WaylandClipboard::WaylandClipboard(
    WaylandEventLoop& loop, const WaylandClipboardDeadlines& deadlines, State& state)
    : m_loop(loop)
    , m_deadlines(deadlines)
    , m_state(state)
    , m_reader(loop)
    , m_writer(loop, deadlines.reader)
    , m_registry(loop)
{
    m_loop.roundTrip(deadlines.connection);
    m_control = WaylandDataControl::find(m_registry);
    if (!m_control) {
        throw WaylandError("The Wayland compositor lets no program read the clipboard.");
    }
    m_registry.setChanges(
        {.added =
             [this](WaylandRegistry::Name, const std::string&) {
                 if (!m_device) {
                     attachSeat();
                 }
             },
         .removed =
             [this](WaylandRegistry::Name name) {
                 if (m_device && name == m_seatName) {
                     detachSeat();
                     attachSeat();
                 }
             }});
    attachSeat();
    m_loop.roundTrip(deadlines.connection);
    m_isStarting = false;
}

WaylandClipboard::~WaylandClipboard() = default;

void WaylandClipboard::SeatDeleter::operator()(wl_seat* seat) const
{
    if (wl_seat_get_version(seat) >= WL_SEAT_RELEASE_SINCE_VERSION) {
        wl_seat_release(seat);
    } else {
        wl_seat_destroy(seat);
    }
}

void WaylandClipboard::attachSeat()
{
    m_seatName = m_registry.find(wl_seat_interface.name);
    m_seat.reset(
        m_registry.bind<wl_seat>(m_seatName, wl_seat_interface, WL_SEAT_RELEASE_SINCE_VERSION));
    if (!m_seat) {
        return;
    }
    m_device = m_control->device(
        m_seat.get(),
        {.selection =
             [this](std::unique_ptr<WaylandDataOffer> offer) { selected(std::move(offer)); },
         // What others offer there is no business of the program's.
         .primarySelection = [this](const auto&) { m_hasPrimary = true; },
         .finished =
             [this] {
                 // The device is still in the middle of telling this.
                 m_loop.post([this, finished = m_device.get()] {
                     if (finished == m_device.get()) {
                         detachSeat();
                     }
                 });
             }});
    m_state.isWritable = !m_isLost;
}

void WaylandClipboard::detachSeat()
{
    m_state.isWritable = false;
    m_state.release();
    dropContent();
    forgetKept();
    m_written.clear();
    dropPrimary();
    m_hasPrimary = false;
    m_device.reset();
    m_seat.reset();
}

void WaylandClipboard::selected(std::unique_ptr<WaylandDataOffer> offer)
{
    if (!offer) {
        nothingSelected();
    } else if (isOwn(*offer)) {
        ownSelected();
    } else {
        forgetKept();
        dropContent();
        m_owner = Owner::other;
        m_foreign = std::make_shared<WaylandClipboardContent>(
            m_loop, m_reader, m_deadlines, std::move(offer));
        if (!m_isStarting) {
            m_state.change(State::Origin::otherProgram);
        }
    }
}

bool WaylandClipboard::isOwn(const WaylandDataOffer& offer) const
{
    // What is replaced by another program's copy is cancelled before that is announced, so that the
    // marker of another of its kind is not taken for this program's.
    return !m_written.empty() && offer.types().contains(Pasteboard::markerType.toUtf8());
}

void WaylandClipboard::ownSelected()
{
    // Writes become the content one after the other, in their order.
    const auto next =
        std::ranges::find_if(m_written, [](const auto& written) { return !written->isAnnounced; });
    if (next == m_written.end()) {
        return;
    }
    (*next)->isAnnounced = true;
    forgetKept();
    dropContent();
    m_owner = Owner::self;
    m_own = (*next)->offer;
    m_state.change(State::Origin::program, m_own->ticket());
    // What came before it is replaced for good.
    m_written.erase(m_written.begin(), next);
}

void WaylandClipboard::nothingSelected()
{
    // What this program owns and has not cleared itself, another has.
    if (m_isClearing || m_owner == Owner::self) {
        cleared();
    } else if (m_foreign && !m_hasOwnerLeft) {
        // Nobody has copied anything: the program that owned it has ended, or taken it back.
        m_hasOwnerLeft = true;
        m_foreign->ownerLeft();
        m_state.ownerLeft();
        ownerLeft(sourceLooks);
    }
}

void WaylandClipboard::cleared()
{
    m_isClearing = false;
    forgetKept();
    dropContent();
    m_state.change(State::Origin::nobody);
}

void WaylandClipboard::dropContent()
{
    m_owner = Owner::nobody;
    m_hasOwnerLeft = false;
    m_own.reset();
    if (const auto old = std::exchange(m_foreign, nullptr)) {
        old->end();
    }
}

void WaylandClipboard::connectionLost()
{
    m_isLost = true;
    detachSeat();
}

bool WaylandClipboard::isCurrent(qint64 changeCount) const
{
    return !m_isLost && changeCount == m_state.changeCount();
}

void WaylandClipboard::types(qint64 changeCount, TypesDone done)
{
    if (!isCurrent(changeCount)) {
        done(std::nullopt);
    } else if (m_foreign) {
        m_foreign->types(done);
    } else if (m_own) {
        done(typeNames(m_own->names()));
    } else {
        done(QSet<QString>());
    }
}

void WaylandClipboard::read(qint64 changeCount, Flavour flavour, qint64 byteLimit, ReadDone done)
{
    if (!isCurrent(changeCount)) {
        done({.status = ReadStatus::unreadable});
    } else if (m_foreign) {
        m_foreign->read(flavour, byteLimit, std::move(done));
    } else if (m_own) {
        done(m_own->read(flavour, byteLimit));
    } else {
        done({.status = ReadStatus::absent});
    }
}

void WaylandClipboard::readFileURLs(qint64 changeCount, qint64 byteLimit, FileURLsDone done)
{
    if (!isCurrent(changeCount)) {
        done({.status = ReadStatus::unreadable});
    } else if (m_foreign) {
        m_foreign->readFileURLs(byteLimit, std::move(done));
    } else if (m_own) {
        done(m_own->readFileURLs(byteLimit));
    } else {
        done({.status = ReadStatus::absent});
    }
}

void WaylandClipboard::catchUp(std::function<void()> done)
{
    if (m_isLost) {
        done();
    } else {
        m_loop.awaitOtherPrograms(std::move(done));
    }
}

void WaylandClipboard::write(const std::vector<PasteboardItem>& items, WriteTicket ticket)
{
    if (m_device) {
        forgetKept();
        own(std::make_shared<PasteboardOffer>(items, ticket));
    }
}

void WaylandClipboard::own(Offer offer)
{
    auto written = std::make_unique<Written>(Written{.offer = std::move(offer)});
    written->source =
        sourceOf(written->offer, [this, written = written.get()] { cancelled(written); });
    m_device->setSelection(written->source.get());
    m_written.push_back(std::move(written));
}

std::unique_ptr<WaylandDataSource>
WaylandClipboard::sourceOf(const Offer& offer, std::function<void()> cancelled)
{
    return m_control->source(
        offer->names(), {.send =
                             [this, offer](const QByteArray& type, int file) {
                                 ++m_state.fetchCount;
                                 m_writer.begin(file, offer->bytes(type).value_or(QByteArray()));
                             },
                         .cancelled = std::move(cancelled)});
}

void WaylandClipboard::cancelled(const Written* written)
{
    const auto found = std::ranges::find_if(
        m_written, [written](const auto& candidate) { return candidate.get() == written; });
    if (found == m_written.end()) {
        return;
    }
    if (m_own == written->offer) {
        // What takes its place is told next.
        m_own.reset();
        m_state.release();
    }
    m_written.erase(found);
}

void WaylandClipboard::holds(WriteTicket ticket, OwnDone done)
{
    m_loop.awaitOtherPrograms(
        [this, ticket, done = std::move(done)] { done(offerOf(ticket) != nullptr); });
}

/// What was written with this ticket, if it is, or is about to become, the clipboard's content.
WaylandClipboard::Offer WaylandClipboard::offerOf(WriteTicket ticket) const
{
    const bool isLast = ticket && !m_written.empty() && m_written.back()->offer->ticket() == ticket;
    return isLast && !m_isClearing ? m_written.back()->offer : nullptr;
}

void WaylandClipboard::offerAsPrimary(WriteTicket ticket, OwnDone done)
{
    const Offer offer = m_device ? offerOf(ticket) : nullptr;
    if (!offer) {
        done(false);
        return;
    }
    const auto number = ++m_primaryNumber;
    auto source = sourceOf(offer, [this, number] { primaryCancelled(number); });
    m_device->setPrimarySelection(source.get());
    m_primary = std::move(source);
    m_loop.awaitRoundTrip([this, number, ticket, done = std::move(done)] {
        // A compositor without PRIMARY ignores what is offered there.
        const bool isOffered = m_hasPrimary && m_primary && number == m_primaryNumber;
        if (isOffered) {
            m_state.changePrimary(ticket);
        }
        done(isOffered);
    });
}

void WaylandClipboard::primaryCancelled(std::uint64_t number)
{
    if (number == m_primaryNumber) {
        dropPrimary();
    }
}

void WaylandClipboard::dropPrimary()
{
    m_state.releasePrimary();
    m_primary.reset();
}

void WaylandClipboard::clear()
{
    forgetKept();
    if (!m_device) {
        return;
    }
    if (m_primary) {
        m_device->setPrimarySelection(nullptr);
        dropPrimary();
    }
    m_isClearing = true;
    m_device->setSelection(nullptr);
    m_loop.awaitRoundTrip([this] {
        // The compositor is silent about the clearing of what had no owner.
        const bool isEmpty = m_owner == Owner::nobody || m_hasOwnerLeft;
        if (std::exchange(m_isClearing, false) && isEmpty) {
            cleared();
        }
    });
}

void WaylandClipboard::keepWhenOwnerLeaves(
    qint64 changeCount, std::vector<PasteboardItem> items,
    Pasteboard::HasSourceEnded hasSourceEnded)
{
    if (!isCurrent(changeCount) || !m_foreign || m_isClearing) {
        return;
    }
    forgetKept();
    if (!items.empty()) {
        m_kept = Kept{.items = std::move(items), .hasSourceEnded = std::move(hasSourceEnded)};
        ownerLeft(sourceLooks);
    }
}

/// If the owner has left, and there is something that is kept for then: offers that, or decides
/// that the clipboard is to be empty.
void WaylandClipboard::ownerLeft(int looksLeft)
{
    if (!m_hasOwnerLeft || !m_kept) {
        return;
    }
    if (isSourceGone()) {
        offerKept();
    } else if (looksLeft > 0) {
        m_kept->timer = m_loop.callAfter(
            m_deadlines.sourceEnd / sourceLooks, [this, looksLeft] { ownerLeft(looksLeft - 1); });
    } else {
        // Who is still there has cleared it.
        forgetKept();
    }
}

bool WaylandClipboard::isSourceGone() const
{
    return !m_kept->hasSourceEnded || m_kept->hasSourceEnded() || m_foreign->isUsedUp();
}

void WaylandClipboard::offerKept()
{
    // Contents have no times here: a copy that is on its way already must not be overrun. The offer
    // is made before it is asked for one, since that takes a while where the content is large.
    m_kept->offer = std::make_shared<PasteboardOffer>(m_kept->items);
    m_loop.awaitOtherPrograms([this, changeCount = m_state.changeCount(), offer = m_kept->offer] {
        const bool isStillKept = m_kept && m_kept->offer == offer;
        if (m_device && isCurrent(changeCount) && m_hasOwnerLeft && isStillKept) {
            m_kept.reset();
            own(offer);
        }
    });
}

void WaylandClipboard::forgetKept()
{
    if (m_kept) {
        m_loop.cancel(m_kept->timer);
        m_kept.reset();
    }
}

} // namespace tessly
