#pragma once

#include "UserDefaults.h"

namespace tessly {

/// Settings in an INI file, the keys in its [General] group. The file is read once; every change is
/// written through at once, to a new file that takes the old one's place, readable by its owner
/// alone.
class IniUserDefaults final : public UserDefaults
{
public:
    explicit IniUserDefaults(QString path);

    void registerDefaults(const QVariantMap& defaults) override;
    [[nodiscard]] qint64 integer(const QString& key) const override;
    [[nodiscard]] bool boolean(const QString& key) const override;
    [[nodiscard]] std::optional<QString> string(const QString& key) const override;
    void setInteger(const QString& key, qint64 value) override;
    void setBoolean(const QString& key, bool value) override;
    void setString(const QString& key, const QString& value) override;
    void remove(const QString& key) override;

private:
    QString m_path;
};

} // namespace tessly
