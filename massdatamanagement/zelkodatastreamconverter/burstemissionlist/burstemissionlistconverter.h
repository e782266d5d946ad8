#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <array>
#include <cstddef>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstdata.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/frequencytimewindow.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyset.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/radioburstdata.h>
#include <memory>
#include <random>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// How a tolerance or threshold value is meant.
enum eThresholdMode : unsigned char
{
    eRelative = 0, ///< multiplied by the radio's mean burst bandwidth
    eAbsolute = 1  ///< hertz, used as it stands
};

/// Frame-by-frame processor of burst-list frames (FrameType::BurstList) for frequency-hopping
/// radios.
///
/// The host hands it one frame at a time (processFrame). The bursts of a frame become a new
/// segment of that frame's radio; each radio keeps at most getMaxSegmentsPerRadioID()
/// segments, the oldest dropped first. A frame whose stop time lies before the previous
/// frame's means a new recording: everything held is forgotten. On request the converter
/// estimates a radio's hop frequencies and channel grid (getFrequencySetForRadioID) or draws
/// a random sample of its recent bursts, weighted to the middle of the level range
/// (drawRandomSampleFTWsForRadioID).
///
/// Payload of a burst-list frame (32-bit words in host order, as FrameReader delivers them;
/// word k at byte 4k):
///
///   0      magic FRAME_MAGIC         3   frame type FrameType::BurstList (frameformat.h)
///   4      header extension length in words: the records begin at byte 24 + 4 × this
///   6-7    centre frequency (u64, Hz)  8  frame bandwidth (u32, Hz)
///   9-10   frame start time (u64)     11  duration (u32); stop time = start + 1000 × duration
///   12     radio ID                   13  record count      14  record stride in words (≥ 6)
///
/// Record words: 1 start time offset from the frame start, 2 length, 3 frequency offset from
/// the centre (signed, Hz), 4 bandwidth (Hz), 5 level (float, dBm); word 0 and words past 5
/// are not read.
///
/// Frames of another type, with a wrong magic, without records, with a stride below six
/// words or with records reaching past the end of the frame are ignored: (false, 0, zero
/// window), nothing changes.
///
/// Dumps: the dump...() operations mirror the input and results into files (binary frames,
/// binary and text bursts, text random samples, text grid estimations); parse...() read the
/// binary ones back. A dump that cannot be opened stays off.
///
/// Not thread-safe: one thread at a time. A frame costs no heap allocation in the common case
/// (a known radio, at most 2048 bursts or as many as seen before, no dump open).
class BurstEmissionListConverter
{
public:
    /// The 64-bit FNV-1a hash of the radio ID's four bytes in memory order.
    struct RadioIDHash
    {
        std::size_t operator()(unsigned int radioID) const noexcept;
    };
    using DataMap = std::unordered_map<unsigned int, RadioBurstData, RadioIDHash>;
    /// (time span, sample count, lower level quantile, upper level quantile).
    using SamplingParameters = std::tuple<unsigned long long, unsigned int, float, float>;

    static constexpr unsigned int MinimumRecordStrideWords = 6;

    BurstEmissionListConverter();
    virtual ~BurstEmissionListConverter();
    BurstEmissionListConverter(BurstEmissionListConverter const&) = delete;
    BurstEmissionListConverter& operator=(BurstEmissionListConverter const&) = delete;

    /// Files the frame's bursts as a new segment of its radio. Returns whether the frame held
    /// bursts, its radio ID and its frequency-time window (centre ± ceil(bandwidth / 2),
    /// start .. stop time).
    std::tuple<bool, unsigned int, FrequencyTimeWindow> processFrame(QByteArray const& frame);

    /// The radio's hop frequencies and grid estimate, and its mean burst bandwidth (Hz);
    /// an empty set and 0.0 for an unknown radio.
    std::pair<HopperFrequencySet, double> getFrequencySetForRadioID(unsigned int radioID);
    /// Windows of up to the sample count bursts of the radio's recent segments (those ending
    /// within the sampling time span of its last one), in ascending level order; the weakest
    /// and strongest are trimmed off by the level quantiles first when there are more than
    /// the sample count.
    std::vector<FrequencyTimeWindow> drawRandomSampleFTWsForRadioID(unsigned int radioID) const;
    /// Whether the radio's last segment ends at or after time.
    bool dataAvailableForTime(unsigned int radioID, unsigned long long time) const;
    void eraseDataForRadioID(unsigned int radioID);
    DataMap const& getDataMap() const { return m_dataMap; }

