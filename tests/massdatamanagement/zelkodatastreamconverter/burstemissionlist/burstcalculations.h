#pragma once

#include <QDataStream>
#include <QString>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencygridsegment.h>

namespace burstscenario {

/// The answer of one calculation line of a burst scenario script ("name scalars | list ..."),
/// or an empty string when the name is no calculation.
QString calculate(QString const& line);

/// A number as the scenario dumps print it: 15 significant digits.
QString number(double value);
/// Every field of a grid segment.
QString describe(zelkodatastreamconverter::BurstEmissionList::HopperFrequencyGridSegment const& s);

/// Whether the value reads back equal from its stream, and how many cuts of the stream are
/// refused, leaving an empty value rather than a half-read one.
template <typename T>
QString roundTrip(T const& value)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << value;
    int refused = 0;
    for (int cut = 0; cut < bytes.size(); ++cut) {
        QDataStream in(bytes.left(cut));
        T part;
        in >> part;
        refused += in.status() != QDataStream::Ok && part == T();
    }
    QDataStream in(bytes);
    T back;
    in >> back;
    bool const equal = in.status() == QDataStream::Ok && back == value;
    return QStringLiteral("%1 bytes read back %2, %3 cuts refused")
        .arg(bytes.size())
        .arg(equal ? "equal" : "DIFFERENT")
        .arg(refused);
}

} // namespace burstscenario
