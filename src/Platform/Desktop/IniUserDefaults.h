#pragma once

#include "UserDefaults.h"

#include <QHash>

namespace tessly {

/// Settings in an INI file, the keys in its [General] group. The file is read once; every change is
/// written through at once, to a new file that takes the old one's place, readable by its owner
/// alone. Other keys and groups in the file, also those that came since it was read, are kept.
///
/// A change that cannot be written is logged (once, until writing works again), stays in memory and
/// is written with the next one.
class IniUserDefaults final : public UserDefaults
{
public:
    /// The file's folder need not be there: it is made, for its owner alone, with the first write.
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
    void set(const QString& key, const QString& value);
    void writeThrough();

    QString m_path;
    QVariantMap m_defaults;
    QHash<QString, QString> m_values;
    /// What the file does not have yet; a removed key has no value.
    QHash<QString, std::optional<QString>> m_unwritten;
    bool m_hasLoggedFailure = false;
};

} // namespace tessly
