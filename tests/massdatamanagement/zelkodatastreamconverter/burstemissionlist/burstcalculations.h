#pragma once

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

} // namespace burstscenario
