#include "transcript.h"

#include "golden.h"
#include "schemavalidator.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtEndian>
#include <map>

namespace zelkotest {

namespace {

QString const Source = QStringLiteral(ZELKO_GOLDEN_DIR "/../..");

/// The caller's inputs first, then the longest paths, so that OUT inside the source tree would
/// still read as OUT.
Places places(QString const& out, Places const& inputs)
{
    QString const source = QDir::cleanPath(Source);
    Places all = inputs;
    all.insert(all.end(), {{out, QStringLiteral("OUT")},
                           {source + QStringLiteral("/data/samples"), QStringLiteral("SAMPLES")},
                           {source + QStringLiteral("/tests/data"), QStringLiteral("TESTDATA")},
                           {source, QStringLiteral("SOURCE")}});
    return all;
}

QString withPlaceholders(QString text, Places const& all)
{
    for (auto const& [path, name] : all) {
        text.replace(path, name);
    }
    // File names and records carry the wall-clock time of the conversion, trace lines the
    // line of the source that wrote them.
    static QRegularExpression const stamp(QStringLiteral("_\\d{8}_\\d{6}"));
    text.replace(stamp, QStringLiteral("_<date>_<time>"));
    QDate const today = QDateTime::currentDateTimeUtc().date();
    for (QDate const day : {today.addDays(-1), today}) {
        QRegularExpression const now(day.toString(Qt::ISODate) + QStringLiteral("T[0-9:.]{12}Z"));
        text.replace(now, QStringLiteral("<now>"));
    }
    static QRegularExpression const traceLine(QStringLiteral("^([\\w/]+):\\d+: "),
                                              QRegularExpression::MultilineOption);
    return text.replace(traceLine, QStringLiteral("\\1: "));
}

QString resolved(QString argument, Places const& all)
{
    for (auto const& [path, name] : all) {
        if (argument == name || argument.startsWith(name + QLatin1Char('/'))) {
            return path + argument.mid(name.size());
        }
    }
    return argument;
}

/// Whether it is valid, each text block's attributes and first lines, how many PDU blocks of
/// each name (AIS documents hold hundreds).
QString resultDocumentSummary(QString const& path)
{
    QString const complaint = validateXmlFile(path, QStringLiteral("nerikresultdata.xsd"));
    QString summary = complaint.isEmpty() ? QStringLiteral("  valid\n")
                                          : QStringLiteral("  INVALID: ") + complaint + '\n';
    std::map<QString, int> pduBlocks;
    QXmlStreamReader xml(readFile(path));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (xml.name() == QLatin1String("PDUDataBlock")) {
            ++pduBlocks[xml.attributes().value(QLatin1String("name")).toString()];
        } else if (xml.name() == QLatin1String("DataBlock")) {
            summary += QStringLiteral("  DataBlock");
            for (auto const& attribute : xml.attributes()) {
                summary += QStringLiteral(" %1=\"%2\"").arg(attribute.name(), attribute.value());
            }
            summary += '\n';
        } else if (xml.name() == QLatin1String("Content")) {
            for (QString const& line : xml.readElementText().split(QLatin1Char('\n')).mid(0, 3)) {
                summary += QStringLiteral("  | ") + QString(line).remove(QLatin1Char('\r')) + '\n';
            }
        }
    }
    for (auto const& [name, count] : pduBlocks) {
        summary += QStringLiteral("  %1 x PDUDataBlock \"%2\"\n").arg(count).arg(name);
    }
    return summary;
}

QString filesIn(QString const& out)
{
    QStringList names;
    QDirIterator it(out, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        names << QDir(out).relativeFilePath(it.next());
    }
    names.sort();
    QString listing;
    for (QString const& name : names) {
        QString const path = QDir(out).filePath(name);
        QByteArray const head = readFile(path).left(24);
        if (head.startsWith("\x89PNG") && head.size() == 24) {
            // Width and height stand big-endian in the IHDR chunk, the first after the signature.
            listing += QStringLiteral("%1: PNG %2x%3\n")
                           .arg(name)
                           .arg(qFromBigEndian<quint32>(head.constData() + 16))
                           .arg(qFromBigEndian<quint32>(head.constData() + 20));
        } else if (readFile(path).contains("<NerikResultData")) {
            listing += name + QStringLiteral(":\n") + resultDocumentSummary(path);
        } else if (name.endsWith(QLatin1String(".txt"))) {
            // Text dumps may hold random samples: their line count and first line only.
            QByteArray const text = readFile(path);
            listing += QStringLiteral("%1: %2 lines\n  | %3\n")
                           .arg(name)
                           .arg(text.count('\n'))
                           .arg(QString::fromUtf8(text.left(text.indexOf('\n')).left(100)));
        } else {
            listing += QStringLiteral("%1: %2 bytes\n").arg(name).arg(QFileInfo(path).size());
        }
    }
    return listing;
}

} // namespace

std::vector<ToolCall> readToolCalls(QString const& relativePath)
{
    std::vector<ToolCall> calls;
    std::string name;
    for (QByteArray const& line :
         readFile(QStringLiteral(ZELKO_GOLDEN_DIR "/") + relativePath).split('\n')) {
        if (line.startsWith("# ") && line.contains(':')) {
            name = line.mid(2, line.indexOf(':') - 2).toStdString();
        } else if (!line.trimmed().isEmpty() && !line.startsWith('#') && !name.empty()) {
            calls.push_back({name, QProcess::splitCommand(QString::fromUtf8(line))});
            name.clear();
        }
    }
    return calls;
}

QByteArray toolTranscript(QString const& program, ToolCall const& call, ToolSetup const& setup,
                          Places const& inputs)
{
    QTemporaryDir dir;
    QString const out = QDir::cleanPath(dir.filePath(QStringLiteral("out")));
    QDir().mkpath(out);
    Places const all = places(out, inputs);
    QStringList arguments;
    for (QString const& argument : call.arguments) {
        arguments << resolved(argument, all);
    }
    ToolRun const run = runTool(program, arguments, setup);
    QStringList shown;
    for (QString const& argument : call.arguments) {
        shown << (argument.contains(QLatin1Char(' ')) ? '"' + argument + '"' : argument);
    }
    QString text = QStringLiteral("$ %1 %2\nexit %3\n")
                       .arg(QFileInfo(program).fileName(), shown.join(QLatin1Char(' ')))
                       .arg(run.exitCode);
    text += QStringLiteral("--- stdout\n") + run.out;
    text += QStringLiteral("--- stderr\n") + run.err;
    text += QStringLiteral("--- files\n") + filesIn(out);
    return withPlaceholders(text, all).toUtf8();
}

QString transcriptDifference(QString const& program, ToolCall const& call,
                             QString const& goldenDirectory, ToolSetup const& setup,
                             Places const& inputs)
{
    return compareWithGolden(toolTranscript(program, call, setup, inputs),
                             goldenDirectory + '/' + QString::fromStdString(call.name) +
                                 QStringLiteral(".txt"));
}

} // namespace zelkotest
