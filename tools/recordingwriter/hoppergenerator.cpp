#include "hoppergenerator.h"

#include "payloadbuilder.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zelkorecording {

namespace {
constexpr quint32 FieldWords = 9; // words 6 to 14
} // namespace

QByteArray BurstListFrame::payload() const
{
    PayloadBuilder builder;
    quint32 const count =
        recordCountOverride >= 0 ? quint32(recordCountOverride) : quint32(records.size());
    builder.uint64(centreFrequency)
        .word(bandwidth)
        .uint64(startTime)
        .word(duration)
        .word(radioID)
        .word(count)
        .word(strideWords);
    QByteArray data = builder.data();
    // Records start at 4 × extension bytes into the payload: zero padding up to there, or,
    // with a short extension, inside the fixed fields.
    int const extensionBytes = int(4 * headerExtensionWords);
    if (extensionBytes >= data.size()) {
        data.append(QByteArray(extensionBytes - data.size(), '\0'));
    } else {
        data.truncate(extensionBytes);
    }
    PayloadBuilder recordBuilder;
    quint32 index = 0;
    for (BurstRecord const& record : records) {
        recordBuilder.word(index++)
            .word(record.timeOffset)
            .word(record.length)
            .int32(record.frequencyOffset)
            .word(record.bandwidth)
            .float32(record.level_dBm);
        for (quint32 extra = 6; extra < strideWords; ++extra) {
            recordBuilder.word(0);
        }
    }
    QByteArray recordBytes = recordBuilder.data();
    if (headerExtensionWords < FieldWords) {
        // Overlapping layout: the field words win where they share bytes with records.
        QByteArray const fields = builder.data();
        QByteArray combined = data + recordBytes;
        if (combined.size() < fields.size()) {
            combined.resize(fields.size());
        }
        std::copy(fields.begin(), fields.end(), combined.begin());
        return combined;
    }
    return data + recordBytes;
}

QByteArray BurstListFrame::frameBytes(ByteOrder order) const
{
    HeaderExtras extras;
    extras.word4 = headerExtensionWords;
    return RecordingWriter::frameBytes(zelkodatastreamconverter::FrameType::BurstList, payload(),
                                       order, extras);
}

std::vector<double> HopperRadio::usedChannelFrequencies() const
{
    std::vector<double> frequencies;
    for (HopperGridSegment const& segment : segments) {
        for (unsigned int k = 0; k < segment.channelCount; ++k) {
            if (segment.isUsed(k)) {
                frequencies.push_back(segment.channelFrequency(k));
            }
        }
    }
    return frequencies;
}

HopperGenerator::HopperGenerator(HopperScenario scenario)
    : m_scenario(std::move(scenario)), m_engine(m_scenario.seed),
      m_nextStartTime(m_scenario.startTime)
{
}

std::vector<bool> HopperGenerator::randomChannelUse(unsigned int channelCount, double occupancy,
                                                    quint32 seed)
{
    std::vector<unsigned int> order(channelCount);
    std::iota(order.begin(), order.end(), 0u);
    std::mt19937 engine(seed);
    std::shuffle(order.begin(), order.end(), engine);
    auto used = std::size_t(std::lround(occupancy * double(channelCount)));
    used = std::clamp<std::size_t>(used, channelCount > 0 ? 1 : 0, channelCount);
    std::vector<bool> flags(channelCount, false);
    for (std::size_t k = 0; k < used; ++k) {
        flags[order[k]] = true;
    }
    return flags;
}

BurstListFrame HopperGenerator::nextFrame()
{
    BurstListFrame frame;
    if (!m_scenario.radios.empty()) {
        frame = frameFor(m_scenario.radios[std::size_t(m_framesMade) % m_scenario.radios.size()]);
    }
    ++m_framesMade;
    m_nextStartTime += 1000ull * m_scenario.frameDuration;
    if (m_framesMade == m_scenario.timeRunsBackwardsAfterFrame) {
        m_nextStartTime = m_scenario.startTime;
    }
    return frame;
}

BurstListFrame HopperGenerator::frameFor(HopperRadio const& radio)
{
    BurstListFrame frame;
    frame.radioID = radio.radioID;
    frame.startTime = m_nextStartTime;
    frame.duration = m_scenario.frameDuration;
    frame.strideWords = m_scenario.strideWords;
    frame.headerExtensionWords = m_scenario.headerExtensionWords;

    std::vector<double> const channels = radio.usedChannelFrequencies();
    if (channels.empty()) {
        return frame;
    }
    auto const range = std::minmax_element(channels.begin(), channels.end());
    double const margin = radio.bandwidthHz + radio.bandwidthSpreadHz + 4.0 * radio.jitterHz;
    frame.centreFrequency = quint64(std::llround((*range.first + *range.second) / 2.0));
    frame.bandwidth = quint32(std::ceil(*range.second - *range.first + 2.0 * margin));

    std::uniform_int_distribution<std::size_t> channelOf(0, channels.size() - 1);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::normal_distribution<double> normal(0.0, 1.0);
    quint32 const lengthMax = std::max(radio.burstLengthMin, radio.burstLengthMax);
    std::uniform_int_distribution<quint32> lengthOf(radio.burstLengthMin, lengthMax);
    std::uniform_real_distribution<float> levelOf(radio.levelMin_dBm,
                                                  std::max(radio.levelMin_dBm, radio.levelMax_dBm));
    quint64 const span = 1000ull * m_scenario.frameDuration;

    frame.records.resize(m_scenario.burstsPerFrame);
    for (BurstRecord& record : frame.records) {
        double const jitter = radio.jitterShape == JitterShape::Gaussian
                                  ? normal(m_engine) * radio.jitterHz
                                  : unit(m_engine) * radio.jitterHz;
        double const frequency = channels[channelOf(m_engine)] + jitter;
        record.frequencyOffset = qint32(std::llround(frequency - double(frame.centreFrequency)));
        record.bandwidth = quint32(std::max(
            0.0, std::round(radio.bandwidthHz + unit(m_engine) * radio.bandwidthSpreadHz)));
        record.length = lengthOf(m_engine);
        quint64 const latest = span > record.length ? span - record.length : 0;
        record.timeOffset = quint32(std::uniform_int_distribution<quint64>(0, latest)(m_engine));
        record.level_dBm = levelOf(m_engine);
    }
    // The receiver reports bursts in time order.
    std::sort(
        frame.records.begin(), frame.records.end(),
        [](BurstRecord const& a, BurstRecord const& b) { return a.timeOffset < b.timeOffset; });
    return frame;
}

bool HopperGenerator::writeFrames(RecordingWriter& writer, int count, ByteOrder order)
{
    for (int i = 0; i < count; ++i) {
        if (!writer.writeBytes(nextFrame().frameBytes(order))) {
            return false;
        }
    }
    return true;
}

} // namespace zelkorecording
