#include "Presentation.h"

#include <QDate>
#include <QDateTime>

#include <unicode/reldatefmt.h>
#include <unicode/unistr.h>

#include <array>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

struct Age
{
    /// Negative in the past.
    double value = 0;
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
};

/// Whole months from one day to a later one.
int monthsBetween(QDate earlier, QDate later)
{
    const int months = (later.year() - earlier.year()) * 12 + later.month() - earlier.month();
    // The last day of a shorter month completes one that began on the 29th to the 31st.
    return earlier.addMonths(months) > later ? months - 1 : months;
}

QDate localDay(double seconds)
{
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(seconds))).date();
}

Age ageOf(double then, double now)
{
    constexpr double minute = 60;
    constexpr double hour = 60 * minute;
    constexpr double day = 24 * hour;

    const double seconds = std::abs(now - then);
    const double sign = then < now ? -1 : 1;
    const auto in = [sign](double count, URelativeDateTimeUnit unit) {
        return Age{std::floor(count) * sign, unit};
    };
    if (seconds < minute) {
        return in(seconds, UDAT_REL_UNIT_SECOND);
    }
    if (seconds < hour) {
        return in(seconds / minute, UDAT_REL_UNIT_MINUTE);
    }
    if (seconds < day) {
        return in(seconds / hour, UDAT_REL_UNIT_HOUR);
    }
    // From here on it is dates that count: what was copied on Monday is two days old all Wednesday.
    const QDate earlier = localDay(std::min(then, now));
    const QDate later = localDay(std::max(then, now));
    if (const int months = monthsBetween(earlier, later); months >= 12) {
        const int years = months / 12;
        return in(years, UDAT_REL_UNIT_YEAR);
    } else if (months >= 1) {
        return in(months, UDAT_REL_UNIT_MONTH);
    }
    const auto days = static_cast<double>(earlier.daysTo(later));
    if (days >= 7) {
        return in(days / 7, UDAT_REL_UNIT_WEEK);
    }
    return in(days, UDAT_REL_UNIT_DAY);
}

/// Null if ICU has no data for it at all.
const icu::RelativeDateTimeFormatter* formatter()
{
    // Costly to make, cheap to use. In the language of all other texts, whatever the user's is.
    static const auto shared = []() -> std::unique_ptr<icu::RelativeDateTimeFormatter> {
        UErrorCode status = U_ZERO_ERROR;
        auto made = std::make_unique<icu::RelativeDateTimeFormatter>(
            icu::Locale::getEnglish(), nullptr, UDAT_STYLE_LONG, UDISPCTX_CAPITALIZATION_NONE,
            status);
        return U_SUCCESS(status) ? std::move(made) : nullptr;
    }();
    return shared.get();
}

bool changesDirection(QChar character)
{
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

} // namespace

QString kindTitle(ClipKind kind)
{
    switch (kind) {
    case ClipKind::text:
        return u"Text"_s;
    case ClipKind::richText:
        return u"Rich Text"_s;
    case ClipKind::image:
        return u"Image"_s;
    case ClipKind::files:
        return u"Files"_s;
    case ClipKind::link:
        return u"Link"_s;
    }
    Q_UNREACHABLE();
}

QString kindSymbol(ClipKind kind)
{
    switch (kind) {
    case ClipKind::text:
        return u"text.alignleft"_s;
    case ClipKind::richText:
        return u"textformat"_s;
    case ClipKind::image:
        return u"photo"_s;
    case ClipKind::files:
        return u"doc.on.doc"_s;
    case ClipKind::link:
        return u"link"_s;
    }
    Q_UNREACHABLE();
}

QString displayLine(const QString& text)
{
    QString line;
    line.reserve(text.size());
    for (const QChar character : text) {
        if (changesDirection(character)) {
            continue;
        }
        const bool isBlank = character.category() == QChar::Other_Control || character.isSpace();
        line.append(isBlank ? u' ' : character);
    }
    return line;
}

QString relativeDate(double then, double now)
{
    const auto* const format = formatter();
    if (format == nullptr) {
        return {};
    }
    const Age age = ageOf(then, now);
    icu::UnicodeString text;
    UErrorCode status = U_ZERO_ERROR;
    format->format(age.value, age.unit, text, status);
    if (U_FAILURE(status)) {
        return {};
    }
    return QStringView(text.getBuffer(), text.length()).toString();
}

QString metadataLine(const Clip& clip, double now)
{
    QStringList pieces{kindTitle(clip.payload.kind())};
    if (clip.sourceAppName && !clip.sourceAppName->isEmpty()) {
        pieces.append(*clip.sourceAppName);
    }
    if (const QString age = relativeDate(clip.lastUsedAt, now); !age.isEmpty()) {
        pieces.append(age);
    }
    if (clip.copyCount >= 2) {
        pieces.append(u"copied %1×"_s.arg(clip.copyCount));
    }
    return pieces.join(u" • "_s);
}

QString shortcutLabel(int position)
{
    return u"⌥⇧"_s + QString::number(position % 10);
}

QString keyNames(const QString& label)
{
    QStringList names;
    for (const QChar key : label) {
        switch (key.unicode()) {
        case u'⌘':
            names.append(u"Ctrl"_s);
            break;
        case u'⌥':
            names.append(u"Alt"_s);
            break;
        case u'⇧':
            names.append(u"Shift"_s);
            break;
        case u'↩':
            names.append(u"Return"_s);
            break;
        case u'⌫':
            names.append(u"Backspace"_s);
            break;
        default:
            names.append(key);
        }
    }
    return names.join(u'+');
}

QString keyCapNames(const QStringList& keyCaps)
{
    QStringList names;
    for (const QString& cap : keyCaps) {
        // What has more than one character is no symbol of a key.
        names.append(cap.size() == 1 ? keyNames(cap) : cap);
    }
    return names.join(u'+');
}

QString itemCount(qint64 items)
{
    return u"%1 items"_s.arg(items);
}

QString byteCount(qint64 bytes)
{
    struct Unit
    {
        QString name;
        double bytes = 1;
        /// Digits after the point at the most.
        int digits = 0;
    };
    static const std::array<Unit, 5> units = {{
        {u"KB"_s, 1e3, 0},
        {u"MB"_s, 1e6, 1},
        {u"GB"_s, 1e9, 2},
        {u"TB"_s, 1e12, 2},
        {u"PB"_s, 1e15, 2},
    }};
    if (bytes <= 0) {
        return u"Zero KB"_s;
    }
    if (bytes < 1000) {
        return bytes == 1 ? u"1 byte"_s : u"%1 bytes"_s.arg(bytes);
    }
    for (const Unit& unit : units) {
        const double scale = std::pow(10, unit.digits);
        const double count = std::round(static_cast<double>(bytes) / unit.bytes * scale) / scale;
        // What is rounded up to a thousand is one of the next unit.
        if (count < 1000 || &unit == &units.back()) {
            QString number = QString::number(count, 'f', unit.digits);
            if (unit.digits > 0) {
                // A whole number has no point, and no number ends in a zero after it.
                while (number.endsWith(u'0')) {
                    number.chop(1);
                }
                if (number.endsWith(u'.')) {
                    number.chop(1);
                }
            }
            return number + u' ' + unit.name;
        }
    }
    Q_UNREACHABLE();
}

} // namespace tessly
