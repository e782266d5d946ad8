#pragma once

#include <QByteArray>
#include <random>
#include <recordingwriter/recordingwriter.h>
#include <vector>

namespace zelkorecording {

/// One burst record of a burst-list frame, as the receiver writes it.
struct BurstRecord
{
    quint32 timeOffset = 0;     ///< from the frame start time
    quint32 length = 0;         ///< frame time units
    qint32 frequencyOffset = 0; ///< from the frame centre, hertz
    quint32 bandwidth = 0;      ///< hertz
    float level_dBm = 0.0f;
};

/// The fields of one burst-list frame (FrameType::BurstList). The payload begins with the header
/// extension (header word 4 gives its length in words, normally 9):
///
///   words 6-7 centre frequency (u64), 8 bandwidth, 9-10 start time (u64),
///   11 duration (stop = start + 1000 × duration), 12 radio ID, 13 record count,
///   14 record stride in words; then padding up to the extension length, then the records:
///   word 0 index (not read), 1 time offset, 2 length, 3 frequency offset (signed),
///   4 bandwidth, 5 level (float), further words of a wider stride zero.
struct BurstListFrame
{
    quint64 centreFrequency = 0;
    quint32 bandwidth = 0;
    quint64 startTime = 0;
    quint32 duration = 0;
    quint32 radioID = 0;
    quint32 strideWords = 6;
    quint32 headerExtensionWords = 9;
    std::vector<BurstRecord> records;
    /// Written instead of the true record count when set (damaged frames).
    qint64 recordCountOverride = -1;

    quint64 stopTime() const { return startTime + 1000ull * duration; }
    /// Bytes from offset 24 on, in host order. An extension shorter than 9 words still
    /// writes all nine field words, so the records then overlap them.
    QByteArray payload() const;
    /// The complete frame (header word 4 = the extension length).
    QByteArray frameBytes(ByteOrder order = ByteOrder::Host) const;
};

/// One equally spaced run of channels of a synthetic hopper.
struct HopperGridSegment
{
    double startFrequency = 0.0; ///< channel 0, hertz
    double channelSpacing = 25000.0;
    unsigned int channelCount = 1;
    /// Which channels the radio uses; empty means all.
    std::vector<bool> usedChannels;

    double channelFrequency(unsigned int channel) const
    {
        return startFrequency + double(channel) * channelSpacing;
    }
    bool isUsed(unsigned int channel) const
    {
        return usedChannels.empty() || (channel < usedChannels.size() && usedChannels[channel]);
    }
};

enum class JitterShape
{
    Uniform, ///< ± jitter, evenly
    Gaussian ///< jitter is the standard deviation
};

/// A synthetic frequency-hopping radio.
struct HopperRadio
{
    quint32 radioID = 1;
    std::vector<HopperGridSegment> segments;
    double jitterHz = 0.0;
    JitterShape jitterShape = JitterShape::Uniform;
    double bandwidthHz = 12000.0;
    double bandwidthSpreadHz = 0.0; ///< ± around bandwidthHz
    quint32 burstLengthMin = 1000;
    quint32 burstLengthMax = 3000;
    float levelMin_dBm = -95.0f;
    float levelMax_dBm = -40.0f;

    /// The used channel frequencies of all segments, ascending per segment.
    std::vector<double> usedChannelFrequencies() const;
};

struct HopperScenario
{
    std::vector<HopperRadio> radios; ///< take turns frame by frame
    quint32 burstsPerFrame = 2048;
    quint64 startTime = 0;
    quint32 frameDuration = 100; ///< in steps of 1000 time units
    quint32 strideWords = 6;
    quint32 headerExtensionWords = 9;
    quint32 seed = 1;
    /// After this many frames time starts again at startTime (a new recording); -1: never.
    int timeRunsBackwardsAfterFrame = -1;
};

/// Makes burst-list frames of synthetic hoppers: channel grids of one or more segments with
/// chosen used channels, frequency jitter, spread bandwidths, random burst lengths and
/// levels, many bursts per frame, several radios interleaved. Deterministic for a seed.
class HopperGenerator
{
public:
    explicit HopperGenerator(HopperScenario scenario);

    /// The next frame; radios take turns and frames follow each other in time.
    BurstListFrame nextFrame();
    /// Writes count frames; false when the device refuses.
    bool writeFrames(RecordingWriter& writer, int count, ByteOrder order = ByteOrder::Host);

    int framesMade() const { return m_framesMade; }
    HopperScenario const& scenario() const { return m_scenario; }

    /// channelCount flags of which exactly round(occupancy × count) are set, at least one,
    /// chosen at random.
    static std::vector<bool> randomChannelUse(unsigned int channelCount, double occupancy,
                                              quint32 seed);

private:
    BurstListFrame frameFor(HopperRadio const& radio);

    HopperScenario m_scenario;
    std::mt19937 m_engine;
    quint64 m_nextStartTime;
    int m_framesMade = 0;
};

} // namespace zelkorecording
