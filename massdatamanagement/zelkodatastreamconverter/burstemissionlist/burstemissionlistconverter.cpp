#include "burstemissionlistconverter.h"

#include "hopperfrequencyalgorithm.h"

#include <QDataStream>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <massdatamanagement/zelkodatastreamconverter/moduletrace.h>

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {

ModuleTrace const& moduleTrace()
{
    static ModuleTrace const trace(QStringLiteral("burstemissionlistconverter"));
    return trace;
}

template <typename T>
T readAt(char const* data, std::size_t offset)
{
    T value;
    std::memcpy(&value, data + offset, sizeof value);
    return value;
}

// Byte offsets of the burst-list fields; the header words are in frameformat.h.
constexpr std::size_t ExtensionOffset = 16;
constexpr std::size_t CentreOffset = 24;
constexpr std::size_t BandwidthOffset = 32;
constexpr std::size_t StartTimeOffset = 36;
constexpr std::size_t DurationOffset = 44;
constexpr std::size_t RadioIDOffset = 48;
constexpr std::size_t CountOffset = 52;
constexpr std::size_t StrideOffset = 56;
constexpr std::size_t FixedFieldsEnd = 60;

struct FrameFields
{
    unsigned long long centre = 0;
    unsigned int bandwidth = 0;
    unsigned long long startTime = 0;
    unsigned long long stopTime = 0;
    unsigned int radioID = 0;
    unsigned int count = 0;
    std::size_t strideBytes = 0;
    std::size_t firstRecord = 0;
};

// Checks everything a frame must satisfy before a single record is read: the caller then
// never reads outside the frame.
bool readFrameFields(QByteArray const& frame, FrameFields& fields)
{
    std::size_t const size = std::size_t(frame.size());
    char const* data = frame.constData();
    if (size < FrameTypeOffset + 4 || readAt<quint32>(data, FrameMagicOffset) != FRAME_MAGIC ||
        readAt<quint32>(data, FrameTypeOffset) != FrameType::BurstList || size < FixedFieldsEnd) {
        return false;
    }
    fields.count = readAt<quint32>(data, CountOffset);
    quint32 const strideWords = readAt<quint32>(data, StrideOffset);
    unsigned long long const firstRecord =
        FrameHeaderSize + 4ull * readAt<quint32>(data, ExtensionOffset);
    if (fields.count == 0 || strideWords < BurstEmissionListConverter::MinimumRecordStrideWords ||
        firstRecord > size) {
        return false;
    }
    fields.strideBytes = 4 * std::size_t(strideWords);
    if (fields.count > (size - firstRecord) / fields.strideBytes) {
        return false;
    }
    fields.firstRecord = std::size_t(firstRecord);
    fields.centre = readAt<quint64>(data, CentreOffset);
    fields.bandwidth = readAt<quint32>(data, BandwidthOffset);
    fields.startTime = readAt<quint64>(data, StartTimeOffset);
    fields.stopTime = fields.startTime + 1000ull * readAt<quint32>(data, DurationOffset);
    fields.radioID = readAt<quint32>(data, RadioIDOffset);
    return true;
}

// Level order for the sampling; NaN levels (damaged records) sort first instead of breaking
// the sort's ordering.
bool levelLess(std::pair<float, std::size_t> const& a, std::pair<float, std::size_t> const& b)
{
    bool const aNaN = std::isnan(a.first);
    bool const bNaN = std::isnan(b.first);
    if (aNaN != bNaN) {
        return aNaN;
    }
    if (!aNaN && a.first != b.first) {
        return a.first < b.first;
    }
    return a.second < b.second;
}

unsigned int quantileIndex(std::size_t count, float quantile)
{
    float const index = float(count) * quantile;
    if (!(index > 0.0f)) {
        return 0;
    }
    return index >= float(count) ? unsigned(count) : static_cast<unsigned int>(index);
}

// The keys' upper 32 bits are sorted in as few passes as their span allows, with digits of at
// most 12 bits, so that a pass's count table (4096 counts) stays in the first-level cache.
struct DigitPlan
{
    quint32 span; ///< the largest key
    int passes;
    int bits;

    explicit DigitPlan(quint32 largest) : span(largest)
    {
        int const width = span == 0 ? 1 : 32 - __builtin_clz(span);
        passes = (width + 11) / 12;
        bits = (width + passes - 1) / passes;
    }
    std::size_t tableSize() const { return std::size_t(1) << bits; }
    /// The digits that occur in a pass: all of the table, but fewer in the top digit.
    std::size_t usedSize(int pass) const
    {
        return std::min(tableSize(), std::size_t(span >> (pass * bits)) + 1);
    }
    quint32 digit(quint64 key, int pass) const
    {
        return quint32(key >> (32 + pass * bits)) & quint32(tableSize() - 1);
    }
};

// Sorts keys by their upper 32 bits, stably, from the digit counts (one table of
// plan.tableSize() per pass): least significant digit first, skipping a digit in which all
// keys agree.
void radixSortByHighWord(std::vector<quint64>& keys, std::vector<quint64>& scratch, quint32* counts,
                         DigitPlan const& plan)
{
    std::size_t const n = keys.size();
    if (n < 2) {
        return;
    }
    scratch.resize(n);
    for (int pass = 0; pass < plan.passes; ++pass) {
        quint32* const count = counts + std::size_t(pass) * plan.tableSize();
        if (count[plan.digit(keys.front(), pass)] == n) {
            continue;
        }
        quint32 position = 0;
        for (std::size_t bucket = 0; bucket < plan.usedSize(pass); ++bucket) {
            quint32 const size = count[bucket];
            count[bucket] = position;
            position += size;
        }
        quint64* const out = scratch.data();
        for (quint64 key : keys) {
            out[count[plan.digit(key, pass)]++] = key;
        }
        keys.swap(scratch);
    }
}

// Turns the (offset, record index) keys into (offset above the lowest, record index) keys and
// counts their digits; Passes is the plan's, fixed so that the counting unrolls.
template <int Passes>
void makeKeys(qint32 lowest, DigitPlan const& plan, std::vector<quint64>& keys, quint32* counts)
{
    std::size_t const table = plan.tableSize();
    quint32 const mask = quint32(table - 1);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        quint32 const above = quint32(qint64(qint32(keys[i] >> 32)) - lowest);
        keys[i] = (quint64(above) << 32) | i;
        for (int pass = 0; pass < Passes; ++pass) {
            ++counts[std::size_t(pass) * table + ((above >> (pass * plan.bits)) & mask)];
        }
    }
}

