#include "StringListJSON.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QString>

namespace tessly {

namespace {

void appendEscaped(QByteArray& json, char c)
{
    switch (c) {
    case '"':
        json += "\\\"";
        return;
    case '\\':
        json += "\\\\";
        return;
    case '/':
        json += "\\/";
        return;
    case '\b':
        json += "\\b";
        return;
    case '\f':
        json += "\\f";
        return;
    case '\n':
        json += "\\n";
        return;
    case '\r':
        json += "\\r";
        return;
    case '\t':
        json += "\\t";
        return;
    default:
        if (static_cast<unsigned char>(c) < 0x20) {
            json += "\\u00" + QByteArray(1, c).toHex();
        } else {
            json += c;
        }
    }
}

} // namespace

QByteArray stringListJSON(const QByteArrayList& strings)
{
    QByteArray json = "[";
    for (const QByteArray& string : strings) {
        json += json.size() > 1 ? ",\"" : "\"";
        for (const char c : string) {
            appendEscaped(json, c);
        }
        json += '"';
    }
    return json + ']';
}

std::optional<QByteArrayList> stringList(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray()) {
        return std::nullopt;
    }
    QByteArrayList strings;
    for (const QJsonValue value : document.array()) {
        if (!value.isString()) {
            return std::nullopt;
        }
        strings.append(value.toString().toUtf8());
    }
    return strings;
}

std::optional<QByteArrayList> wholeStrings(const QByteArray& cut)
{
    qsizetype end = 0;
    bool isInString = false;
    for (qsizetype i = 0; i < cut.size(); ++i) {
        if (isInString && cut[i] == '\\') {
            // Whatever follows ends nothing.
            ++i;
        } else if (cut[i] == '"') {
            isInString = !isInString;
            end = isInString ? end : i + 1;
        }
    }
    return stringList(end > 0 ? cut.first(end) + ']' : QByteArrayLiteral("[]"));
}

} // namespace tessly
