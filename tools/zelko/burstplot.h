#pragma once

#include <QImage>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyset.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/radioburstdata.h>

namespace zelkotool {

/// The time-frequency picture of one radio: a burst-count histogram over frequency on top,
/// below it every burst's window (frequency × time, time running down) shaded by its level,
/// the estimated channel centres and segment boundaries as lines, and a legend with the
/// estimate's figures. Times are taken as microseconds. Needs no display.
QImage drawBurstPlot(unsigned int radioID,
                     zelkodatastreamconverter::BurstEmissionList::RadioBurstData const& data,
                     zelkodatastreamconverter::BurstEmissionList::HopperFrequencySet const& set,
                     double meanBandwidth);

} // namespace zelkotool
