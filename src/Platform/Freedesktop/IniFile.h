#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QString>

#include <optional>

namespace tessly {

/// The text of an INI file, of which the [General] group is read and changed key by key. Every line
/// that is not changed, whatever it holds, is kept byte for byte.
///
/// Keys before the first group header belong to [General] too, and of a key that occurs twice the
/// last one counts. A value may be quoted; "\n", "\r", "\t", "\"", "\\" and "\x…" (hexadecimal) are
/// escapes; an unquoted ";" begins a comment. QSettings reads and writes the same form.
class IniFile
{
public:
    explicit IniFile(const QByteArray& text = {});

    [[nodiscard]] QHash<QString, QString> values() const;
    void setValue(const QString& key, const QString& value);
    void removeValue(const QString& key);

    [[nodiscard]] QByteArray text() const;

private:
    template <typename Visit>
    void forEachEntry(Visit visit) const;

    QByteArrayList m_lines;
};

} // namespace tessly
