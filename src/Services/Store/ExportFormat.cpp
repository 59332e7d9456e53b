#include "ExportFormat.h"

#include "ClipDecoder.h"
#include "ClipStoreError.h"
#include "JSONFields.h"
#include "MendedUTF8.h"
#include "StringListJSON.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace tessly::ExportFormat {

namespace {

constexpr QByteArrayView formatName = "tessly-history";
constexpr qint64 version = 1;

// The lines around the entries have no more, and no entry has less.
constexpr qsizetype longestFrame = 100;

// Of content, which is encoded in pieces: a multiple of the three bytes that base64 takes at once.
constexpr qsizetype pieceSize = qsizetype(3) * 64 * 1024;

// Two machines rarely agree about the time to the second, and some do not about the zone.
constexpr double oneDay = 24 * 60 * 60;

// Twice that many pins, one after another, are still told apart.
constexpr double highestPinOrder = 4'503'599'627'370'496; // 2^52

// Names of applications come from desktop entries and windows.
constexpr qsizetype longestName = 4096;

constexpr QByteArrayView pngSignature = "\x89PNG\r\n\x1a\n";

constexpr std::array keys = {
    "id",        "createdAt", "lastUsedAt",    "kind",           "isPinned",
    "pinOrder",  "copyCount", "sourceAppName", "sourceBundleID", "contentHash",
    "plainText", "rtf",       "html",          "imagePNG",       "fileURLs",
};

QByteArray number(double value)
{
    if (!std::isfinite(value)) {
        throw ClipStoreError(
            ClipStoreError::Case::decode, u"A clipboard item had an invalid time."_s);
    }
    // As few digits as tell it from every other number.
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

QByteArray string(const QByteArray& utf8)
{
    QByteArray list = stringListJSON({utf8});
    return list.sliced(1, list.size() - 2);
}

QByteArray string(const std::optional<QString>& text)
{
    return text ? string(text->toUtf8()) : QByteArrayLiteral("null");
}

void writeContent(const QByteArray& bytes, const Sink& sink)
{
    sink("\"");
    for (qsizetype at = 0; at < bytes.size(); at += pieceSize) {
        sink(bytes.mid(at, pieceSize).toBase64());
    }
    sink("\"");
}

void writeFlavour(QByteArrayView key, const std::optional<QByteArray>& bytes, const Sink& sink)
{
    sink(",\"");
    sink(key);
    sink("\":");
    if (bytes) {
        writeContent(*bytes, sink);
    } else {
        sink("null");
    }
}

/// Reads the fields of an entry, up to the first that is not what it must be.
class EntryReader
{
public:
    EntryReader(const JSONFields& fields, double now, qint64 largest)
        : m_fields(fields)
        , m_latest(now + oneDay)
        , m_largest(largest)
    {
    }

    [[nodiscard]] std::variant<Clip, QString> read()
    {
        requireKeys();
        if (!m_objection.isEmpty()) {
            return m_objection;
        }
        Clip clip;
        clip.id = id();
        clip.createdAt = time("createdAt");
        clip.lastUsedAt = time("lastUsedAt");
        clip.isPinned = boolean("isPinned");
        clip.pinOrder = pinOrder(clip.isPinned);
        clip.copyCount = copyCount();
        clip.sourceAppName = name("sourceAppName");
        clip.sourceBundleID = name("sourceBundleID");
        const std::optional<ClipKind> kind = this->kind();
        const QByteArray hash = contentHash();
        if (!m_objection.isEmpty()) {
            return m_objection;
        }
        const ClipPayload payload = content();
        if (m_objection.isEmpty()) {
            requireSound(payload, hash, kind);
        }
        if (!m_objection.isEmpty()) {
            return m_objection;
        }
        clip.payload = payload;
        return clip;
    }

private:
    using Type = JSONFields::Value::Type;

    void object(const QString& objection)
    {
        if (m_objection.isEmpty()) {
            m_objection = objection;
        }
    }
    void object(const char* key, const QString& objection)
    {
        object(QLatin1StringView(key) + u' ' + objection);
    }

    void requireKeys()
    {
        for (const char* const key : keys) {
            if (m_fields.find(key) == nullptr) {
                object(key, u"is missing"_s);
            }
        }
        if (m_fields.size() > std::ssize(keys)) {
            object(u"there is a field that no entry has"_s);
        }
    }

    [[nodiscard]] const JSONFields::Value& value(const char* key) const
    {
        return *m_fields.find(key);
    }
    [[nodiscard]] bool isNull(const char* key) const { return value(key).type == Type::null; }

    /// Empty, with an objection, if it is no string.
    [[nodiscard]] QByteArray string(const char* key)
    {
        if (value(key).type != Type::string) {
            object(key, u"is no string"_s);
            return {};
        }
        const std::optional<QByteArray> text = JSONFields::text(value(key).written);
        if (!text) {
            object(key, u"is no valid text"_s);
        }
        return text.value_or(QByteArray());
    }

    [[nodiscard]] double number(const char* key)
    {
        bool isNumber = false;
        const double number =
            value(key).type == Type::number ? value(key).written.toDouble(&isNumber) : 0;
        if (!isNumber) {
            object(key, u"is no number"_s);
        }
        return number;
    }

    [[nodiscard]] QUuid id()
    {
        QUuid id;
        try {
            id = decodeID(string("id"));
        } catch (const ClipStoreError&) {
            // It is null still.
        }
        if (id.isNull()) {
            object("id", u"is no UUID"_s);
        }
        return id;
    }

    [[nodiscard]] double time(const char* key)
    {
        const double time = number(key);
        if (time < 0) {
            object(key, u"is before 1970"_s);
        } else if (time > m_latest) {
            object(key, u"is in the future"_s);
        }
        return time;
    }

    [[nodiscard]] bool boolean(const char* key)
    {
        if (value(key).type != Type::boolean) {
            object(key, u"is neither true nor false"_s);
        }
        return value(key).written == "true";
    }

    [[nodiscard]] std::optional<double> pinOrder(bool isPinned)
    {
        const char* const key = "pinOrder";
        if (isNull(key)) {
            return std::nullopt;
        }
        if (!isPinned) {
            object(key, u"is for pinned entries only"_s);
            return std::nullopt;
        }
        const double order = number(key);
        if (std::abs(order) > highestPinOrder) {
            object(key, u"is out of range"_s);
        }
        return order;
    }

    [[nodiscard]] qint64 copyCount()
    {
        const char* const key = "copyCount";
        bool isWhole = false;
        const qint64 count =
            value(key).type == Type::number ? value(key).written.toLongLong(&isWhole) : 0;
        if (!isWhole) {
            object(key, u"is no whole number"_s);
        } else if (count < 1 || count > std::numeric_limits<qint32>::max()) {
            object(key, u"is out of range"_s);
        }
        return count;
    }

    [[nodiscard]] std::optional<QString> name(const char* key)
    {
        if (isNull(key)) {
            return std::nullopt;
        }
        const QByteArray name = string(key);
        if (name.size() > longestName) {
            object(key, u"is too long"_s);
        }
        return QString::fromUtf8(name);
    }

    [[nodiscard]] std::optional<ClipKind> kind()
    {
        const std::optional<ClipKind> kind = clipKind(QString::fromUtf8(string("kind")));
        if (!kind) {
            object("kind", u"is none that there is"_s);
        }
        return kind;
    }

    [[nodiscard]] QByteArray contentHash()
    {
        const QByteArray hash = string("contentHash");
        const bool isHash =
            hash.size() == 64 && std::ranges::all_of(hash, [](char digit) {
                return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
            });
        if (!isHash) {
            object("contentHash", u"is not 64 lower-case hexadecimal digits"_s);
        }
        return hash;
    }

    [[nodiscard]] QByteArray decoded(const char* key, QByteArrayView written)
    {
        // Some writers escape "/", which is a letter of base64.
        const std::optional<QByteArray> text =
            written.contains('\\') ? JSONFields::text(written)
                                   : QByteArray::fromRawData(written.data(), written.size());
        if (text && text->size() % 4 == 0) {
            if (const auto bytes = QByteArray::fromBase64Encoding(
                    *text, QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors)) {
                // Empty is not absent.
                return bytes.decoded.isNull() ? QByteArrayLiteral("") : bytes.decoded;
            }
        }
        object(key, u"is no base64"_s);
        return {};
    }

    [[nodiscard]] std::optional<QByteArray> flavour(const char* key)
    {
        if (isNull(key)) {
            return std::nullopt;
        }
        if (value(key).type != Type::string) {
            object(key, u"is no string"_s);
            return std::nullopt;
        }
        return decoded(key, value(key).written);
    }

    [[nodiscard]] QByteArrayList fileURLs()
    {
        const char* const key = "fileURLs";
        if (value(key).type != Type::strings) {
            object(key, u"is no list of strings"_s);
            return {};
        }
        QByteArrayList urls;
        for (const QByteArrayView written : value(key).strings) {
            const QByteArray url = decoded(key, written);
            // What takes the list from the clipboard reads one a line.
            const bool isOneLine = std::ranges::none_of(
                url, [](char character) { return static_cast<uchar>(character) < ' '; });
            if (url.isEmpty() || !isOneLine || mendedUTF8(url) != url) {
                object(key, u"has an address that is none"_s);
                break;
            }
            urls.append(url);
        }
        return urls;
    }

    [[nodiscard]] ClipPayload content()
    {
        ClipPayload::Fields fields;
        fields.plainText = flavour("plainText");
        fields.rtf = flavour("rtf");
        fields.html = flavour("html");
        fields.imagePNG = flavour("imagePNG");
        fields.fileURLs = fileURLs();
        if (fields.plainText && mendedUTF8(*fields.plainText) != *fields.plainText) {
            object("plainText", u"is not UTF-8"_s);
        }
        if (fields.imagePNG && !fields.imagePNG->startsWith(pngSignature)) {
            object("imagePNG", u"is no PNG"_s);
        }
        return ClipPayload(std::move(fields));
    }

    void
    requireSound(const ClipPayload& payload, const QByteArray& hash, std::optional<ClipKind> kind)
    {
        if (payload.isEmpty()) {
            object(u"it has no content"_s);
        } else if (payload.byteCount() > m_largest) {
            object(u"its content is too large"_s);
        } else if (payload.contentHash() != hash) {
            object("contentHash", u"is not that of the content"_s);
        } else if (payload.kind() != kind) {
            object("kind", u"is not that of the content"_s);
        }
    }

    const JSONFields& m_fields;
    double m_latest;
    qint64 m_largest;
    QString m_objection;
};

} // namespace

QByteArray firstLine()
{
    return "{\"format\":\"" + formatName.toByteArray() +
           "\",\"version\":" + QByteArray::number(version) + "}\n";
}

QByteArray lastLine()
{
    return "{\"end\":true}\n";
}

void write(const Clip& clip, const Sink& sink)
{
    const ClipPayload& payload = *clip.payload.held();
    sink(
        "{\"id\":\"" + storedID(clip.id) + "\",\"createdAt\":" + number(clip.createdAt) +
        ",\"lastUsedAt\":" + number(clip.lastUsedAt) + ",\"kind\":\"" +
        rawValue(payload.kind()).toLatin1() +
        "\",\"isPinned\":" + (clip.isPinned ? "true" : "false") + ",\"pinOrder\":" +
        (clip.isPinned && clip.pinOrder ? number(*clip.pinOrder) : QByteArrayLiteral("null")) +
        ",\"copyCount\":" + QByteArray::number(clip.copyCount) + ",\"sourceAppName\":" +
        string(clip.sourceAppName) + ",\"sourceBundleID\":" + string(clip.sourceBundleID) +
        ",\"contentHash\":\"" + payload.contentHash() + '"');
    writeFlavour("plainText", payload.plainText(), sink);
    writeFlavour("rtf", payload.rtf(), sink);
    writeFlavour("html", payload.html(), sink);
    writeFlavour("imagePNG", payload.imagePNG(), sink);
    sink(",\"fileURLs\":[");
    QByteArrayView separator;
    for (const QByteArray& url : payload.fileURLs()) {
        sink(separator);
        writeContent(url, sink);
        separator = ",";
    }
    sink("]}\n");
}

Line kindOf(QByteArrayView line)
{
    if (line.size() > longestFrame) {
        return Line::other;
    }
    const std::optional<JSONFields> fields = JSONFields::parse(line);
    if (!fields) {
        return Line::other;
    }
    const auto has = [&fields](const char* key, JSONFields::Value::Type type) {
        const JSONFields::Value* const value = fields->find(key);
        return value != nullptr && value->type == type;
    };
    if (has("end", JSONFields::Value::Type::boolean)) {
        return Line::last;
    }
    const bool isFirst = has("format", JSONFields::Value::Type::string) &&
                         fields->find("format")->written == formatName &&
                         has("version", JSONFields::Value::Type::number);
    const qint64 of = isFirst ? fields->find("version")->written.toLongLong() : 0;
    return of == version ? Line::first : of > version ? Line::firstOfLater : Line::other;
}

std::variant<Clip, QString> parse(QByteArrayView line, double now, qint64 largest)
{
    const std::optional<JSONFields> fields = JSONFields::parse(line);
    if (!fields) {
        return u"it is no entry: not a JSON object of the right form"_s;
    }
    return EntryReader(*fields, now, largest).read();
}

} // namespace tessly::ExportFormat
