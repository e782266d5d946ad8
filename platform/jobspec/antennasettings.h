#pragma once

#include <reportkit/antennasettings.h>

namespace JobSpec {

/// The antenna of a job. It is the report library's antenna record under the job-settings
/// name, so that it can be handed to REPORTKIT::Tuner_Settings::SetAntennaSettings() and
/// compared with the antenna a tuner holds. XML form: <AntennaSettings name= type= port=/>.
class AntennaSettings : public REPORTKIT::Antenna_Settings
{
public:
    AntennaSettings() = default;
    AntennaSettings(REPORTKIT::Antenna_Settings const& antenna) : Antenna_Settings(antenna) {}
};

} // namespace JobSpec
