#include "CommandOutput.h"

#include "Presentation.h"
#include "TerminalText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// A number that reads back as the same number, without an exponent.
QString jsonNumber(double value)
{
    if (!std::isfinite(value)) {
        return u"null"_s;
    }
    // As many digits as the largest number has.
    std::array<char, 512> digits = {};
    const auto written = std::to_chars(
        digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
    return QString::fromLatin1(digits.data(), written.ptr - digits.data());
}

QString jsonBoolean(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

QString jsonString(const std::optional<QString>& value)
{
    return value ? tessly::jsonString(*value) : u"null"_s;
}

using Members = std::vector<std::pair<QLatin1StringView, QString>>;

/// The values are JSON already. In this order.
QString jsonObject(const Members& members)
{
    QString json(u'{');
    for (const auto& [key, value] : members) {
        json += (json.size() > 1 ? u",\""_s : u"\""_s) + key + u"\":"_s + value;
    }
    return json + u'}';
}

QString entryJSON(const ClipSummary& entry)
{
    return jsonObject({
        {"position"_L1, QString::number(entry.position)},
        {"id"_L1, tessly::jsonString(entry.id.toString(QUuid::WithoutBraces).toUpper())},
        {"kind"_L1, tessly::jsonString(rawValue(entry.kind))},
        {"preview"_L1, tessly::jsonString(entry.preview)},
        {"createdAt"_L1, jsonNumber(entry.createdAt)},
        {"lastUsedAt"_L1, jsonNumber(entry.lastUsedAt)},
        {"sourceAppName"_L1, jsonString(entry.sourceAppName)},
        {"sourceBundleID"_L1, jsonString(entry.sourceBundleID)},
        {"isPinned"_L1, jsonBoolean(entry.isPinned)},
        {"pinOrder"_L1, entry.pinOrder ? jsonNumber(*entry.pinOrder) : u"null"_s},
        {"copyCount"_L1, QString::number(entry.copyCount)},
        {"byteCount"_L1, QString::number(entry.byteCount)},
    });
}

QString jsonStrings(const QStringList& values)
{
    QStringList strings;
    for (const QString& value : values) {
        strings.append(tessly::jsonString(value));
    }
    return u'[' + strings.join(u',') + u']';
}

QString padded(const QString& text, int width)
{
    return text + QString(std::max(width - terminalWidth(text), 0), u' ');
}

QString yesOrNo(bool value)
{
    return value ? u"yes"_s : u"no"_s;
}

} // namespace

QByteArray listJSON(const std::vector<ClipSummary>& entries)
{
    QByteArray json("[");
    for (const ClipSummary& entry : entries) {
        json += json.size() > 1 ? ",\n" : "\n";
        json += entryJSON(entry).toUtf8();
    }
    return json + (entries.empty() ? "]\n" : "\n]\n");
}

QString listText(const std::vector<ClipSummary>& entries, double now, std::optional<int> columns)
{
    // A preview narrower than this says nothing.
    constexpr int narrowestPreview = 10;
    std::vector<QString> ages;
    int ageWidth = 0;
    int kindWidth = 0;
    qsizetype positionWidth = 0;
    for (const ClipSummary& entry : entries) {
        ages.push_back(terminalLine(relativeDate(entry.lastUsedAt, now)));
        ageWidth = std::max(ageWidth, terminalWidth(ages.back()));
        kindWidth = std::max(kindWidth, terminalWidth(rawValue(entry.kind)));
        positionWidth = std::max(positionWidth, QString::number(entry.position).size());
    }
    QString text;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const ClipSummary& entry = entries[i];
        QString line = QString::number(entry.position).rightJustified(positionWidth) +
                       (entry.isPinned ? u" * "_s : u"   "_s) +
                       padded(rawValue(entry.kind), kindWidth) + u"  "_s +
                       padded(ages[i], ageWidth) + u"  "_s;
        QString preview = terminalLine(entry.preview).trimmed();
        if (columns) {
            preview = fitted(preview, std::max(*columns - terminalWidth(line), narrowestPreview));
        }
        text += line + preview + u'\n';
    }
    return text;
}

QByteArray statusJSON(const StatusReport& report)
{
    Members members = {
        {"running"_L1, jsonBoolean(report.isRunning)},
        {"paused"_L1, jsonBoolean(report.isPaused)},
        {"items"_L1, QString::number(report.items)},
        {"pinned"_L1, QString::number(report.pinned)},
        {"bytes"_L1, QString::number(report.bytes)},
        {"session"_L1, tessly::jsonString(report.session)},
        {"capture"_L1, jsonBoolean(report.capture)},
        {"paste"_L1, jsonBoolean(report.paste)},
        {"hotKeys"_L1, jsonBoolean(report.hotKeys)},
        {"tray"_L1, jsonBoolean(report.tray)},
        {"protocols"_L1, jsonStrings(report.protocols)},
    };
    if (!report.lastError.isEmpty()) {
        members.emplace_back("lastError"_L1, tessly::jsonString(report.lastError));
    }
    const QString json = jsonObject(members);
    return json.toUtf8() + '\n';
}

QString statusText(const StatusReport& report)
{
    QString text = uR"(running   %1
paused    %2
items     %3
pinned    %4
bytes     %5
session   %6
protocols %7
Works here:
capture   %8
paste     %9
hot keys  %10
tray      %11
)"_s.arg(
        yesOrNo(report.isRunning), yesOrNo(report.isPaused), QString::number(report.items),
        QString::number(report.pinned), QString::number(report.bytes), terminalLine(report.session),
        report.protocols.isEmpty() ? u"none"_s : terminalLine(report.protocols.join(u", "_s)),
        yesOrNo(report.capture), yesOrNo(report.paste), yesOrNo(report.hotKeys),
        yesOrNo(report.tray));
    if (!report.lastError.isEmpty()) {
        text += u"The last copy could not be saved: %1\n"_s.arg(terminalLine(report.lastError));
    }
    return text;
}

} // namespace tessly
