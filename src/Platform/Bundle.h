#pragma once

#include <QString>
#include <QVariant>

#include <optional>

namespace tessly {

/// The program as it lies on disk.
class Bundle
{
public:
    Bundle() = default;
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;
    virtual ~Bundle() = default;

    /// Where it is: an absolute path.
    [[nodiscard]] virtual QString bundlePath() const = 0;
    [[nodiscard]] virtual std::optional<QString> bundleIdentifier() const = 0;
    /// "CFBundleShortVersionString", "CFBundleVersion": strings; anything else is invalid.
    [[nodiscard]] virtual QVariant objectForInfoDictionaryKey(const QString& key) const = 0;
};

} // namespace tessly
