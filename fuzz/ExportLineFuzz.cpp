// A line of a file that is to be imported. The input is the line.

#include "ExportFormat.h"
#include "FuzzInput.h"
#include "JSONFields.h"

#include <algorithm>
#include <cmath>

using namespace tessly;
using namespace tessly::fuzz;

namespace {

constexpr double now = 1'700'000'000;

/// Nothing that came from the line, which a terminal might obey.
bool isPlain(const QString& reason)
{
    return std::ranges::all_of(reason, [](QChar character) {
        return character.unicode() >= ' ' && character.unicode() < 0x7f;
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray line(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    (void)ExportFormat::kindOf(line);
    if (const auto fields = JSONFields::parse(line)) {
        for (const char* const name : {"id", "sourceAppName", "plainText"}) {
            const JSONFields::Value* const value = fields->find(name);
            if (value != nullptr && value->type == JSONFields::Value::Type::string) {
                (void)JSONFields::text(value->written);
            }
        }
    }
    const auto read = ExportFormat::parse(line, now);
    if (const QString* const reason = std::get_if<QString>(&read)) {
        require(!reason->isEmpty() && isPlain(*reason), "a reason tells nothing of the line");
        return 0;
    }
    const Clip& clip = std::get<Clip>(read);
    require(clip.payload.held() != nullptr && !clip.payload.held()->isEmpty(), "it has content");
    require(!clip.id.isNull() && clip.copyCount > 0, "it can be stored");
    require(
        clip.createdAt >= 0 && std::isfinite(clip.createdAt) && clip.lastUsedAt >= 0 &&
            std::isfinite(clip.lastUsedAt),
        "it has its times");
    QByteArray written;
    ExportFormat::write(clip, [&written](QByteArrayView bytes) { written.append(bytes); });
    const auto again = ExportFormat::parse(written, now);
    require(
        std::holds_alternative<Clip>(again) && std::get<Clip>(again) == clip,
        "an entry comes back as it was");
    return 0;
}
