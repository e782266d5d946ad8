#include "audiotransformer.h"

#include "audiosessionfile.h"
#include "broadcastwave.h"
#include "rawpcmparameters.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <diagnostics/errorhandler.h>
#include <memory>
#include <sndfile.h>
#include <vector>

namespace audiofileexport {

namespace {

using Progress = zelkodatastreamconverter::IAudioTransformer::Progress;

// Samples per read and write: large enough that the per-call cost vanishes, small enough to
// stay in the cache.
constexpr sf_count_t ChunkSamples = 1 << 16;

struct SndfileCloser
{
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndfileHandle = std::unique_ptr<SNDFILE, SndfileCloser>;

void warn(QString const& message, int line)
{
    if (ErrorHandler::Instance().traceLevelMask() & 0x20u) {
        _Q_Trace(message, QStringLiteral("plugins/audiofileexport/audiotransformer"),
                 static_cast<unsigned short>(line));
    }
}

SndfileHandle openFile(QString const& path, int mode, SF_INFO& info)
{
    return SndfileHandle(sf_open(QFile::encodeName(path).constData(), mode, &info));
}

SndfileHandle openRaw(QString const& path, RawPcmParameters const& parameters, SF_INFO& info)
{
    info = SF_INFO();
    info.samplerate = parameters.sampleRate;
    info.channels = parameters.channels;
    info.format = SF_FORMAT_RAW | SF_FORMAT_PCM_16 |
                  (parameters.bigEndian ? SF_ENDIAN_BIG : SF_ENDIAN_LITTLE);
    return openFile(path, SFM_READ, info);
}

// The input as libsndfile or the raw-PCM rules read it; null with the message to trace.
SndfileHandle openInput(QString const& path, SF_INFO& info, QString& message)
{
    QFile sidecar(RawPcmParameters::sidecarPath(path));
    if (sidecar.exists()) {
        RawPcmParameters parameters;
        QString error;
        if (!sidecar.open(QIODevice::ReadOnly)) {
            error = sidecar.errorString();
        } else if (parameters.parse(sidecar.read(RawPcmParameters::MaximumSidecarBytes + 1),
                                    error)) {
            return openRaw(path, parameters, info);
        }
        message = QStringLiteral("ConvertToWav(%1): invalid sidecar %2: %3")
                      .arg(path, sidecar.fileName(), error);
        return nullptr;
    }
    info = SF_INFO();
    SndfileHandle recognised = openFile(path, SFM_READ, info);
    if (!recognised && QFileInfo(path).isFile()) {
        recognised = openRaw(path, RawPcmParameters(), info);
    }
    if (!recognised) {
        message = QStringLiteral("ConvertToWav(%1): cannot read it: %2")
                      .arg(path, QString::fromUtf8(sf_strerror(nullptr)));
    }
    return recognised;
}

enum class SampleType
{
    Short,
    Int,
    Float,
    Double
};

struct OutputFormat
{
    int subtype;
    SampleType sampleType;
    int bytesPerSample; ///< as the WAV stores it
};

// Keeps the input's sample format where WAV has it, so a copy loses nothing.
OutputFormat outputFormatFor(int inputFormat)
{
    switch (inputFormat & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return {SF_FORMAT_PCM_U8, SampleType::Short, 1};
    case SF_FORMAT_PCM_16:
        return {SF_FORMAT_PCM_16, SampleType::Short, 2};
    case SF_FORMAT_PCM_24:
        return {SF_FORMAT_PCM_24, SampleType::Int, 3};
    case SF_FORMAT_PCM_32:
        return {SF_FORMAT_PCM_32, SampleType::Int, 4};
    case SF_FORMAT_FLOAT:
        return {SF_FORMAT_FLOAT, SampleType::Float, 4};
    case SF_FORMAT_DOUBLE:
        return {SF_FORMAT_DOUBLE, SampleType::Double, 8};
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
        return {inputFormat & SF_FORMAT_SUBMASK, SampleType::Short, 1};
    default: // compressed formats: decoded as float, stored as 16-bit PCM
        return {SF_FORMAT_PCM_16, SampleType::Float, 2};
    }
}

template <typename Sample>
using FrameIo = sf_count_t (*)(SNDFILE*, Sample*, sf_count_t);

// Copies every frame that can be read; false when the output refuses a write. The sample type
// is the one libsndfile converts to and from without loss for the output format.
template <typename Sample>
bool copyFrames(SNDFILE* input, SNDFILE* output, SF_INFO const& info, Progress const& progress,
                FrameIo<Sample> const read, FrameIo<Sample const> const write)
{
    sf_count_t const framesPerChunk = std::max<sf_count_t>(1, ChunkSamples / info.channels);
    std::vector<Sample> buffer(size_t(framesPerChunk * info.channels));
    qint64 const total = info.frames;
    qint64 done = 0;
    for (;;) {
        sf_count_t const frames = read(input, buffer.data(), framesPerChunk);
        if (frames <= 0) {
            return true;
        }
        if (write(output, buffer.data(), frames) != frames) {
            return false;
        }
        done += frames;
        if (progress) {
            progress(done, total);
        }
    }
}

// Whether the input's sample bytes are already the output's: a little-endian container with
// the very sample format the WAV gets. Then the samples are copied as bytes, unconverted.
bool samplesStoredAlike(int inputFormat, OutputFormat const& output)
{
    int const container = inputFormat & SF_FORMAT_TYPEMASK;
    bool const littleEndianContainer =
        container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX || container == SF_FORMAT_W64 ||
        container == SF_FORMAT_RF64 ||
        (container == SF_FORMAT_RAW && (inputFormat & SF_FORMAT_ENDMASK) == SF_ENDIAN_LITTLE);
    return littleEndianContainer && (inputFormat & SF_FORMAT_SUBMASK) == output.subtype;
}

bool copyBytes(SNDFILE* input, SNDFILE* output, SF_INFO const& info, OutputFormat const& format,
               Progress const& progress)
{
    sf_count_t const frameBytes = sf_count_t(info.channels) * format.bytesPerSample;
    sf_count_t const framesPerChunk = std::max<sf_count_t>(1, 4 * ChunkSamples / info.channels);
    std::vector<char> buffer(size_t(framesPerChunk * frameBytes));
    qint64 const total = info.frames;
    qint64 done = 0;
    for (;;) {
        // A cut-off last frame is dropped, as the sample-wise reads drop it.
        sf_count_t const bytes = sf_read_raw(input, buffer.data(), sf_count_t(buffer.size()));
        sf_count_t const whole = bytes - bytes % frameBytes;
        if (whole <= 0) {
            return true;
        }
        if (sf_write_raw(output, buffer.data(), whole) != whole) {
            return false;
        }
        done += whole / frameBytes;
        if (progress) {
            progress(done, total);
        }
    }
}

bool copyAll(SampleType type, SNDFILE* input, SNDFILE* output, SF_INFO const& info,
             Progress const& progress)
{
    switch (type) {
    case SampleType::Short:
        return copyFrames<short>(input, output, info, progress, sf_readf_short, sf_writef_short);
    case SampleType::Int:
        return copyFrames<int>(input, output, info, progress, sf_readf_int, sf_writef_int);
    case SampleType::Float:
        return copyFrames<float>(input, output, info, progress, sf_readf_float, sf_writef_float);
    case SampleType::Double:
    default:
        return copyFrames<double>(input, output, info, progress, sf_readf_double, sf_writef_double);
    }
}

} // namespace

bool AudioTransformer::ConvertToWav(QString const& inputPath, QString const& wavPath,
                                    QDateTime const& startTime)
{
    SF_INFO inputInfo;
    QString message;
    SndfileHandle const input = openInput(inputPath, inputInfo, message);
    if (!input) {
        warn(message, __LINE__);
        return false;
    }
    OutputFormat const format = outputFormatFor(inputInfo.format);
    SF_INFO outputInfo = SF_INFO();
    outputInfo.samplerate = inputInfo.samplerate;
    outputInfo.channels = inputInfo.channels;
    outputInfo.format = SF_FORMAT_WAV | format.subtype;

    QString const partPath = wavPath + QStringLiteral(".part");
    auto fail = [&](QString const& reason) {
        warn(
            QStringLiteral("ConvertToWav(%1): cannot write %2: %3").arg(inputPath, wavPath, reason),
            __LINE__);
        QFile::remove(partPath);
        return false;
    };
    SndfileHandle output = openFile(partPath, SFM_WRITE, outputInfo);
    if (!output) {
        return fail(QString::fromUtf8(sf_strerror(nullptr)));
    }
    // Float input stored as integers saturates instead of wrapping.
    sf_command(output.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    SF_BROADCAST_INFO info = BroadcastWave::makeInfo(
        startTime, inputInfo.samplerate,
        QStringLiteral("Converted from %1").arg(QFileInfo(inputPath).fileName()));
    if (sf_command(output.get(), SFC_SET_BROADCAST_INFO, &info, sizeof info) != SF_TRUE) {
        return fail(QStringLiteral("no room for the broadcast chunk"));
    }
    bool const copied =
        samplesStoredAlike(inputInfo.format, format)
            ? copyBytes(input.get(), output.get(), inputInfo, format, m_progress)
            : copyAll(format.sampleType, input.get(), output.get(), inputInfo, m_progress);
    if (!copied) {
        return fail(QString::fromUtf8(sf_strerror(output.get())));
    }
    int const closed = sf_close(output.release());
    if (closed != SF_ERR_NO_ERROR) {
        return fail(QString::fromUtf8(sf_error_number(closed)));
    }
    QFile::remove(wavPath);
    if (!QFile::rename(partPath, wavPath)) {
        return fail(QStringLiteral("cannot rename %1").arg(partPath));
    }
    return true;
}

bool AudioTransformer::WriteSession(QStringList const& wavPaths, QString& sessionPath)
{
    if (wavPaths.isEmpty()) {
        return false;
    }
    AudioSessionFile session;
    for (QString const& wavPath : wavPaths) {
        SF_INFO info = SF_INFO();
        SndfileHandle const wav = openFile(wavPath, SFM_READ, info);
        if (!wav) {
            warn(QStringLiteral("WriteSession(%1): cannot read it: %2")
                     .arg(wavPath, QString::fromUtf8(sf_strerror(nullptr))),
                 __LINE__);
            return false;
        }
        SF_BROADCAST_INFO broadcast;
        bool const hasBroadcast =
            sf_command(wav.get(), SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast) == SF_TRUE;
        session.append(
            {QFileInfo(wavPath).absoluteFilePath(),
             hasBroadcast ? BroadcastWave::startTime(broadcast, info.samplerate) : QDateTime(),
             info.samplerate, info.channels, qint64(info.frames)});
    }
    QString const path = AudioSessionFile::pathFor(wavPaths.first());
    QString error;
    if (!session.save(path, error)) {
        warn(QStringLiteral("WriteSession: cannot write %1: %2").arg(path, error), __LINE__);
        return false;
    }
    sessionPath = path;
    return true;
}

} // namespace audiofileexport
