#include "HistoryImport.h"

#include "ExportFormat.h"
#include "UnicodeText.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// What is added in one transaction, for which a copy may have to wait.
constexpr qsizetype bytesAtOnce = ExportFormat::gatheredBytes;
constexpr std::size_t linesAtOnce = ExportFormat::gatheredLines;

// By how much each text is older than the one before it, in seconds.
constexpr double betweenTexts = 0.001;

const QString tooLong = u"it is too long"_s;
const QString nothingThere = u"it is empty"_s;
const QString noFirstLine = u"here should be the first line of an export"_s;

} // namespace

HistoryImport::HistoryImport(LineReader& lines, Add add, Refuse refuse)
    : m_lines(lines)
    , m_add(std::move(add))
    , m_refuse(std::move(refuse))
{
}

void HistoryImport::run()
{
    for (;;) {
        const qsizetype begin = m_waiting.size();
        const LineReader::Line line = m_lines.next(m_waiting);
        if (line == LineReader::Line::none) {
            break;
        }
        const Step step = line == LineReader::Line::tooLong ? refuseTooLong() : take(begin);
        if (step == Step::stop) {
            return;
        }
        if (!addIfEnough()) {
            return;
        }
    }
    if (!addWaiting()) {
        return;
    }
    if (m_isWithin || !m_hasBegun) {
        // Whoever wrote it, or brought it here, has not come to its end.
        m_refuse(
            0, m_hasBegun ? u"the last line is missing: the file was cut short"_s : nothingThere);
        return;
    }
    m_result.isComplete = true;
}

void HistoryImport::runOfTexts(double newest)
{
    for (;;) {
        QByteArray text;
        const LineReader::Line line = m_lines.next(text);
        if (line == LineReader::Line::none) {
            break;
        }
        if (line == LineReader::Line::tooLong) {
            if (refuseLast(tooLong, Step::goOn) == Step::stop) {
                return;
            }
        } else if (!text.isEmpty()) {
            const auto before = static_cast<double>(m_lines.number() - 1);
            takeText(text, std::max(newest - before * betweenTexts, 0.0));
        }
        if (!addIfEnough()) {
            return;
        }
    }
    if (!addWaiting()) {
        return;
    }
    if (m_lines.number() == 0) {
        // What was to write it has failed, most likely.
        m_refuse(0, nothingThere);
        return;
    }
    m_result.isComplete = true;
}

/// As an export would have it.
void HistoryImport::takeText(const QByteArray& text, double time)
{
    Clip clip;
    clip.id = QUuid::createUuid();
    clip.createdAt = time;
    clip.lastUsedAt = time;
    clip.payload = ClipPayload({.plainText = text});
    ExportFormat::write(clip, [this](QByteArrayView bytes) { m_waiting.append(bytes); });
    m_numbers.push_back(m_lines.number());
}

bool HistoryImport::addIfEnough()
{
    const bool isEnough = m_waiting.size() >= bytesAtOnce || m_numbers.size() >= linesAtOnce;
    return !isEnough || addWaiting();
}

HistoryImport::Step HistoryImport::refuseTooLong()
{
    return m_isWithin ? refuseLast(tooLong, Step::goOn) : refuseLast(noFirstLine, Step::stop);
}

/// The line that was read last, which begins there in what waits.
HistoryImport::Step HistoryImport::take(qsizetype begin)
{
    const QByteArrayView line = QByteArrayView(m_waiting).sliced(begin);
    const bool isBlank = trimmed(line).isEmpty();
    const ExportFormat::Line kind = ExportFormat::kindOf(line);
    if (m_isWithin && !isBlank && kind == ExportFormat::Line::other) {
        m_waiting += '\n';
        m_numbers.push_back(m_lines.number());
        return Step::goOn;
    }
    m_waiting.truncate(begin);
    if (isBlank) {
        return Step::goOn;
    }
    switch (kind) {
    case ExportFormat::Line::first: {
        // One file may stand behind another.
        const bool isCutShort = std::exchange(m_isWithin, true);
        m_hasBegun = true;
        return isCutShort ? refuseLast(u"the export before this line has no end"_s, Step::goOn)
                          : Step::goOn;
    }
    case ExportFormat::Line::firstOfLater:
        return refuseLast(u"a later version of Tessly has exported this"_s, Step::stop);
    case ExportFormat::Line::last:
        if (std::exchange(m_isWithin, false)) {
            return Step::goOn;
        }
        break;
    case ExportFormat::Line::other:
        break;
    }
    return refuseLast(noFirstLine, Step::stop);
}

HistoryImport::Step HistoryImport::refuseLast(const QString& reason, Step step)
{
    // What is said is in the order of the lines.
    if (!addWaiting()) {
        return Step::stop;
    }
    refuse(m_lines.number(), reason);
    return step;
}

bool HistoryImport::addWaiting()
{
    if (m_numbers.empty()) {
        return true;
    }
    const std::optional<ImportOutcome> outcome = m_add(m_waiting);
    if (!outcome) {
        return false;
    }
    m_result.added += outcome->added;
    m_result.present += outcome->present;
    for (const ImportOutcome::Refusal& refusal : outcome->refused) {
        refuse(m_numbers.at(static_cast<std::size_t>(refusal.line)), refusal.reason);
    }
    m_waiting.clear();
    m_numbers.clear();
    return true;
}

void HistoryImport::refuse(qint64 line, const QString& reason)
{
    ++m_result.refused;
    m_refuse(line, reason);
}

} // namespace tessly
