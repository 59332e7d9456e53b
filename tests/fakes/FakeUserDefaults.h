#pragma once

#include "UserDefaults.h"

#include <QHash>

#include <vector>

namespace tessly::test {

/// Settings in memory, kept as text like a file's.
class FakeUserDefaults final : public UserDefaults
{
public:
    /// Puts a value into the store as if it had been there all along.
    void preset(const QString& key, const QString& value) { m_values.insert(key, value); }
    /// From now on it is as if what is stored could not be read.
    void makeUnreadable()
    {
        m_couldBeRead = false;
        m_values.clear();
    }
    /// The stored text of a key, not its registered default.
    [[nodiscard]] std::optional<QString> stored(const QString& key) const;
    /// As after a start of the program.
    void forgetRegisteredDefaults() { m_defaults.clear(); }
    /// The keys of all writes and removals, in order.
    [[nodiscard]] const std::vector<QString>& writes() const { return m_writes; }

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
    void set(const QString& key, const QString& value);

    QVariantMap m_defaults;
    QHash<QString, QString> m_values;
    std::vector<QString> m_writes;
    bool m_couldBeRead = true;
};

} // namespace tessly::test
