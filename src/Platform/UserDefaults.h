#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

namespace tessly {

/// A persistent store of settings with typed reads. Main thread only. Reads never fail: a key that
/// is missing answers its registered default, a value of the wrong type the type's fallback.
class UserDefaults
{
public:
    UserDefaults() = default;
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    virtual ~UserDefaults() = default;

    /// Answers for keys that were never set. Not written to the store.
    virtual void registerDefaults(const QVariantMap& defaults) = 0;

    /// Whether what is stored could be read; an empty store could. If not, every key answers as if
    /// it had never been set, which says nothing of what the user wants.
    [[nodiscard]] virtual bool couldBeRead() const = 0;

    /// 0 if the value is no whole number.
    [[nodiscard]] virtual qint64 integer(const QString& key) const = 0;
    /// False if the value is neither true nor a number other than 0.
    [[nodiscard]] virtual bool boolean(const QString& key) const = 0;
    [[nodiscard]] virtual std::optional<QString> string(const QString& key) const = 0;

    /// Written through at once.
    virtual void setInteger(const QString& key, qint64 value) = 0;
    virtual void setBoolean(const QString& key, bool value) = 0;
    virtual void setString(const QString& key, const QString& value) = 0;
    virtual void remove(const QString& key) = 0;
};

} // namespace tessly
