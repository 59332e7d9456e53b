// What is derived from a copied content, and the way of that content back to the clipboard.
// Fields: which flavours there are (the bits of one byte), plain text, RTF, HTML, PNG, file URLs.

#include "ClipPayload.h"
#include "ClipPreview.h"
#include "FuzzInput.h"
#include "MendedUTF8.h"
#include "PasteboardItems.h"
#include "PasteboardOffer.h"
#include "PasteboardText.h"
#include "PreviewLine.h"
#include "StringListJSON.h"
#include "UnicodeText.h"

#include <algorithm>
#include <limits>

using namespace tessly;
using namespace tessly::fuzz;

namespace {

constexpr qint64 noLimit = std::numeric_limits<qint64>::max();

ClipPayload::Fields fieldsOf(FuzzInput input)
{
    const unsigned present = input.nextByte();
    const auto flavour = [&](unsigned bit) {
        const QByteArray bytes = input.next();
        return (present & bit) != 0 ? std::optional(bytes) : std::nullopt;
    };
    ClipPayload::Fields fields;
    if (const auto text = flavour(1)) {
        fields.plainText = mendedUTF8(*text);
        require(fields.plainText->isValidUtf8(), "mended text is valid");
        require(mendedUTF8(*fields.plainText) == *fields.plainText, "valid text stays as it is");
    }
    fields.rtf = flavour(2);
    fields.html = flavour(4);
    fields.imagePNG = flavour(8);
    if ((present & 16) != 0) {
        fields.fileURLs = input.rest();
    }
    return fields;
}

void checkDerivations(const ClipPayload& payload)
{
    require(
        std::ranges::find(allClipKinds, payload.kind()) != allClipKinds.end(),
        "the kind is one of those there are");
    const QByteArray preview = payload.preview();
    require(preview.isValidUtf8(), "the preview is valid text");
    require(
        !payload.fileURLs().isEmpty() || !preview.contains('\n'), "a text's preview is one line");
    const QString line = payload.previewLine();
    require(line.size() <= previewLineLength, "a row's line has its length");
    require(QString::fromUtf8(preview).startsWith(line), "a row's line begins the preview");
    require(payload.searchText().isValidUtf8(), "what is indexed is valid text");
    require(
        stringList(payload.fileURLsJSON()) == payload.fileURLs(),
        "a list of files is stored whole");
    const ClipPreview shown = ClipPreview::of(payload);
    require(
        !shown.text || shown.text->size() <= ClipPreview::textAtMost,
        "no more of a text is taken than is shown");
    const QByteArray json = payload.fileURLsJSON();
    const auto first = wholeStrings(json.first(json.size() / 2));
    require(
        first && *first == payload.fileURLs().first(first->size()),
        "a list that is cut begins as the whole does");
    const QByteArray hash = payload.contentHash();
    require(hash.size() == 64 && hash == QByteArray::fromHex(hash).toHex(), "a hash is 64 digits");
    require(payload.byteCount() >= 0, "no content has fewer bytes than none");
}

void checkText(const QByteArray& text)
{
    const QByteArrayView core = trimmed(text);
    require(trimmed(core) == core, "trimmed text stays as it is");
    const auto latin1 = latin1FromUTF8(text);
    require(latin1.has_value() == fitsLatin1(text), "what fits Latin-1 can be had in it");
    if (latin1) {
        require(utf8FromLatin1(*latin1) == text, "text comes back from Latin-1");
    }
}

/// Written to the clipboard and read from it, a content is what it was.
void checkTheWayBack(const ClipPayload& payload)
{
    const std::vector<PasteboardItem> items = pasteboardItems(payload);
    if (items.empty()) {
        return;
    }
    PasteboardOffer offer(items);
    for (const QByteArray& name : offer.names()) {
        require(offer.bytes(name).has_value(), "what is offered can be had");
    }
    if (!payload.fileURLs().isEmpty()) {
        require(!offer.names().isEmpty(), "files are offered");
        return;
    }
    const auto check = [&](Flavour flavour, const std::optional<QByteArray>& bytes) {
        const ReadResult<QByteArray> read = offer.read(flavour, noLimit);
        require((read.status == ReadStatus::read) == bytes.has_value(), "a flavour is offered");
        require(!bytes || read.value == *bytes, "a flavour comes back as it was");
    };
    check(Flavour::plainText, payload.plainText());
    check(Flavour::rtf, payload.rtf());
    check(Flavour::html, payload.html());
    check(Flavour::png, payload.imagePNG());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ClipPayload payload(fieldsOf(FuzzInput(data, size)));
    checkDerivations(payload);
    if (payload.plainText()) {
        checkText(*payload.plainText());
    }
    checkTheWayBack(payload);
    for (const PasteboardItem& item : plainTextItems(payload)) {
        require(item.plainText && item.plainText->isValidUtf8(), "plain text is valid text");
    }
    const ClipPayload same(
        {.plainText = payload.plainText(),
         .rtf = payload.rtf(),
         .html = payload.html(),
         .imagePNG = payload.imagePNG(),
         .fileURLs = payload.fileURLs()});
    require(same == payload, "equal content is equal");
    require(same.contentHash() == payload.contentHash(), "equal content has one hash");
    return 0;
}
