#pragma once
// Lets GoogleTest print QString values in failure messages (found through argument-dependent
// lookup, so it must live in QString's namespace, the global one).

#include <QString>
#include <ostream>

inline void PrintTo(QString const& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
