// zelko import morse-audio: CW audio into a recording of symbol frames (Morse elements)
// that "zelko convert" reads as text.

#include "command.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>
#include <memory>
#include <recordingwriter/cwkeyingdetector.h>
#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/symbolpayload.h>
#include <sndfile.h>
#include <unistd.h>

namespace zelkotool {

namespace {

using zelkorecording::CwKeying;
using zelkorecording::CwKeyingDetector;

constexpr int elementsPerFrame = 512;
constexpr sf_count_t framesPerRead = 65536;

int usageError(QString const& message)
{
    QTextStream(stderr) << "zelko import morse-audio: " << message << " (see --help)\n";
    return 2;
}

int failure(QString const& message)
{
    QTextStream(stderr) << "zelko import morse-audio: " << message << '\n';
    return 1;
}

struct SndFileCloser
{
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndFile = std::unique_ptr<SNDFILE, SndFileCloser>;

struct MorseAudioOptions
{
    QString audio;
    QString output;
    double toneHz = 0; ///< 0: search
    quint32 channel = 0;
    quint64 frequencyHz = 0;
    QDateTime start;
    zelkorecording::ByteOrder order = zelkorecording::ByteOrder::Host;
    bool progress = false;
};

/// One pass over the audio, mixed down to mono, through `consume`; false on a read error.
template <typename Consume>
bool readAudio(SNDFILE* file, SF_INFO const& info, MorseAudioOptions const& options,
               char const* pass, Consume consume)
{
    if (sf_seek(file, 0, SEEK_SET) < 0) {
        return false;
    }
    int const channels = qMax(1, info.channels);
    QVector<float> interleaved(int(framesPerRead) * channels);
    QVector<float> mono(static_cast<int>(framesPerRead));
    sf_count_t done = 0;
    int shownPercent = -1;
    for (;;) {
        sf_count_t const got = sf_readf_float(file, interleaved.data(), framesPerRead);
        if (got <= 0) {
            break;
        }
        for (sf_count_t i = 0; i < got; ++i) {
            float sum = 0;
            for (int c = 0; c < channels; ++c) {
                sum += interleaved[int(i) * channels + c];
            }
            mono[int(i)] = sum / channels;
        }
        consume(mono.constData(), qint64(got));
        done += got;
        int const percent = info.frames > 0 ? int(done * 100 / info.frames) : 0;
        if (options.progress && percent != shownPercent) {
            shownPercent = percent;
            QTextStream(stderr) << "\r" << pass << ' ' << QFileInfo(options.audio).fileName()
                                << ": " << percent << " %" << Qt::flush;
        }
    }
    if (options.progress) {
        QTextStream(stderr) << '\n';
    }
    return sf_error(file) == SF_ERR_NO_ERROR;
}

bool writeFrames(zelkorecording::RecordingWriter& writer, CwKeying const& keying,
                 MorseAudioOptions const& options, int& frames)
{
    quint64 const startMicroseconds = quint64(options.start.toMSecsSinceEpoch()) * 1000u;
    quint64 offset = 0;
    for (int first = 0; first < keying.elements.size(); first += elementsPerFrame) {
        QVector<zelkorecording::KeyElement> const elements =
            keying.elements.mid(first, elementsPerFrame);
        zelkorecording::SymbolRun const run{startMicroseconds + offset, options.frequencyHz,
                                            options.channel};
        QByteArray const payload = zelkorecording::morseElementPayload(
            run, quint32(qRound(keying.toneHz)), qint32(qRound(keying.levelDbfs * 10)), elements);
        if (!writer.writeFrame(zelkodatastreamconverter::FrameType::Symbols, payload,
                               options.order)) {
            return false;
        }
        ++frames;
        for (zelkorecording::KeyElement const& element : elements) {
            offset += element.microseconds;
        }
    }
    return true;
}

int importMorseAudio(MorseAudioOptions const& options)
{
    SF_INFO info{};
    SndFile file(sf_open(QFile::encodeName(options.audio).constData(), SFM_READ, &info));
    if (!file) {
        return failure(QStringLiteral("%1: cannot read audio: %2")
                           .arg(options.audio, QString::fromLocal8Bit(sf_strerror(nullptr))));
    }
    CwKeyingDetector detector(info.samplerate, info.frames);
    double tone = options.toneHz;
    if (tone == 0) {
        if (!readAudio(file.get(), info, options, "tone search",
                       [&](float const* s, qint64 n) { detector.addToneSearch(s, n); })) {
            return failure(
                QStringLiteral("%1: cannot read audio: %2")
                    .arg(options.audio, QString::fromLocal8Bit(sf_strerror(file.get()))));
        }
        tone = detector.searchedTone();
    }
    if (tone <= 0) {
        return failure(
            QStringLiteral("%1: no tone found between 100 and 4000 Hz").arg(options.audio));
    }
    detector.setTone(tone);
    if (!readAudio(file.get(), info, options, "keying",
                   [&](float const* s, qint64 n) { detector.addSignal(s, n); })) {
        return failure(QStringLiteral("%1: cannot read audio: %2")
                           .arg(options.audio, QString::fromLocal8Bit(sf_strerror(file.get()))));
    }
    CwKeying const keying = detector.finish();

    // Written aside and put in place at the end: a failed import leaves no half recording.
    QSaveFile recording(options.output);
    if (!recording.open(QIODevice::WriteOnly)) {
        return failure(QStringLiteral("cannot write %1: %2")
                           .arg(recording.fileName(), recording.errorString()));
    }
    zelkorecording::RecordingWriter writer(&recording);
    int frames = 0;
    if (!writeFrames(writer, keying, options, frames) || !recording.commit()) {
        return failure(QStringLiteral("cannot write %1: %2")
                           .arg(recording.fileName(), recording.errorString()));
    }
    int const marks = int(std::count_if(keying.elements.cbegin(), keying.elements.cend(),
                                        [](auto const& e) { return e.keyDown; }));
    QTextStream out(stdout);
    out << options.audio << ": " << QString::number(double(info.frames) / info.samplerate, 'f', 1)
        << " s at " << info.samplerate << " Hz, tone " << QString::number(tone, 'f', 0) << " Hz";
    if (marks > 0) {
        out << ", level " << QString::number(keying.levelDbfs, 'f', 1) << " dBFS, about "
            << QString::number(1.2e6 / keying.dotMicroseconds, 'f', 0) << " wpm";
    }
    out << ", " << marks << (marks == 1 ? " mark" : " marks") << '\n'
        << frames << (frames == 1 ? " frame" : " frames") << " in " << recording.fileName() << '\n';
    return 0;
}

} // namespace

int runImportMorseAudio(QStringList const& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Import CW (Morse) audio into a recording of symbol frames.\n\n"
        "The audio (any format libsndfile reads: WAV, FLAC, OGG, AIFF, ...; several channels\n"
        "are mixed) is searched for the strongest tone between 100 and 4000 Hz unless --tone\n"
        "gives it. Its envelope keys down and up with hysteresis above an estimated noise\n"
        "floor; the key-down and key-up durations become symbol frames (type 304) of Morse\n"
        "elements, 512 elements a frame, stamped from --start on. 'zelko convert' reads them\n"
        "as text."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("AUDIO"), QStringLiteral("the audio file"));
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("the recording to write (replaced)"),
         QStringLiteral("RECORDING")},
        {QStringLiteral("tone"),
         QStringLiteral("the CW tone in the audio, in hertz (default: search)"),
         QStringLiteral("HZ")},
        {QStringLiteral("channel"), QStringLiteral("channel of the frames (default 0)"),
         QStringLiteral("N")},
        {QStringLiteral("frequency"),
         QStringLiteral("receive frequency of the frames, in hertz (default 0)"),
         QStringLiteral("HZ")},
        {QStringLiteral("start"),
         QStringLiteral("time of the audio's start, e.g. 2024-05-17T08:30:00Z (default: the "
                        "file's modification time)"),
         QStringLiteral("TIME")},
        {QStringLiteral("swapped"),
         QStringLiteral("write the recording in the other byte order, as big-endian receivers do")},
        {QStringLiteral("quiet"), QStringLiteral("no progress line")},
    });
    if (processCommandLine(parser, QStringLiteral("import morse-audio"), arguments)) {
        return 0;
    }
    QStringList const positional = parser.positionalArguments();
    if (positional.size() != 1) {
        return usageError(QStringLiteral("exactly one AUDIO file"));
    }
    if (!parser.isSet(QStringLiteral("output"))) {
        return usageError(QStringLiteral("-o RECORDING is required"));
    }
    MorseAudioOptions options;
    options.audio = positional.constFirst();
    options.output = parser.value(QStringLiteral("output"));
    bool ok = true;
    if (parser.isSet(QStringLiteral("tone"))) {
        options.toneHz = parser.value(QStringLiteral("tone")).toDouble(&ok);
        if (!ok || options.toneHz < 1 || options.toneHz > 20000) {
            return usageError(QStringLiteral("--tone needs a frequency from 1 to 20000 Hz"));
        }
    }
    options.channel = parser.value(QStringLiteral("channel")).toUInt(&ok);
    if (parser.isSet(QStringLiteral("channel")) && !ok) {
        return usageError(QStringLiteral("--channel needs a number from 0 to 4294967295"));
    }
    options.frequencyHz = parser.value(QStringLiteral("frequency")).toULongLong(&ok);
    if (parser.isSet(QStringLiteral("frequency")) && !ok) {
        return usageError(QStringLiteral("--frequency needs a whole number of hertz"));
    }
    if (parser.isSet(QStringLiteral("start"))) {
        options.start =
            QDateTime::fromString(parser.value(QStringLiteral("start")), Qt::ISODateWithMs);
        if (!options.start.isValid()) {
            return usageError(QStringLiteral("--start needs a time such as 2024-05-17T08:30:00Z"));
        }
    } else {
        options.start = QFileInfo(options.audio).lastModified().toUTC();
    }
    if (parser.isSet(QStringLiteral("swapped"))) {
        options.order = zelkorecording::ByteOrder::Swapped;
    }
    options.progress = !parser.isSet(QStringLiteral("quiet")) && ::isatty(STDERR_FILENO) == 1;
    return importMorseAudio(options);
}

} // namespace zelkotool
