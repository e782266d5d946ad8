#include "conversionjob.h"

#include "audiodetection.h"
#include "datadirectory.h"
#include "decoderchoice.h"
#include "frametypenames.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <alphabetkit/alphabetcatalog.h>
#include <appstartup/cfgcenter.h>
#include <atomic>
#include <cstring>
#include <diagnostics/errorhandler.h>
#include <functional>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/aisstationconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/audiodataconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <massdatamanagement/zelkodatastreamconverter/imagedataconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/symboldataconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
#include <memory>
#include <mutex>
#include <pdu/pdutypes.h>
#include <reportkit/xmltime.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace zelkotool {

using zelkodatastreamconverter::IDataStreamConverter;

bool isStderrTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

namespace {

using ConverterFactory = std::function<std::unique_ptr<IDataStreamConverter>(
    std::function<void(qint64, qint64)> progress)>;

template <typename Converter>
ConverterFactory factory()
{
    return [](std::function<void(qint64, qint64)> progress) {
        auto converter = std::make_unique<Converter>();
        converter->setProgressCallback(std::move(progress));
        return std::unique_ptr<IDataStreamConverter>(std::move(converter));
    };
}

// The converter of each kind of recording; kinds without an entry are not converted yet.
std::map<QString, ConverterFactory> const& converterFactories()
{
    using namespace zelkodatastreamconverter;
    static std::map<QString, ConverterFactory> const factories = {
        {QStringLiteral("text"), factory<DecodedTextConverter>()},
        {QStringLiteral("ts"), factory<TransmissionSystemConverter>()},
        {QStringLiteral("ais"), factory<AISStationConverter>()},
        {QStringLiteral("audio"), factory<AudioDataConverter>()},
        {QStringLiteral("image"), factory<ImageDataConverter>()},
        {QStringLiteral("symbol"), factory<SymbolDataConverter>()},
    };
    return factories;
}

// A PDU frame (code 16) whose record the AIS decoder reads: station files are wanted.
bool isAisFrame(QByteArray const& frame)
{
    using Model = zelkodatastreamconverter::TransmissionSystemModel;
    if (frame.size() < Model::RecordOffset + 4) {
        return false;
    }
    quint32 code = 0;
    quint32 system = 0;
    std::memcpy(&code, frame.constData() + Model::CodeOffset, 4);
    std::memcpy(&system, frame.constData() + Model::RecordOffset, 4);
    return (code & 0xFFu) == Model::PduCode && system == COMMSYS_AIS;
}

// The kind from the first complete frame; empty (and error set) when there is none.
QString detectKind(QString const& path, QString& error)
{
    ErrorHandler& diagnostics = ErrorHandler::Instance();
    unsigned const mask = diagnostics.traceLevelMask();
    diagnostics.setTraceLevelMask(0); // the probe's own end-of-file is no news
    zelkodatastreamconverter::FileReader reader(path);
    QByteArray type;
    QByteArray frame;
    while (reader.isWorking()) {
        if (reader.readFrame()) {
            reader.takeFrameData(type, frame);
            break;
        }
    }
    diagnostics.setTraceLevelMask(mask);
    if (type.isEmpty()) {
        error = QStringLiteral("no frame found");
        return QString();
    }
    QString const kind = frameTypeKind(type.toUInt(nullptr, 16));
    if (kind == QLatin1String("ts") && isAisFrame(frame)) {
        return QStringLiteral("ais");
    }
    if (kind.isEmpty()) {
        error = QStringLiteral("unknown frame type %1").arg(type.toUInt(nullptr, 16));
    } else if (kind == QLatin1String("bursts")) {
        error = QStringLiteral("a burst list: use 'zelko bursts'");
        return QString();
    }
    return kind;
}

// Where the alphabets come from: --alphabets, else the configured directory, else the
// alphabets shipped with the tool. The converters read the configuration, so a directory
// chosen here is handed to them through a configuration file of this run.
class AlphabetsConfiguration
{
public:
    explicit AlphabetsConfiguration(QString const& requested)
    {
        QString directory = requested;
        if (directory.isEmpty()) {
            std::unique_ptr<Cfg> const configured =
                CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), 4);
            QString const value =
                configured ? configured->GetValue(QStringLiteral("MorseAlphabets"), QString())
                           : QString();
            if (QDir::isAbsolutePath(value)) {
                return;
            }
            // A relative configured directory counts from the user's directory, not from the
            // data directory the conversions run in.
            directory = value.isEmpty() ? shippedAlphabets() : value;
        }
        if (directory.isEmpty() || !m_directory.isValid()) {
            return;
        }
        QString const path = m_directory.filePath(QStringLiteral("zelko.ini"));
        QFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            QTextStream(&file) << "[JobManagement]\nMorseAlphabets="
                               << QDir(directory).absolutePath() << '\n';
            file.close();
            qputenv("ZELKO_CONFIG", QFile::encodeName(path));
        }
    }

