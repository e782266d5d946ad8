#pragma once

#include "transmissionsystemsamples.h"

namespace zelkosamples {

/// The image samples: a weather-fax chart (two-level, 576 pixels a line, 120 lines a minute,
/// four lines lost in reception and one received twice) and a Feld-Hell call (grey levels
/// with some noise, 17.5 columns a second, in the other byte order).
std::vector<TransmissionSystemSample> imageSamples();

} // namespace zelkosamples
