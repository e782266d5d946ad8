#include "command.h"
#include "frametypenames.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QMap>
#include <QTextStream>
#include <cstring>
#include <diagnostics/errorhandler.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <unistd.h>

namespace zelkotool {

namespace {

struct InspectOptions
{
    bool listFrames = true;
    bool showProgress = false;
};

// A progress line on stderr for long recordings, rewritten in place.
void showProgress(qint64 position, qint64 size, bool last)
{
    QTextStream(stderr) << QStringLiteral("\r  %1 of %2 MB read")
                               .arg(double(position) / 1e6, 0, 'f', 0)
                               .arg(double(size) / 1e6, 0, 'f', 0)
                        << (last ? "\n" : "");
}

quint32 frameLengthWords(QByteArray const& frame)
{
    quint32 words = 0;
    using zelkodatastreamconverter::FrameLengthOffset;
    if (frame.size() >= FrameLengthOffset + int(sizeof words)) {
        std::memcpy(&words, frame.constData() + FrameLengthOffset, sizeof words);
    }
    return words;
}

// Lists one recording; false when it could not be opened.
bool inspectFile(QString const& path, InspectOptions const& options, QTextStream& out)
{
    out << path << '\n';
    if (QFileInfo(path).isDir()) {
        out << "  cannot open: is a directory\n";
        return false;
    }
    zelkodatastreamconverter::FileReader reader(path);
    if (!reader.isWorking()) {
        out << "  cannot open: " << reader.getFile().errorString() << '\n';
        return false;
    }
    if (options.listFrames) {
        out << "  " << QStringLiteral("offset").rightJustified(12) << "  "
            << QStringLiteral("type").leftJustified(20)
            << QStringLiteral("words").rightJustified(10) << "  order\n";
    }
    QMap<quint32, qint64> countPerType;
    qint64 frames = 0;
    qint64 frameBytes = 0;
    QByteArray frameType;
    QByteArray frame;
    qint64 const size = reader.getFile().size();
    constexpr qint64 progressStep = 64 << 20;
    qint64 nextProgress = progressStep;
    while (reader.isWorking()) {
        if (!reader.readFrame()) {
            continue;
        }
        if (options.showProgress && reader.getPosition() >= nextProgress) {
            showProgress(reader.getPosition(), size, false);
            nextProgress = reader.getPosition() + progressStep;
        }
        bool const swapped = reader.convertByteOrder();
        reader.takeFrameData(frameType, frame);
        // The reader never reads past the frame it completes, so the frame ends here.
        qint64 const offset = reader.getPosition() - frame.size();
        quint32 const type = frameType.toUInt(nullptr, 16);
        ++countPerType[type];
        ++frames;
        frameBytes += frame.size();
        if (options.listFrames) {
            out << "  " << QString::number(offset).rightJustified(12) << "  "
                << frameTypeLabel(type).leftJustified(20)
                << QString::number(frameLengthWords(frame)).rightJustified(10) << "  "
                << (swapped ? "swapped" : "host") << '\n';
        }
    }
    if (options.showProgress && nextProgress > progressStep) {
        showProgress(size, size, true);
    }
    out << "  " << frames << " frames, " << frameBytes << " bytes in frames\n";
    for (auto it = countPerType.cbegin(); it != countPerType.cend(); ++it) {
        out << "    " << frameTypeLabel(it.key()).leftJustified(20) << ' ' << it.value() << '\n';
    }
    if (reader.fatalError()) {
        out << "  reading stopped early: the recording is damaged\n";
    }
    return true;
}

} // namespace

int runInspect(QStringList const& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Lists the frames of recordings: file offset, frame type, length in 32-bit words and\n"
        "byte order, then a count per frame type. What the frame reader reports (garbage,\n"
        "bad lengths, changes of byte order, end of file) is shown in place, marked '!'.\n"
        "The exit status is 1 when a recording cannot be opened."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("RECORDING"), QStringLiteral("recording files"),
                                 QStringLiteral("RECORDING..."));
    QCommandLineOption summaryOnly(QStringLiteral("summary"),
                                   QStringLiteral("print the counts only, no line per frame"));
    QCommandLineOption traceMask(QStringLiteral("trace"),
                                 QStringLiteral("trace mask (default 0x20: warnings)"),
                                 QStringLiteral("MASK"));
    parser.addOption(summaryOnly);
    parser.addOption(traceMask);
    if (processCommandLine(parser, QStringLiteral("inspect"), arguments)) {
        return 0;
    }

    QTextStream out(stdout);
    if (parser.isSet(traceMask)) {
        unsigned mask = 0;
        if (!ErrorHandler::parseMask(parser.value(traceMask), mask)) {
            QTextStream(stderr) << "zelko inspect: --trace needs a number, not '"
                                << parser.value(traceMask) << "'\n";
            return 2;
        }
        ErrorHandler::Instance().setTraceLevelMask(mask);
    }
    QStringList const files = parser.positionalArguments();
    if (files.isEmpty()) {
        QTextStream(stderr) << "zelko inspect: no recording given (see --help)\n";
        return 2;
    }
    ErrorHandler::Instance().setTraceSink(
        [&out](QString const& message, QString const&, unsigned short) {
            out << "  ! " << message << '\n';
        });
    InspectOptions options;
    options.listFrames = !parser.isSet(summaryOnly);
    // With the listing on the terminal the listing itself shows progress.
    options.showProgress = !options.listFrames && ::isatty(STDERR_FILENO) == 1;
    bool allOpened = true;
    for (QString const& file : files) {
        allOpened = inspectFile(file, options, out) && allOpened;
    }
    out.flush();
    ErrorHandler::Instance().setTraceSink({});
    return allOpened ? 0 : 1;
}

} // namespace zelkotool
