#pragma once

#include "Bundle.h"

namespace tessly {

/// The executable that runs.
class InstalledBundle final : public Bundle
{
public:
    /// Looks the executable up now, by the kernel's link to it: an update may replace the file
    /// while the program runs.
    explicit InstalledBundle(const QString& link = QStringLiteral("/proc/self/exe"));
    ~InstalledBundle() override;

    /// The executable's canonical path, also if it was replaced; empty if it cannot be told.
    [[nodiscard]] QString bundlePath() const override { return m_path; }
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override;
    /// The version as "1.2.3", and one number that grows with it.
    [[nodiscard]] QVariant objectForInfoDictionaryKey(const QString& key) const override;

private:
    QString m_path;
};

} // namespace tessly