private:
    static QString shippedAlphabets()
    {
        QString const applicationDirectory = QCoreApplication::applicationDirPath();
        for (QString const& candidate :
             {applicationDirectory + QStringLiteral("/../share/zelko/alphabets"),
              QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets")}) {
            if (QFileInfo(candidate).isDir()) {
                return candidate;
            }
        }
        return QString();
    }

    QTemporaryDir m_directory;
};

// The alphabets the converters will read: the configured directory, as they read it. The
// converters report unreadable alphabet files themselves, so this look stays quiet.
AlphabetKit::AlphabetCatalog configuredAlphabets()
{
    std::unique_ptr<Cfg> const configured =
        CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), 4);
    QString const directory =
        configured ? configured->GetValue(QStringLiteral("MorseAlphabets"), QStringLiteral("."))
                   : QStringLiteral(".");
    ErrorHandler& diagnostics = ErrorHandler::Instance();
    unsigned const mask = diagnostics.traceLevelMask();
    diagnostics.setTraceLevelMask(0);
    AlphabetKit::AlphabetCatalog catalog;
    catalog.load(directory);
    diagnostics.setTraceLevelMask(mask);
    return catalog;
}

struct InputResult
{
    QString input;
    QString absolutePath; ///< taken before the conversions change the working directory
    QString kind;
    QString error;
    REPORTKIT::Results results;
};

class ProgressLine
{
public:
    ProgressLine(bool enabled, int files, qint64 totalBytes)
        : m_enabled(enabled), m_files(files), m_totalBytes(totalBytes)
    {
    }
    void print(int filesDone, qint64 bytesDone, bool last)
    {
        if (!m_enabled) {
            return;
        }
        QTextStream(stderr) << QStringLiteral("\rconverting: %1 of %2 files, %3 of %4 MB")
                                   .arg(filesDone)
                                   .arg(m_files)
                                   .arg(double(bytesDone) / 1e6, 0, 'f', 1)
                                   .arg(double(m_totalBytes) / 1e6, 0, 'f', 1)
                            << (last ? "\n" : "");
    }

private:
    bool m_enabled;
    int m_files;
    qint64 m_totalBytes;
};

QString timeText(QDateTime const& time)
{
    return time.isValid() ? REPORTKIT::XmlTime::toText(time) : QStringLiteral("-");
}

// Wide enough for the longest file code, "TransmissionSystem".
int const CodeWidth = 18;

template <typename Record>
void printRows(QTextStream& out, std::vector<Record> const& records, QString const& kind)
{
    for (Record const& record : records) {
        auto const& metadata = record.GetMetadata();
        auto const& detail = metadata.GetDetail();
        out << QStringLiteral("%1 %2 %3 %4 %5 %6 %7\n")
                   .arg(kind, -8)
                   .arg(record.GetType().isEmpty() ? QStringLiteral("-") : record.GetType(), -16)
                   .arg(detail.GetCode().isEmpty() ? QStringLiteral("-") : detail.GetCode(),
                        -CodeWidth)
                   .arg(detail.IsChannelSet() ? QString::number(detail.GetChannel())
                                              : QStringLiteral("-"),
                        7)
                   .arg(QString::number(detail.GetFrequency().GetValue(), 'f', 0), 12)
                   .arg(timeText(metadata.GetStartTime()) + QLatin1Char(' ') +
                            timeText(metadata.GetStopTime()),
                        -49)
                   .arg(record.GetURL());
    }
}

void printTable(QTextStream& out, REPORTKIT::Results const& results)
{
    out << QStringLiteral("%1 %2 %3 %4 %5 %6 %7\n")
               .arg(QStringLiteral("record"), -8)
               .arg(QStringLiteral("type"), -16)
               .arg(QStringLiteral("code"), -CodeWidth)
               .arg(QStringLiteral("channel"), 7)
               .arg(QStringLiteral("frequency/Hz"), 12)
               .arg(QStringLiteral("start                    stop"), -49)
               .arg(QStringLiteral("path"));
    printRows(out, results.GetBinary(), QStringLiteral("Binary"));
    printRows(out, results.GetText(), QStringLiteral("Text"));
    printRows(out, results.GetPicture(), QStringLiteral("Picture"));
}

