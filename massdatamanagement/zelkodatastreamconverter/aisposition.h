#pragma once

#include <QString>
#include <QStringList>

namespace zelkodatastreamconverter {

/// Reading of the positions in AIS station reports, as the PDU decoder writes them:
/// "N 53°32'10.5'' E 9°58'0''" (hemisphere letter, degrees, minutes, seconds, each number
/// followed by its unit mark).

/// Splits a position text into runs of digits (with decimal points) and runs of other
/// non-blank characters: "N 53°32'" gives "N", "53", "°", "32", "'".
QStringList scanAISPosition(QString const& text);

/// The coordinate after the hemisphere letter, in degrees: degrees + minutes / 60 +
/// seconds / 3600. False when a number or a unit mark is missing or the value lies outside
/// 0..maximum; value is then not to be used.
bool getAISPosition(QStringList const& tokens, QString const& hemisphere, double& value,
                    double maximum);

} // namespace zelkodatastreamconverter