void writeText(QFile* file, QString const& text)
{
    file->write(text.toUtf8());
    file->flush();
}

// One block of a text dump: "<radio>;<count>", one line per record, then an empty line.
template <typename Records>
QString dumpBlock(unsigned int radioID, Records const& records)
{
    QString text = QStringLiteral("%1;%2\n").arg(radioID).arg(records.size());
    for (auto const& record : records) {
        text += record.toString();
        text += QLatin1Char('\n');
    }
    text += QStringLiteral("\n\n");
    return text;
}

} // namespace

std::size_t BurstEmissionListConverter::RadioIDHash::operator()(unsigned int radioID) const noexcept
{
    unsigned char bytes[sizeof radioID];
    std::memcpy(bytes, &radioID, sizeof radioID);
    unsigned long long hash = 14695981039346656037ull;
    for (unsigned char byte : bytes) {
        hash ^= byte;
        hash *= 1099511628211ull;
    }
    return std::size_t(hash);
}

BurstEmissionListConverter::BurstEmissionListConverter()
{
    std::random_device device;
    m_randomEngine.seed(device());
    m_frameBursts.reserve(2048);
    m_sortKeys.reserve(2048);
    m_sortScratch.reserve(2048);
    m_digitCounts.resize(3 << 12); // the most a digit plan uses
    m_dataMap.reserve(16);
}

BurstEmissionListConverter::~BurstEmissionListConverter() = default;

void BurstEmissionListConverter::setBinningTolerance(eThresholdMode mode, double value)
{
    m_binningToleranceMode = mode;
    m_binningToleranceValue = value;
}

void BurstEmissionListConverter::setEstimationParameters(double resolution, double factor)
{
    m_firstEstimationParameter = resolution;
    m_secondEstimationParameter = factor;
}

std::pair<double, double> BurstEmissionListConverter::getEstimationParameters() const
{
    return {m_firstEstimationParameter, m_secondEstimationParameter};
}

void BurstEmissionListConverter::setSegmentationParameters(eThresholdMode mode, double value)
{
    m_segmentationThresholdMode = mode;
    m_segmentationThresholdValue = value;
}

std::pair<eThresholdMode, double> BurstEmissionListConverter::getSegmentationParameters() const
{
    return {m_segmentationThresholdMode, m_segmentationThresholdValue};
}

void BurstEmissionListConverter::setSamplingParameters(unsigned long long timeSpan,
                                                       unsigned int sampleCount,
                                                       float lowerQuantile, float upperQuantile)
{
    m_samplingTimeSpan = timeSpan;
    m_sampleCount = sampleCount;
    m_lowerLevelQuantile = lowerQuantile;
    m_upperLevelQuantile = upperQuantile;
}

