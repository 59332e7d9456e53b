#include "X11ClipboardContent.h"

#include "FlavourTargets.h"
#include "MendedUTF8.h"
#include "PasteboardText.h"
#include "WithinMemory.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// No program offers this many types, and to look at only some of them could miss the one that
// forbids the rest.
constexpr qint64 maximumTargets = 4096;

// Line ends, comments and the line with the operation take room that is not counted to the URLs.
constexpr qint64 fileListOverhead = 4096;

// A program that is busy for a moment when it has copied misses one deadline, a hung one both.
constexpr int targetsAttempts = 2;

const std::array<std::string, 4> textTypes = {
    "UTF8_STRING", "STRING", "text/plain", "text/plain;charset=utf-8"};

} // namespace

struct X11ClipboardContent::Search
{
    /// Still to be tried, the wanted one first.
    std::deque<Target> candidates;
    qint64 byteLimit;
    LoopTimers::Time deadline;
    Accept accept;
};

X11ClipboardContent::X11ClipboardContent(
    X11EventLoop& loop, X11SelectionReader& reader, const X11ClipboardDeadlines& deadlines,
    xcb_timestamp_t time)
    : m_loop(loop)
    , m_reader(reader)
    , m_deadlines(deadlines)
    , m_time(time)
{
    std::vector<std::string> names(textTypes.begin(), textTypes.end());
    names.insert(names.end(), {"CLIPBOARD", "TARGETS"});
    loop.learnAtoms(names);
}

void X11ClipboardContent::types(TypesDone done)
{
    if (m_hasOwnerLeft || m_isEnded) {
        done(std::nullopt);
        return;
    }
    targets([done = std::move(done)](const std::vector<Target>* targets) {
        if (targets == nullptr) {
            done(std::nullopt);
            return;
        }
        QByteArrayList names;
        for (const Target& target : *targets) {
            names.append(target.name);
        }
        done(typeNames(names));
    });
}

void X11ClipboardContent::read(Flavour flavour, qint64 byteLimit, ReadDone done)
{
    search(
        targetsOf(flavour), byteLimit,
        [latin1 = m_loop.atom("STRING"), flavour, byteLimit,
         done = std::move(done)](const Found& found) {
            auto result = withinMemory([&] {
                ReadResult<QByteArray> result{.status = found.status};
                if (found.status == ReadStatus::read) {
                    result.value = found.bytes;
                }
                if (found.status == ReadStatus::read && flavour == Flavour::plainText) {
                    result.value = found.type == latin1 ? utf8FromLatin1(found.bytes)
                                                        : mendedUTF8(found.bytes);
                }
                return result;
            });
            if (found.status == ReadStatus::read && flavour == Flavour::png &&
                !isPNG(found.bytes)) {
                result = {.status = ReadStatus::absent};
            }
            if (result.value.size() > byteLimit) {
                result = {.status = ReadStatus::tooLarge};
            }
            done(std::move(result));
        });
}

void X11ClipboardContent::readFileURLs(qint64 byteLimit, FileURLsDone done)
{
    const qint64 listLimit =
        2 * std::min(byteLimit, std::numeric_limits<qint64>::max() / 4) + fileListOverhead;
    search(fileListTargets(), listLimit, [byteLimit, done = std::move(done)](const Found& found) {
        if (found.status == ReadStatus::read) {
            done(withinMemory(
                [&] { return limitedFileURLs(fileURLs(found.target, found.bytes), byteLimit); }));
        } else {
            done({.status = found.status});
        }
    });
}

void X11ClipboardContent::ownerLeft()
{
    m_hasOwnerLeft = true;
    m_reader.ownerLeft();
    if (!m_targets) {
        targetsKnown(std::nullopt);
    }
}

void X11ClipboardContent::end()
{
    m_isEnded = true;
    m_reader.beginOwner(X11Conversion::End::overtaken);
    if (!m_targets) {
        targetsKnown(std::nullopt);
    }
}

void X11ClipboardContent::targets(TargetsDone done)
{
    if (m_targets) {
        done(*m_targets ? &**m_targets : nullptr);
        return;
    }
    m_awaitTargets.push_back(std::move(done));
    if (m_awaitTargets.size() == 1) {
        m_targetsDeadline = m_loop.now() + m_deadlines.read;
        askForTargets();
    }
}

void X11ClipboardContent::askForTargets()
{
    ++m_targetsAsked;
    m_reader.convert(
        {.selection = m_loop.atom("CLIPBOARD"),
         .target = m_loop.atom("TARGETS"),
         .time = m_time,
         // Some programs type the answer by the question.
         .types = {XCB_ATOM_ATOM, m_loop.atom("TARGETS")},
         .format = 32,
         .byteLimit = maximumTargets * 4,
         .stallDeadline = m_deadlines.targets,
         .timeout = X11Conversion::Timeout::once,
         .deadline = m_targetsDeadline,
         .drainDeadline = m_deadlines.drain},
        [weak = weak_from_this()](const X11Conversion::Result& result) {
            if (const auto content = weak.lock()) {
                content->targetsConverted(result);
            }
        });
}

