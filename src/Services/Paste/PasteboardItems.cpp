#include "PasteboardItems.h"

#include "FileURL.h"
#include "MendedUTF8.h"

namespace tessly {

std::vector<PasteboardItem> pasteboardItems(const ClipPayload& payload)
{
    std::vector<PasteboardItem> items;
    for (const QByteArray& url : payload.fileURLs()) {
        if (FileURL::parse(url)) {
            items.emplace_back().fileURL = url;
        }
    }
    if (payload.fileURLs().isEmpty()) {
        PasteboardItem item;
        item.plainText = payload.plainText();
        item.rtf = payload.rtf();
        item.html = payload.html();
        item.png = payload.imagePNG();
        if (!item.isEmpty()) {
            items.push_back(std::move(item));
        }
    }
    return items;
}

std::vector<PasteboardItem> plainTextItems(const ClipPayload& payload)
{
    QByteArray text;
    if (payload.plainText()) {
        text = *payload.plainText();
    } else {
        QByteArrayList paths;
        for (const QByteArray& url : payload.fileURLs()) {
            if (const auto file = FileURL::parse(url)) {
                // A path may hold any bytes, and readers refuse a text that is not UTF-8 as a
                // whole.
                paths << mendedUTF8(file->path);
            }
        }
        text = paths.join('\n');
    }
    if (text.isEmpty()) {
        return {};
    }
    PasteboardItem item;
    item.plainText = std::move(text);
    return {std::move(item)};
}

} // namespace tessly