BurstEmissionListConverter::SamplingParameters
BurstEmissionListConverter::getSamplingParameters() const
{
    return SamplingParameters(m_samplingTimeSpan, m_sampleCount, m_lowerLevelQuantile,
                              m_upperLevelQuantile);
}

std::tuple<bool, unsigned int, FrequencyTimeWindow>
BurstEmissionListConverter::processFrame(QByteArray const& frame)
{
    std::tuple<bool, unsigned int, FrequencyTimeWindow> const ignored(false, 0u,
                                                                      FrequencyTimeWindow());
    try {
        if (QFile* dump = m_dumps[BinaryFrameDump].get()) {
            QDataStream stream(dump);
            stream << frame;
            dump->flush();
        }
        FrameFields fields;
        if (!readFrameFields(frame, fields)) {
            return ignored;
        }
        double const centre = double(fields.centre);
        double const half = std::ceil(double(fields.bandwidth) * 0.5);
        FrequencyTimeWindow const window(centre - half, centre + half, fields.startTime,
                                         fields.stopTime);

        // The bursts are filed in ascending frequency. A frequency is the centre plus the
        // record's signed offset, so ordering the offsets orders the frequencies: a radix sort
        // of (offset, record index) keys avoids comparing doubles, whose mispredicted branches
        // would cost most of the frame. Equal frequencies keep their record order.
        char const* const records = frame.constData() + fields.firstRecord;
        m_sortKeys.resize(fields.count);
        qint32 lowest = std::numeric_limits<qint32>::max();
        qint32 highest = std::numeric_limits<qint32>::min();
        for (unsigned int i = 0; i < fields.count; ++i) {
            qint32 const offset = readAt<qint32>(records + i * fields.strideBytes, 12);
            m_sortKeys[i] = (quint64(quint32(offset)) << 32) | i;
            lowest = std::min(lowest, offset);
            highest = std::max(highest, offset);
        }
        // Offsets above the lowest: a hopper's band leaves the upper bits equal, so only the
        // lower ones are counted and sorted. The counts are taken while the keys are made.
        DigitPlan const plan(quint32(qint64(highest) - lowest));
        for (int pass = 0; pass < plan.passes; ++pass) {
            std::fill_n(m_digitCounts.begin() + std::ptrdiff_t(pass) * plan.tableSize(),
                        plan.usedSize(pass), 0u);
        }
        switch (plan.passes) {
        case 1:
            makeKeys<1>(lowest, plan, m_sortKeys, m_digitCounts.data());
            break;
        case 2:
            makeKeys<2>(lowest, plan, m_sortKeys, m_digitCounts.data());
            break;
        default:
            makeKeys<3>(lowest, plan, m_sortKeys, m_digitCounts.data());
            break;
        }
        radixSortByHighWord(m_sortKeys, m_sortScratch, m_digitCounts.data(), plan);
        // The records are visited in frequency order, that is at random: each is asked for a
        // few keys ahead so that its cache line is there when it is read.
        quint64 const* const sorted = m_sortKeys.data();
        std::size_t const count = m_sortKeys.size();
        auto const burstAt = [&](std::size_t k) {
            constexpr std::size_t PrefetchDistance = 8;
            if (k + PrefetchDistance < count) {
                __builtin_prefetch(records + std::size_t(quint32(sorted[k + PrefetchDistance])) *
                                                 fields.strideBytes);
            }
            char const* record = records + std::size_t(quint32(sorted[k])) * fields.strideBytes;
            return BurstData(centre + double(readAt<qint32>(record, 12)),
                             double(readAt<quint32>(record, 16)),
                             fields.startTime + readAt<quint32>(record, 4),
                             readAt<quint32>(record, 8), readAt<float>(record, 20));
        };
        // The frame's bursts go through the frame buffer only when a dump shows them; else
        // they are built straight into the radio's queue, which spares copying them there.
        bool const dumpBursts = m_dumps[TextBurstDump] || m_dumps[BinaryBurstDump];
        if (dumpBursts) {
            m_frameBursts.clear();
            m_frameBursts.reserve(count);
            for (std::size_t k = 0; k < count; ++k) {
                m_frameBursts.push_back(burstAt(k));
            }
            writeBurstDumps(fields.radioID);
        }

        // A frame that ends before the previous one belongs to a new recording.
        if (fields.stopTime < m_lastFrameStopTime) {
            m_dataMap.clear();
        }
        m_lastFrameStopTime = fields.stopTime;

        RadioBurstData& radio = m_dataMap[fields.radioID];
        if (radio.segmentCount() >= m_maxSegmentsPerRadioID) {
            radio.removeFirstSegment();
        }
        if (dumpBursts) {
            radio.appendBurstsOfNewSegment(fields.startTime, fields.stopTime, m_frameBursts);
        } else {
            radio.appendNewSegment(fields.startTime, fields.stopTime, count, burstAt);
        }
        return {true, fields.radioID, window};
    } catch (std::exception const& error) {
        moduleTrace().warning(
            QStringLiteral("processFrame: %1").arg(QString::fromLocal8Bit(error.what())), __LINE__);
    } catch (...) {
        moduleTrace().warning(QStringLiteral("processFrame: Unknown exception"), __LINE__);
    }
    return ignored;
}

