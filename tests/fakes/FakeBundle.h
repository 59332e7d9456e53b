#pragma once

#include "Bundle.h"

#include <QVariantMap>

namespace tessly::test {

/// A bundle that is where, and what, the test says.
class FakeBundle final : public Bundle
{
public:
    QString path = QStringLiteral("/usr/bin/tessly");
    std::optional<QString> identifier = QStringLiteral("com.brackmoor.tessly");
    QVariantMap information = {
        {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2")},
        {QStringLiteral("CFBundleVersion"), QStringLiteral("45")},
    };

    void setVersion(const QString& version, const QString& build)
    {
        information[QStringLiteral("CFBundleShortVersionString")] = version;
        information[QStringLiteral("CFBundleVersion")] = build;
    }

    [[nodiscard]] QString bundlePath() const override { return path; }
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override { return identifier; }
    [[nodiscard]] QVariant objectForInfoDictionaryKey(const QString& key) const override
    {
        return information.value(key);
    }
};

} // namespace tessly::test
