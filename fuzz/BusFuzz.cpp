// What comes over the bus in place of the entries and the report that were asked for. Fields: names
// and values in turn, of a value the first byte is its type; an empty name begins the next entry.

#include "BusTypes.h"
#include "FuzzInput.h"

using namespace Qt::StringLiterals;
using namespace tessly;
using namespace tessly::fuzz;

namespace {

QVariant valueOf(const QByteArray& field)
{
    const QByteArray text = field.mid(1);
    switch (field.isEmpty() ? '\0' : field.front()) {
    case 'i':
        return text.toLongLong();
    case 'd':
        return text.toDouble();
    case 'b':
        return text == "1";
    case 's':
        return QString::fromUtf8(text);
    case 'l':
        return QStringList{QString::fromUtf8(text), u"b"_s};
    case 'm':
        return QVariantMap{{QString::fromUtf8(text), 1}};
    case 'y':
        return text;
    default:
        return {};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    BusEntries maps = {{}};
    while (!input.isAtEnd()) {
        const QString name = QString::fromUtf8(input.next());
        if (name.isEmpty()) {
            maps.append(QVariantMap());
        } else {
            maps.last().insert(name, valueOf(input.next()));
        }
    }
    for (const QVariantMap& map : std::as_const(maps)) {
        const StatusReport report = statusReport(map);
        require(statusReport(busStatus(report)) == report, "a report crosses the bus unchanged");
        constexpr qint64 lines = 3;
        if (const auto outcome = importOutcome(map, lines)) {
            require(
                importOutcome(busImportOutcome(*outcome), lines) == outcome,
                "an import's outcome crosses the bus unchanged");
        }
        if (const auto one = entries({map})) {
            require(entries(busEntries(*one)).has_value(), "an entry crosses the bus");
        }
    }
    if (const auto all = entries(maps)) {
        require(busEntries(*all).size() == maps.size(), "no entry is lost on the bus");
    }
    return 0;
}
