#include "BusTypes.h"

#include <QDBusArgument>
#include <QDBusMetaType>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// Text on the bus ends at its first null character.
QString busText(QString text)
{
    return text.replace(QChar::Null, QChar::ReplacementCharacter);
}

QVariantMap busEntry(const ClipSummary& entry)
{
    QVariantMap map{
        {u"position"_s, entry.position},
        {u"id"_s, entry.id.toString(QUuid::WithoutBraces).toUpper()},
        {u"kind"_s, rawValue(entry.kind)},
        {u"preview"_s, busText(entry.preview)},
        {u"createdAt"_s, entry.createdAt},
        {u"lastUsedAt"_s, entry.lastUsedAt},
        {u"isPinned"_s, entry.isPinned},
        {u"copyCount"_s, entry.copyCount},
        {u"byteCount"_s, entry.byteCount},
    };
    if (entry.sourceAppName) {
        map.insert(u"sourceAppName"_s, busText(*entry.sourceAppName));
    }
    if (entry.sourceBundleID) {
        map.insert(u"sourceBundleID"_s, busText(*entry.sourceBundleID));
    }
    if (entry.pinOrder) {
        map.insert(u"pinOrder"_s, *entry.pinOrder);
    }
    return map;
}

template <typename Value>
std::optional<Value> optional(const QVariantMap& map, const QString& key)
{
    const auto found = map.constFind(key);
    return found == map.constEnd() ? std::nullopt : std::optional(found->value<Value>());
}

} // namespace

void registerBusTypes()
{
    qDBusRegisterMetaType<BusEntries>();
}

BusEntries busEntries(const std::vector<ClipSummary>& entries)
{
    BusEntries maps;
    maps.reserve(static_cast<qsizetype>(entries.size()));
    for (const ClipSummary& entry : entries) {
        maps.append(busEntry(entry));
    }
    return maps;
}

std::optional<std::vector<ClipSummary>> entries(const BusEntries& maps)
{
    std::vector<ClipSummary> entries;
    entries.reserve(static_cast<std::size_t>(maps.size()));
    for (const QVariantMap& map : maps) {
        const auto kind = clipKind(map.value(u"kind"_s).toString());
        const QUuid id = QUuid::fromString(map.value(u"id"_s).toString());
        if (!kind || id.isNull()) {
            return std::nullopt;
        }
        entries.push_back({
            .position = map.value(u"position"_s).toLongLong(),
            .id = id,
            .kind = *kind,
            .preview = map.value(u"preview"_s).toString(),
            .createdAt = map.value(u"createdAt"_s).toDouble(),
            .lastUsedAt = map.value(u"lastUsedAt"_s).toDouble(),
            .sourceAppName = optional<QString>(map, u"sourceAppName"_s),
            .sourceBundleID = optional<QString>(map, u"sourceBundleID"_s),
            .isPinned = map.value(u"isPinned"_s).toBool(),
            .pinOrder = optional<double>(map, u"pinOrder"_s),
            .copyCount = map.value(u"copyCount"_s).toLongLong(),
            .byteCount = map.value(u"byteCount"_s).toLongLong(),
        });
    }
    return entries;
}

QVariantMap busStatus(const StatusReport& report)
{
    return {
        {u"running"_s, report.isRunning},   {u"paused"_s, report.isPaused},
        {u"items"_s, report.items},         {u"pinned"_s, report.pinned},
        {u"bytes"_s, report.bytes},         {u"session"_s, report.session},
        {u"capture"_s, report.capture},     {u"paste"_s, report.paste},
        {u"hotKeys"_s, report.hotKeys},     {u"tray"_s, report.tray},
        {u"protocols"_s, report.protocols}, {u"lastError"_s, report.lastError},
    };
}

StatusReport statusReport(const QVariantMap& map)
{
    return {
        .isRunning = map.value(u"running"_s).toBool(),
        .isPaused = map.value(u"paused"_s).toBool(),
        .items = map.value(u"items"_s).toLongLong(),
        .pinned = map.value(u"pinned"_s).toLongLong(),
        .bytes = map.value(u"bytes"_s).toLongLong(),
        .session = map.value(u"session"_s).toString(),
        .lastError = map.value(u"lastError"_s).toString(),
        .protocols = map.value(u"protocols"_s).toStringList(),
        .capture = map.value(u"capture"_s).toBool(),
        .paste = map.value(u"paste"_s).toBool(),
        .hotKeys = map.value(u"hotKeys"_s).toBool(),
        .tray = map.value(u"tray"_s).toBool(),
    };
}

QVariantMap busImportOutcome(const ImportOutcome& outcome)
{
    QList<qlonglong> lines;
    QStringList reasons;
    for (const ImportOutcome::Refusal& refusal : outcome.refused) {
        lines.append(refusal.line);
        reasons.append(refusal.reason);
    }
    return {
        {u"added"_s, outcome.added},
        {u"present"_s, outcome.present},
        {u"lines"_s, QVariant::fromValue(lines)},
        {u"reasons"_s, reasons},
    };
}

std::optional<ImportOutcome> importOutcome(const QVariantMap& map, qint64 lines)
{
    const auto numbers = qdbus_cast<QList<qlonglong>>(map.value(u"lines"_s));
    const QStringList reasons = map.value(u"reasons"_s).toStringList();
    bool isAdded = false;
    bool isPresent = false;
    ImportOutcome outcome{
        .added = map.value(u"added"_s).toLongLong(&isAdded),
        .present = map.value(u"present"_s).toLongLong(&isPresent),
        .refused = {}};
    if (!isAdded || !isPresent || numbers.size() != reasons.size()) {
        return std::nullopt;
    }
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        if (numbers[i] < 0 || numbers[i] >= lines) {
            return std::nullopt;
        }
        outcome.refused.push_back({numbers[i], reasons[i]});
    }
    return outcome;
}

} // namespace tessly
