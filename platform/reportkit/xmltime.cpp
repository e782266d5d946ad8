#include "xmltime.h"

namespace REPORTKIT {

QString XmlTime::toText(QDateTime const& time)
{
    if (!time.isValid()) {
        return QString();
    }
    return time.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

QDateTime XmlTime::fromText(QString const& text, bool* ok)
{
    QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    bool const valid = time.isValid() && !text.isEmpty();
    if (ok) {
        *ok = valid;
    }
    return valid ? time.toUTC() : QDateTime();
}

} // namespace REPORTKIT
