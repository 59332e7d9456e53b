// A list of files as other programs offer it. Fields: under which of the names, the list.

#include "FileURL.h"
#include "FlavourTargets.h"
#include "FuzzInput.h"
#include "PasteboardOffer.h"

#include <limits>

using namespace tessly;
using namespace tessly::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const unsigned which = input.nextByte();
    const QByteArray list = input.rest().join('\xff');
    const auto targets = fileListTargets();
    const QByteArrayList urls = fileURLs(targets[which % targets.size()], list);
    std::vector<PasteboardItem> items;
    for (const QByteArray& url : urls) {
        const auto file = FileURL::parse(url);
        require(file.has_value(), "what is taken for a file's URL is one");
        require(!file->path.contains('\0'), "a path has no NUL");
        items.emplace_back().fileURL = url;
    }
    if (items.empty()) {
        return 0;
    }
    // As they were read, they are offered and read again.
    PasteboardOffer offer(items);
    for (const QByteArrayView target : targets) {
        if (const auto offered = offer.bytes(target)) {
            require(fileURLs(target, *offered) == urls, "files come back as they were");
        }
    }
    const auto limit = std::numeric_limits<qint64>::max();
    require(offer.readFileURLs(limit).value == urls, "files can be read back");
    return 0;
}
