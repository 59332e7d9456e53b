#include "HistoryImport.h"

#include "ExportFormat.h"
#include "UnicodeText.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// What is added in one transaction, for which a copy may have to wait.
constexpr qsizetype bytesAtOnce = ExportFormat::gatheredBytes;
constexpr std::size_t linesAtOnce = ExportFormat::gatheredLines;

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
        const bool isEnough = m_waiting.size() >= bytesAtOnce || m_numbers.size() >= linesAtOnce;
        if (isEnough && !addWaiting()) {
            return;
        }
    }
    if (!addWaiting()) {
        return;
    }
    if (m_isWithin || !m_hasBegun) {
        // Whoever wrote it, or brought it here, has not come to its end.
        m_refuse(
            0,
            m_hasBegun ? u"the last line is missing: the file was cut short"_s : u"it is empty"_s);
        return;
    }
    m_result.isComplete = true;
}

HistoryImport::Step HistoryImport::refuseTooLong()
{
    return m_isWithin ? refuseLast(u"it is too long"_s, Step::goOn)
                      : refuseLast(noFirstLine, Step::stop);
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
