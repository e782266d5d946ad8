#include "xmltime.h"

namespace REPORTKIT {

QString XmlTime::toText(QDateTime const& time)
{
    if (!time.isValid()) {
        return QString();
    }
    QDateTime const utc = time.timeSpec() == Qt::UTC ? time : time.toUTC();
    QDate const date = utc.date();
    QTime const clock = utc.time();
    int const year = date.year();
    if (year < 0 || year > 9999) {
        return utc.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
    }
    // Written digit by digit: documents carry a time stamp per frame, and the general
    // date formatter costs thousands of instructions each.
    char text[] = "0000-00-00T00:00:00.000Z";
    auto put = [&text](int at, int value, int digits) {
        for (int i = digits - 1; i >= 0; --i) {
            text[at + i] = char('0' + value % 10);
            value /= 10;
        }
    };
    put(0, year, 4);
    put(5, date.month(), 2);
    put(8, date.day(), 2);
    put(11, clock.hour(), 2);
    put(14, clock.minute(), 2);
    put(17, clock.second(), 2);
    put(20, clock.msec(), 3);
    return QString::fromLatin1(text, int(sizeof text) - 1);
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
