#pragma once

#include <QDir>

namespace zelkosamples {

/// Writes ais-elbe.nmea, ten minutes of AIS traffic off the Elbe estuary as a shore receiver
/// logs it (tag-block times, a few damaged lines), and ais-elbe.zdr, the same log imported
/// as "zelko import aivdm" does. False when a file cannot be written.
bool writeAisSamples(QDir const& directory);

} // namespace zelkosamples
