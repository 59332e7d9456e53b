#pragma once

#include <QString>

#include <ostream>

// Found by googletest beside the type it prints, hence in the global namespace.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
