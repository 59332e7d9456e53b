#include "PasteboardOffer.h"

#include "FileURL.h"
#include "FlavourTargets.h"
#include "MendedUTF8.h"
#include "PasteboardText.h"

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

std::optional<QByteArray>
first(const std::vector<PasteboardItem>& items, std::optional<QByteArray> PasteboardItem::* flavour)
{
    for (const PasteboardItem& item : items) {
        if (item.*flavour) {
            return item.*flavour;
        }
    }
    return std::nullopt;
}

/// The paths of the files, one a line.
QByteArray pathsOf(const std::vector<PasteboardItem>& items)
{
    QByteArrayList paths;
    for (const PasteboardItem& item : items) {
        if (const auto file = item.fileURL ? FileURL::parse(*item.fileURL) : std::nullopt) {
            // A path may hold any bytes, and readers refuse a text that is not UTF-8 as a whole.
            paths << mendedUTF8(file->path);
        }
    }
    return paths.join('\n');
}

} // namespace

PasteboardOffer::PasteboardOffer(const std::vector<PasteboardItem>& items, WriteTicket ticket)
    : m_ticket(ticket)
{
    const auto text = first(items, &PasteboardItem::plainText);
    if (text) {
        addText(*text);
    }
    if (const auto html = first(items, &PasteboardItem::html)) {
        add("text/html", *html);
    }
    if (const auto rtf = first(items, &PasteboardItem::rtf)) {
        for (const QByteArrayView name : targetsOf(Flavour::rtf)) {
            add(name, *rtf);
        }
    }
    if (const auto png = first(items, &PasteboardItem::png)) {
        add("image/png", *png);
    }

    QByteArray uriList;
    QByteArray copiedFiles = "copy"_ba;
    for (const PasteboardItem& item : items) {
        if (item.fileURL) {
            uriList += *item.fileURL + "\r\n";
            copiedFiles += '\n' + *item.fileURL;
        }
    }
    if (!uriList.isEmpty()) {
        add("text/uri-list", uriList);
        // File managers on GNOME paste from this one; a final line feed would be one more file.
        add("x-special/gnome-copied-files", copiedFiles);
        add("application/x-kde-cutselection", "0"_ba);
        if (const QByteArray paths = pathsOf(items); !text && !paths.isEmpty()) {
            // For terminals and editors. Behind the lists: who knows both takes what comes first.
            addText(paths);
        }
    }

    add(Pasteboard::markerType.toUtf8(), "1"_ba);
}

std::optional<QByteArray> PasteboardOffer::bytes(QByteArrayView name)
{
    const qsizetype index = m_names.indexOf(name);
    if (index < 0) {
        return std::nullopt;
    }
    if (isLatin1Target(name) && !m_hasLatin1) {
        // Nearly nobody asks, so this is made for the first who does.
        m_bytes[index] = latin1FromUTF8(m_bytes[index]).value();
        m_hasLatin1 = true;
    }
    return m_bytes[index];
}

ReadResult<QByteArray> PasteboardOffer::read(Flavour flavour, qint64 byteLimit)
{
    for (const QByteArrayView name : targetsOf(flavour)) {
        if (const auto value = bytes(name)) {
            if (value->size() > byteLimit) {
                return {.status = ReadStatus::tooLarge};
            }
            return {.status = ReadStatus::read, .value = *value};
        }
    }
    return {.status = ReadStatus::absent};
}

ReadResult<QByteArrayList> PasteboardOffer::readFileURLs(qint64 byteLimit)
{
    const QByteArrayView target = fileListTargets().front();
    const auto list = bytes(target);
    if (!list) {
        return {.status = ReadStatus::absent};
    }
    return limitedFileURLs(fileURLs(target, *list), byteLimit);
}

void PasteboardOffer::addText(const QByteArray& text)
{
    for (const char* name : {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING"}) {
        add(name, text);
    }
    if (fitsLatin1(text)) {
        add("STRING", text);
    }
    add("TEXT", text);
}

void PasteboardOffer::add(QByteArrayView name, const QByteArray& bytes)
{
    m_names.append(name.toByteArray());
    m_bytes.append(bytes);
}

} // namespace tessly
