#pragma once

#include "Actor.h"
#include "UserDefaults.h"

#include <QHash>

#include <memory>

namespace tessly {

/// Settings in an INI file, the keys in its [General] group. The file is read once; every change is
/// given to the executor to be written at once, to a new file that takes the old one's place,
/// readable by its owner alone. Other keys and groups in the file, also those that came since it
/// was read, are kept.
///
/// A change that cannot be written is logged (once, until writing works again), stays in memory and
/// is written with the next one. A symbolic link in the place of the file is followed; where it
/// does not lead to an ordinary file of the user's own, nothing is changed (one that the system
/// provides is read).
class IniUserDefaults final : public UserDefaults
{
public:
    /// The file's folder need not be there: it is made, for its owner alone, with the first write.
    IniUserDefaults(const QString& path, std::unique_ptr<Executor> executor);
    /// Returns when all has been written.
    ~IniUserDefaults() override;

    void registerDefaults(const QVariantMap& defaults) override;
    [[nodiscard]] bool couldBeRead() const override { return m_couldBeRead; }
    [[nodiscard]] qint64 integer(const QString& key) const override;
    [[nodiscard]] bool boolean(const QString& key) const override;
    [[nodiscard]] std::optional<QString> string(const QString& key) const override;
    void setInteger(const QString& key, qint64 value) override;
    void setBoolean(const QString& key, bool value) override;
    void setString(const QString& key, const QString& value) override;
    void remove(const QString& key) override;

private:
    class Writer;

    void set(const QString& key, const QString& value);
    void change(const QString& key, const std::optional<QString>& value);

    QVariantMap m_defaults;
    QHash<QString, QString> m_values;
    bool m_couldBeRead = true;
    std::shared_ptr<Writer> m_writer;
    std::unique_ptr<Executor> m_executor;
};

} // namespace tessly