// The recording's start: --start, else the file's modification time.
unsigned long long startTimeOf(ConversionJob const& job, QString const& input)
{
    QDateTime const start =
        job.startTime.isValid() ? job.startTime : QFileInfo(input).lastModified();
    return start.isValid()
               ? (unsigned long long)(qMax<qint64>(0, start.toMSecsSinceEpoch())) * 1000ULL
               : 0ULL;
}

} // namespace

int runConversionJob(ConversionJob const& job)
{
    AlphabetsConfiguration const alphabets(job.alphabetsDirectory);

    std::vector<InputResult> outcomes(size_t(job.inputs.size()));
    qint64 totalBytes = 0;
    // Kinds are found before the threads start: the probe silences the trace for a moment.
    for (int i = 0; i < job.inputs.size(); ++i) {
        InputResult& outcome = outcomes[size_t(i)];
        outcome.input = job.inputs[i];
        QFileInfo const info(outcome.input);
        outcome.absolutePath = info.absoluteFilePath();
        totalBytes += info.size();
        outcome.kind = job.kind;
        if (!info.isFile() || !info.isReadable()) {
            outcome.error =
                info.exists() ? QStringLiteral("cannot read it") : QStringLiteral("no such file");
        } else if (outcome.kind.isEmpty() && looksLikeAudio(outcome.input)) {
            outcome.kind = QStringLiteral("audio");
        } else if (outcome.kind.isEmpty()) {
            outcome.kind = detectKind(outcome.input, outcome.error);
        }
        if (outcome.error.isEmpty() &&
            converterFactories().find(outcome.kind) == converterFactories().end()) {
            outcome.error =
                QStringLiteral("recordings of kind '%1' are not converted yet").arg(outcome.kind);
        }
    }

    JobSpec::Settings settings = job.settings;
    // Raw symbols are translated through the job's alphabet as decoded text is.
    bool const convertsText = std::any_of(outcomes.begin(), outcomes.end(), [](auto const& o) {
        return o.error.isEmpty() &&
               (o.kind == QLatin1String("text") || o.kind == QLatin1String("symbol"));
    });
    if (convertsText) {
        QString const note = chooseDecoderForAlphabet(settings, configuredAlphabets());
        if (!note.isEmpty()) {
            QTextStream(stderr) << "zelko convert: " << note << '\n';
        }
    }

    std::atomic<int> next{0};
    std::atomic<int> filesDone{0};
    std::atomic<qint64> bytesDone{0};
    auto worker = [&] {
        for (int i = next++; i < job.inputs.size(); i = next++) {
            InputResult& outcome = outcomes[size_t(i)];
            if (outcome.error.isEmpty()) {
                qint64 reported = 0;
                auto const converter =
                    converterFactories().at(outcome.kind)([&](qint64 done, qint64) {
                        bytesDone += done - reported;
                        reported = done;
                    });
                outcome.results =
                    converter->convertFile(outcome.absolutePath, job.outputDirectory, settings,
                                           startTimeOf(job, outcome.absolutePath));
            }
            ++filesDone;
        }
    };

    WorkingDirectory const inDataDirectory(job.dataDirectory);
    ProgressLine progress(job.showProgress, job.inputs.size(), totalBytes);
    std::vector<std::thread> threads;
    int const threadCount = std::min(job.jobs, int(job.inputs.size()));
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back(worker);
    }
    QElapsedTimer timer;
    timer.start();
    while (filesDone.load() < job.inputs.size()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        // The audio converter releases its library on this thread when a worker is done.
        QCoreApplication::processEvents();
        if (timer.elapsed() >= 500) {
            progress.print(filesDone.load(), bytesDone.load(), false);
            timer.restart();
        }
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    progress.print(filesDone.load(), totalBytes, true);

    REPORTKIT::Results all;
    all.SetValidate(false);
    bool allRead = true;
    QTextStream err(stderr);
    for (InputResult const& outcome : outcomes) {
        if (!outcome.error.isEmpty()) {
            err << "zelko convert: " << outcome.input << ": " << outcome.error << '\n';
            allRead = false;
        }
        for (auto const& record : outcome.results.GetBinary()) {
            all.AppendBinary(record);
        }
        for (auto const& record : outcome.results.GetText()) {
            all.AppendText(record);
        }
        for (auto const& record : outcome.results.GetPicture()) {
            all.AppendPicture(record);
        }
    }
    err.flush();
    QTextStream out(stdout);
    if (job.printXml) {
        out << all.GetXmlString();
    } else {
        printTable(out, all);
    }
    return allRead ? 0 : 1;
}

} // namespace zelkotool