void BurstEmissionListConverter::writeBurstDumps(unsigned int radioID) const
{
    if (QFile* dump = m_dumps[TextBurstDump].get()) {
        writeText(dump, dumpBlock(radioID, m_frameBursts));
    }
    if (QFile* dump = m_dumps[BinaryBurstDump].get()) {
        QDataStream stream(dump);
        stream << quint32(radioID) << qint64(m_frameBursts.size());
        for (BurstData const& burst : m_frameBursts) {
            stream << burst;
        }
        dump->flush();
    }
}

std::pair<HopperFrequencySet, double>
BurstEmissionListConverter::getFrequencySetForRadioID(unsigned int radioID)
{
    try {
        auto const found = m_dataMap.find(radioID);
        if (found == m_dataMap.end()) {
            return {HopperFrequencySet(), 0.0};
        }
        std::vector<double> frequencies = found->second.sortedFrequencyVector();
        double const meanBandwidth = found->second.meanBandwidth();
        double const binningTolerance = m_binningToleranceMode == eRelative
                                            ? meanBandwidth * m_binningToleranceValue
                                            : m_binningToleranceValue;
        HopperFrequencyAlgorithm::calculateHopperFrequencySet(frequencies, binningTolerance);
        double const segmentationThreshold = m_segmentationThresholdMode == eRelative
                                                 ? meanBandwidth * m_segmentationThresholdValue
                                                 : m_segmentationThresholdValue;
        HopperFrequencySet set = HopperFrequencyAlgorithm::makeUniqueFrequencySetAndGridEstimation(
            frequencies, segmentationThreshold, m_firstEstimationParameter,
            m_secondEstimationParameter);
        if (QFile* dump = m_dumps[TextGridEstimationDump].get()) {
            writeText(dump, QStringLiteral("%1;%2\n\n").arg(radioID).arg(set.toString()));
        }
        return {std::move(set), meanBandwidth};
    } catch (std::exception const& error) {
        moduleTrace().warning(QStringLiteral("getFrequencySetForRadioID: %1")
                                  .arg(QString::fromLocal8Bit(error.what())),
                              __LINE__);
    } catch (...) {
        moduleTrace().warning(QStringLiteral("getFrequencySetForRadioID: Unknown exception"),
                              __LINE__);
    }
    return {HopperFrequencySet(), 0.0};
}

std::vector<FrequencyTimeWindow>
BurstEmissionListConverter::drawRandomSampleFTWsForRadioID(unsigned int radioID) const
{
    std::vector<FrequencyTimeWindow> windows;
    try {
        auto const found = m_dataMap.find(radioID);
        if (found != m_dataMap.end()) {
            windows = drawSample(found->second);
        }
    } catch (std::exception const& error) {
        moduleTrace().warning(QStringLiteral("drawRandomSampleFTWsForRadioID: %1")
                                  .arg(QString::fromLocal8Bit(error.what())),
                              __LINE__);
        windows.clear();
    }
    writeSampleDump(radioID, windows);
    return windows;
}

