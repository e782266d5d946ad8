#include "command.h"
#include "conversionjob.h"
#include "datadirectory.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>
#include <diagnostics/errorhandler.h>
#include <jobspec/settings.h>

namespace zelkotool {

namespace {

QStringList const kinds = {QStringLiteral("text"), QStringLiteral("ts"), QStringLiteral("ais"), QStringLiteral("audio"),
                           QStringLiteral("symbol"), QStringLiteral("image")};

int usageError(QString const& message)
{
    QTextStream(stderr) << "zelko convert: " << message << " (see --help)\n";
    return 2;
}

// Job settings from --settings, then the single flags on top of them.
bool buildSettings(QCommandLineParser const& parser, JobSpec::Settings& settings, QString& error)
{
    settings.SetValidate(false);
    if (parser.isSet(QStringLiteral("settings"))) {
        JobSpec::Settings loaded;
        if (!loaded.LoadFile(parser.value(QStringLiteral("settings")))) {
            error = loaded.LastXmlError();
            return false;
        }
        settings = loaded;
    }
    if (parser.isSet(QStringLiteral("frequency"))) {
        bool ok = false;
        double const hertz = parser.value(QStringLiteral("frequency")).toDouble(&ok);
        if (!ok || hertz < 0) {
            error = QStringLiteral("--frequency needs hertz, not '%1' (see --help)")
                        .arg(parser.value(QStringLiteral("frequency")));
            return false;
        }
        settings.GetFFM_Settings().GetFrequency().SetValue(hertz);
    }
    JobSpec::Demodulator_Settings& demodulator = settings.GetDemodulator_Settings();
    if (parser.isSet(QStringLiteral("mode"))) {
        bool ok = false;
        auto const mode =
            JobSpec::Demodulator_Settings::NameToMode(parser.value(QStringLiteral("mode")), &ok);
        if (!ok) {
            error = QStringLiteral("unknown demodulation mode '%1' (see --help)")
                        .arg(parser.value(QStringLiteral("mode")));
            return false;
        }
        demodulator.SetMode(mode);
    }
    if (parser.isSet(QStringLiteral("decoder"))) {
        JobSpec::Decoder decoder;
        for (QString const& name : parser.values(QStringLiteral("decoder"))) {
            decoder.AppendValue(name);
        }
        demodulator.SetDecoder(decoder);
    }
    if (parser.isSet(QStringLiteral("alphabet"))) {
        demodulator.SetAlphabet(parser.value(QStringLiteral("alphabet")));
    }
    if (parser.isSet(QStringLiteral("channels"))) {
        JobSpec::ChannelSelection channels;
        for (QString const& channel :
             parser.value(QStringLiteral("channels")).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            channels.AppendValue(channel.trimmed());
        }
        settings.SetChannelSelection(channels);
    }
    return true;
}

} // namespace

int runConvert(QStringList const& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Converts recordings into result documents in DIR and lists the files produced.\n"
        "The kind of recording is taken from the first frame's type unless --kind is given;\n"
        "audio files (WAV, FLAC, AIFF, Ogg, raw 16-bit PCM, ...) become Broadcast Wave files\n"
        "with a session file.\n"
        "Job settings come from --settings FILE (see data/jobsettings-example.xml), and the\n"
        "single options below override what the file says. Several inputs are converted\n"
        "in parallel with -j N, one converter per thread.\n"
        "An alphabet that the decoder does not offer is not used: the codes are written as\n"
        "they are, and a note on stderr says so.\n"
        "The exit status is 1 when an input could not be read, 2 for wrong options."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("INPUT"), QStringLiteral("recordings"),
                                 QStringLiteral("INPUT..."));
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("directory of the produced files (created if missing)"),
         QStringLiteral("DIR")},
        {QStringLiteral("kind"), QStringLiteral("text, ts, ais (ts with station files), audio, symbol or image"),
         QStringLiteral("KIND")},
        {QStringLiteral("start"),
         QStringLiteral("audio: the recording's start, UTC, e.g. 2024-01-31T23:59:58.001Z "
                        "(default: the file's modification time)"),
         QStringLiteral("TIME")},
        {QStringLiteral("settings"), QStringLiteral("job settings XML file"),
         QStringLiteral("FILE")},
        {QStringLiteral("frequency"), QStringLiteral("receive frequency in Hz"),
         QStringLiteral("HZ")},
        {QStringLiteral("mode"), QStringLiteral("demodulation mode (AM, FM, USB, ...)"),
         QStringLiteral("MODE")},
        {QStringLiteral("decoder"),
         QStringLiteral("decoder name (RTTY, NAVTEX, ...); repeat for several"),
         QStringLiteral("NAME")},
        {QStringLiteral("alphabet"),
         QStringLiteral("alphabet name (International, International USOS, CCIR 476, ...); "
                        "without a decoder, the first decoder that offers it is used"),
         QStringLiteral("NAME")},
        {QStringLiteral("channels"), QStringLiteral("channels to keep, e.g. 1,3 (default: all)"),
         QStringLiteral("LIST")},
        {QStringLiteral("alphabets"),
         QStringLiteral("directory of the alphabet files (default: the configured one, else the "
                        "shipped alphabets)"),
         QStringLiteral("DIR")},
        {QStringLiteral("data-dir"),
         QStringLiteral("directory of the tables the conversions read from their working "
                        "directory, such as MaritimListofCountries.csv; the conversions run "
                        "there (default: the installed data, else the source tree's data/)"),
         QStringLiteral("DIR")},
        {{QStringLiteral("j"), QStringLiteral("jobs")},
         QStringLiteral("convert up to N inputs at once (default 1)"),
         QStringLiteral("N")},
        {QStringLiteral("xml"), QStringLiteral("print the results as XML instead of a table")},
        {QStringLiteral("progress"),
         QStringLiteral("show progress even when stderr is no terminal")},
        {QStringLiteral("quiet"), QStringLiteral("no progress line")},
        {QStringLiteral("trace"), QStringLiteral("trace mask (default 0x20: warnings)"),
         QStringLiteral("MASK")},
    });
    if (processCommandLine(parser, QStringLiteral("convert"), arguments)) {
        return 0;
    }

    ConversionJob job;
    job.inputs = parser.positionalArguments();
    if (job.inputs.isEmpty()) {
        return usageError(QStringLiteral("no input given"));
    }
    if (!parser.isSet(QStringLiteral("output"))) {
        return usageError(QStringLiteral("-o DIR is required"));
    }
    job.outputDirectory = QDir(parser.value(QStringLiteral("output"))).absolutePath();
    if (parser.isSet(QStringLiteral("kind"))) {
        job.kind = parser.value(QStringLiteral("kind"));
        if (!kinds.contains(job.kind)) {
            return usageError(QStringLiteral("unknown kind '%1'").arg(job.kind));
        }
    }
    if (parser.isSet(QStringLiteral("start"))) {
        job.startTime = QDateTime::fromString(parser.value(QStringLiteral("start")), Qt::ISODateWithMs);
        if (!job.startTime.isValid()) {
            return usageError(QStringLiteral("--start needs a time such as 2024-01-31T23:59:58Z"));
        }
        if (job.startTime.timeSpec() == Qt::LocalTime) {
            job.startTime.setTimeSpec(Qt::UTC); // a time without an offset is UTC
        }
        job.startTime = job.startTime.toUTC();
    }
    if (parser.isSet(QStringLiteral("trace"))) {
        unsigned mask = 0;
        if (!ErrorHandler::parseMask(parser.value(QStringLiteral("trace")), mask)) {
            return usageError(QStringLiteral("--trace needs a number"));
        }
        ErrorHandler::Instance().setTraceLevelMask(mask);
    }
    job.jobs = 1;
    if (parser.isSet(QStringLiteral("jobs"))) {
        bool ok = false;
        job.jobs = parser.value(QStringLiteral("jobs")).toInt(&ok);
        if (!ok || job.jobs < 1) {
            return usageError(QStringLiteral("-j needs a number of 1 or more"));
        }
    }
    job.dataDirectory = dataDirectory(parser.value(QStringLiteral("data-dir")));
    if (parser.isSet(QStringLiteral("data-dir")) && !checkDataDirectory(job.dataDirectory)) {
        return 2;
    }
    QString error;
    if (!buildSettings(parser, job.settings, error)) {
        QTextStream(stderr) << "zelko convert: " << error << '\n';
        return 2;
    }
    if (!QDir().mkpath(job.outputDirectory)) {
        QTextStream(stderr) << "zelko convert: cannot create " << job.outputDirectory << '\n';
        return 1;
    }
    job.alphabetsDirectory = parser.value(QStringLiteral("alphabets"));
    job.showProgress = !parser.isSet(QStringLiteral("quiet")) &&
                       (parser.isSet(QStringLiteral("progress")) || isStderrTerminal());
    job.printXml = parser.isSet(QStringLiteral("xml"));
    return runConversionJob(job);
}

} // namespace zelkotool
