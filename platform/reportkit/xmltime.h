#pragma once

#include <QDateTime>
#include <QString>

namespace REPORTKIT {

/// The date-time text of every XML form of the host libraries: UTC, millisecond
/// resolution, "2024-01-31T23:59:59.123Z" (xs:dateTime). A null date-time has no text.
class XmlTime
{
public:
    static QString toText(QDateTime const& time);
    /// Accepts the form above and any xs:dateTime with an offset; ok is false otherwise.
    static QDateTime fromText(QString const& text, bool* ok);
};

} // namespace REPORTKIT