std::vector<FrequencyTimeWindow>
BurstEmissionListConverter::drawSample(RadioBurstData const& data) const
{
    std::vector<FrequencyTimeWindow> windows;
    unsigned long long const last =
        data.segmentStopTimes.empty() ? ~0ull : data.segmentStopTimes.back();
    unsigned long long const t0 = last < m_samplingTimeSpan ? 0 : last - m_samplingTimeSpan;
    auto const segment =
        std::upper_bound(data.segmentStopTimes.begin(), data.segmentStopTimes.end(), t0);
    if (segment == data.segmentStopTimes.end()) {
        return windows;
    }
    std::size_t const firstBurst =
        std::size_t(data.segmentStartIndices[std::size_t(segment - data.segmentStopTimes.begin())]);
    std::vector<std::pair<float, std::size_t>> pairs;
    pairs.reserve(data.bursts.size() - std::min(firstBurst, data.bursts.size()));
    for (std::size_t i = firstBurst; i < data.bursts.size(); ++i) {
        pairs.emplace_back(data.bursts[i].level_dBm, i);
    }
    std::sort(pairs.begin(), pairs.end(), levelLess);

    std::size_t const n = pairs.size();
    std::size_t lo = 0;
    std::size_t hi = n;
    if (n > m_sampleCount) {
        lo = quantileIndex(n, m_lowerLevelQuantile);
        hi = std::max<std::size_t>(lo, quantileIndex(n, m_upperLevelQuantile));
    }
    std::size_t const m = hi - lo;
    auto const output = [&](std::size_t trimmedIndex) {
        windows.push_back(data.bursts[pairs[lo + trimmedIndex].second].toFTW());
    };
    if (m <= m_sampleCount) {
        windows.reserve(m);
        for (std::size_t k = 0; k < m; ++k) {
            output(k);
        }
        return windows;
    }
    std::size_t const c = m_sampleCount;
    if (c == 0) {
        return windows;
    }
    windows.reserve(c);
    long long const step = (long long)std::ceil(double(m) / double(c));
    std::uniform_int_distribution<long long> offsetDistribution(0, step - 1);
    long long index = offsetDistribution(m_randomEngine);
    long long const mm = (long long)m;
    for (; index < mm; index += step) {
        output(std::size_t(index));
    }
    // Top up with the entries halfway between the sampled ones, from the strongest down.
    long long j = index - step / 2;
    if (j >= mm) {
        j -= step;
    }
    while (windows.size() < c && j >= 0 && j < mm) {
        output(std::size_t(j));
        j -= step;
    }
    return windows;
}

void BurstEmissionListConverter::writeSampleDump(
    unsigned int radioID, std::vector<FrequencyTimeWindow> const& windows) const
{
    QFile* dump = m_dumps[TextFtwSampleDump].get();
    if (!dump) {
        return;
    }
    writeText(dump, dumpBlock(radioID, windows));
}

bool BurstEmissionListConverter::dataAvailableForTime(unsigned int radioID,
                                                      unsigned long long time) const
{
    auto const found = m_dataMap.find(radioID);
    if (found == m_dataMap.end() || found->second.segmentStopTimes.empty()) {
        return false;
    }
    return found->second.segmentStopTimes.back() >= time;
}

void BurstEmissionListConverter::eraseDataForRadioID(unsigned int radioID)
{
    m_dataMap.erase(radioID);
}

bool BurstEmissionListConverter::openDump(DumpSlot slot, QString const& path)
{
    auto file = std::make_unique<QFile>(path);
    m_dumps[slot].reset();
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    m_dumps[slot] = std::move(file);
    return true;
}

bool BurstEmissionListConverter::dumpBinaryFrameData(QString const& path)
{
    return openDump(BinaryFrameDump, path);
}

bool BurstEmissionListConverter::dumpBinaryBurstData(QString const& path)
{
    return openDump(BinaryBurstDump, path);
}

bool BurstEmissionListConverter::dumpTextBurstData(QString const& path)
{
    return openDump(TextBurstDump, path);
}

bool BurstEmissionListConverter::dumpTextFtwSampleData(QString const& path)
{
    return openDump(TextFtwSampleDump, path);
}

bool BurstEmissionListConverter::dumpTextGridEstimation(QString const& path)
{
    return openDump(TextGridEstimationDump, path);
}

std::vector<QByteArray> BurstEmissionListConverter::parseBinaryFrameDataFile(QString const& path)
{
    std::vector<QByteArray> frames;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return frames;
    }
    QDataStream stream(&file);
    while (!stream.atEnd()) {
        QByteArray frame;
        stream >> frame;
        if (stream.status() != QDataStream::Ok) {
            break;
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::vector<std::pair<unsigned int, std::vector<BurstData>>>
BurstEmissionListConverter::parseBinaryBurstData(QString const& path)
{
    std::vector<std::pair<unsigned int, std::vector<BurstData>>> entries;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return entries;
    }
    QDataStream stream(&file);
    while (!stream.atEnd()) {
        quint32 radioID = 0;
        qint64 count = 0;
        stream >> radioID >> count;
        if (stream.status() != QDataStream::Ok || count < 0) {
            break;
        }
        std::vector<BurstData> bursts;
        // The count is not trusted for allocation: a damaged one ends in a read error.
        for (qint64 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
            BurstData burst;
            stream >> burst;
            bursts.push_back(burst);
        }
        if (stream.status() != QDataStream::Ok) {
            break;
        }
        entries.emplace_back(radioID, std::move(bursts));
    }
    return entries;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