    void setMaxSegmentsPerRadioID(unsigned short count) { m_maxSegmentsPerRadioID = count; }
    unsigned short getMaxSegmentsPerRadioID() const { return m_maxSegmentsPerRadioID; }
    /// Merging distance of burst frequencies (default relative 0.3 × mean bandwidth).
    void setBinningTolerance(eThresholdMode mode, double value);
    eThresholdMode getBinningToleranceMode() const { return m_binningToleranceMode; }
    double getBinningToleranceValue() const { return m_binningToleranceValue; }
    /// Resolution of start frequencies and spacings (below 1: automatic; default −1) and the
    /// factor within which cost minima count as near-best (default 12).
    void setEstimationParameters(double resolution, double factor);
    std::pair<double, double> getEstimationParameters() const;
    /// Gap between hop frequencies that starts a new grid segment (default relative
    /// 12 × mean bandwidth).
    void setSegmentationParameters(eThresholdMode mode, double value);
    std::pair<eThresholdMode, double> getSegmentationParameters() const;
    /// Defaults: 5000000 time units, 75 samples, quantiles 0.15 and 0.95.
    void setSamplingParameters(unsigned long long timeSpan, unsigned int sampleCount,
                               float lowerQuantile, float upperQuantile);
    SamplingParameters getSamplingParameters() const;

    /// Makes the random sampling reproducible (normally seeded from the random device).
    void seedRandomEngine(unsigned int seed) const { m_randomEngine.seed(seed); }

    /// Each opens (truncating) a dump file, replacing the one open before; false, with the
    /// dump off, when the file cannot be opened.
    bool dumpBinaryFrameData(QString const& path);
    bool dumpBinaryBurstData(QString const& path);
    bool dumpTextBurstData(QString const& path);
    bool dumpTextFtwSampleData(QString const& path);
    bool dumpTextGridEstimation(QString const& path);

    /// Frames of a binary frame dump; stops at the first damaged entry, empty when the file
    /// cannot be opened.
    static std::vector<QByteArray> parseBinaryFrameDataFile(QString const& path);
    /// (radio ID, bursts) entries of a binary burst dump; stops at the first damaged entry,
    /// empty when the file cannot be opened.
    static std::vector<std::pair<unsigned int, std::vector<BurstData>>>
    parseBinaryBurstData(QString const& path);

private:
    enum DumpSlot
    {
        BinaryFrameDump,
        BinaryBurstDump,
        TextBurstDump,
        ReservedDump, ///< kept free for a further dump
        TextFtwSampleDump,
        TextGridEstimationDump,
        DumpSlotCount
    };

    bool openDump(DumpSlot slot, QString const& path);
    void writeBurstDumps(unsigned int radioID) const;
    void writeSampleDump(unsigned int radioID,
                         std::vector<FrequencyTimeWindow> const& windows) const;
    std::vector<FrequencyTimeWindow> drawSample(RadioBurstData const& data) const;

    unsigned short m_maxSegmentsPerRadioID = 16;
    eThresholdMode m_binningToleranceMode = eRelative;
    double m_binningToleranceValue = 0.3;
    double m_firstEstimationParameter = -1.0;
    double m_secondEstimationParameter = 12.0;
    eThresholdMode m_segmentationThresholdMode = eRelative;
    double m_segmentationThresholdValue = 12.0;
    unsigned long long m_samplingTimeSpan = 5000000;
    unsigned int m_sampleCount = 75;
    float m_lowerLevelQuantile = 0.15f;
    float m_upperLevelQuantile = 0.95f;
    std::vector<BurstData> m_frameBursts;
    std::vector<quint64> m_sortKeys; ///< (offset, record) of the frame being filed
    std::vector<quint64> m_sortScratch;
    std::vector<quint32> m_digitCounts; ///< the sort's count tables
    DataMap m_dataMap;
    unsigned long long m_lastFrameStopTime = 0;
    mutable std::mt19937_64 m_randomEngine;
    std::array<std::unique_ptr<QFile>, DumpSlotCount> m_dumps;
};

} // namespace zelkodatastreamconverter::BurstEmissionList
