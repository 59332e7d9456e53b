#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace tessly {

/// A JSON object of strings, numbers, true, false, null and lists of strings, as it stands in
/// `text`, from which nothing is copied: a string may be as long as it likes. Objects within it,
/// and names that come twice, are errors; so are more fields than 64.
class JSONFields
{
public:
    struct Value
    {
        enum class Type { string, number, boolean, null, strings };
        Type type = Type::null;
        /// As it is written; of a string what is between its quotes.
        QByteArrayView written;
        /// Those of `strings`, likewise.
        std::vector<QByteArrayView> strings;
    };

    /// None if `text` is anything else. It must outlive the fields.
    [[nodiscard]] static std::optional<JSONFields> parse(QByteArrayView text);

    /// Null if there is none of this name.
    [[nodiscard]] const Value* find(QByteArrayView name) const;
    [[nodiscard]] qsizetype size() const { return static_cast<qsizetype>(m_fields.size()); }

    /// What a string says that is written so, as UTF-8; none if that is no text: not UTF-8, or half
    /// a character. Shares the bytes of one that has no escapes.
    [[nodiscard]] static std::optional<QByteArray> text(QByteArrayView written);

private:
    struct Field
    {
        QByteArrayView name;
        Value value;
    };
    class Parser;

    std::vector<Field> m_fields;
};

} // namespace tessly
