#include "FakeUserDefaults.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

std::optional<QString> FakeUserDefaults::stored(const QString& key) const
{
    const auto found = m_values.constFind(key);
    return found == m_values.cend() ? std::nullopt : std::optional(*found);
}

void FakeUserDefaults::registerDefaults(const QVariantMap& defaults)
{
    m_defaults.insert(defaults);
}

qint64 FakeUserDefaults::integer(const QString& key) const
{
    const std::optional<QString> text = string(key);
    return text ? text->toLongLong() : 0;
}

bool FakeUserDefaults::boolean(const QString& key) const
{
    const std::optional<QString> text = string(key);
    return text && (text->compare(u"true"_s, Qt::CaseInsensitive) == 0 || text->toDouble() != 0);
}

std::optional<QString> FakeUserDefaults::string(const QString& key) const
{
    if (const std::optional<QString> value = stored(key)) {
        return value;
    }
    const auto registered = m_defaults.constFind(key);
    return registered == m_defaults.cend() ? std::nullopt : std::optional(registered->toString());
}

void FakeUserDefaults::setInteger(const QString& key, qint64 value)
{
    set(key, QString::number(value));
}

void FakeUserDefaults::setBoolean(const QString& key, bool value)
{
    set(key, value ? u"true"_s : u"false"_s);
}

void FakeUserDefaults::setString(const QString& key, const QString& value)
{
    set(key, value);
}

void FakeUserDefaults::remove(const QString& key)
{
    m_writes.push_back(key);
    m_values.remove(key);
}

void FakeUserDefaults::set(const QString& key, const QString& value)
{
    m_writes.push_back(key);
    m_values.insert(key, value);
}

} // namespace tessly::test
