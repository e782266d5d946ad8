#pragma once

#include <QString>
#include <ostream>

/// Lets GoogleTest show QString values in failure messages as UTF-8 text.
inline void PrintTo(QString const& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