void X11ClipboardContent::targetsConverted(const X11Conversion::Result& result)
{
    if (result.end == X11Conversion::End::timedOut && m_targetsAsked < targetsAttempts &&
        m_loop.now() < m_targetsDeadline) {
        askForTargets();
        return;
    }
    if (result.end != X11Conversion::End::converted) {
        targetsKnown(std::nullopt);
        return;
    }
    std::vector<xcb_atom_t> atoms(static_cast<std::size_t>(result.bytes.size()) / 4);
    std::memcpy(atoms.data(), result.bytes.constData(), atoms.size() * 4);
    m_loop.awaitAtomNames(
        atoms, [weak = weak_from_this(), atoms](const std::vector<std::string>& names) {
            const auto content = weak.lock();
            if (!content) {
                return;
            }
            std::vector<Target> targets;
            for (std::size_t index = 0; index < atoms.size(); ++index) {
                if (!names[index].empty()) {
                    targets.push_back({atoms[index], QByteArray::fromStdString(names[index])});
                }
            }
            content->targetsKnown(std::move(targets));
        });
}

void X11ClipboardContent::targetsKnown(std::optional<std::vector<Target>> targets)
{
    if (m_targets) {
        return;
    }
    m_targets = std::move(targets);
    for (const TargetsDone& done : std::exchange(m_awaitTargets, {})) {
        done(*m_targets ? &**m_targets : nullptr);
    }
}

void X11ClipboardContent::search(
    std::span<const QByteArrayView> names, qint64 byteLimit, Accept accept)
{
    targets(
        [this, names, byteLimit, accept = std::move(accept)](const std::vector<Target>* targets) {
            if (targets == nullptr) {
                accept({.status = ReadStatus::unreadable});
                return;
            }
            const auto search = std::make_shared<Search>();
            search->byteLimit = byteLimit;
            search->deadline = m_loop.now() + m_deadlines.read;
            search->accept = accept;
            for (const QByteArrayView name : names) {
                for (const Target& target : *targets) {
                    if (isSameTarget(target.name, name)) {
                        search->candidates.push_back(target);
                    }
                }
            }
            tryNext(search);
        });
}

void X11ClipboardContent::tryNext(const std::shared_ptr<Search>& search)
{
    if (search->candidates.empty()) {
        search->accept({.status = ReadStatus::absent});
        return;
    }
    if (m_hasOwnerLeft || m_isEnded || m_isSilent) {
        const auto end = m_isEnded        ? X11Conversion::End::overtaken
                         : m_hasOwnerLeft ? X11Conversion::End::ownerLeft
                                          : X11Conversion::End::timedOut;
        search->accept({.status = statusOf(end)});
        return;
    }
    const Target target = search->candidates.front();
    search->candidates.pop_front();
    m_reader.convert(
        {.selection = m_loop.atom("CLIPBOARD"),
         .target = target.atom,
         .time = m_time,
         .types = acceptedTypes(target),
         .format = 8,
         .byteLimit = search->byteLimit,
         .stallDeadline = m_deadlines.stall,
         .deadline = search->deadline,
         .drainDeadline = m_deadlines.drain},
        [weak = weak_from_this(), search, target](X11Conversion::Result result) {
            const auto content = weak.lock();
            if (!content) {
                search->accept({.status = ReadStatus::unreadable});
            } else if (result.end == X11Conversion::End::refused) {
                content->tryNext(search);
            } else {
                const ReadStatus status = content->statusOf(result.end);
                content->m_isServed |= status == ReadStatus::read;
                content->m_isSilent |=
                    content->m_isServed && result.end == X11Conversion::End::timedOut;
                search->accept({status, target.name, result.type, std::move(result.bytes)});
            }
        });
}

std::vector<xcb_atom_t> X11ClipboardContent::acceptedTypes(const Target& target) const
{
    std::vector<xcb_atom_t> types = {target.atom};
    if (std::ranges::any_of(targetsOf(Flavour::plainText), [&target](QByteArrayView text) {
            return isSameTarget(target.name, text);
        })) {
        for (const std::string& type : textTypes) {
            types.push_back(m_loop.atom(type));
        }
    }
    return types;
}

ReadStatus X11ClipboardContent::statusOf(X11Conversion::End end) const
{
    switch (end) {
    case X11Conversion::End::converted:
        return ReadStatus::read;
    case X11Conversion::End::refused:
        return ReadStatus::absent;
    case X11Conversion::End::tooLarge:
        return ReadStatus::tooLarge;
    case X11Conversion::End::noMemory:
        return ReadStatus::noMemory;
    case X11Conversion::End::ownerLeft:
    case X11Conversion::End::timedOut:
        return m_isServed ? ReadStatus::absent : ReadStatus::unreadable;
    case X11Conversion::End::overtaken:
        return ReadStatus::unreadable;
    }
    Q_UNREACHABLE();
}

} // namespace tessly
