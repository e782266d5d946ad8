#include "scenarioscript.h"

#include "golden.h"

#include <QDir>
#include <QRegularExpression>

namespace zelkotest {

QStringList scenarioWords(QString const& line)
{
    static QRegularExpression const word(QStringLiteral(R"re((?:[\w-]+=)?"[^"]*"|\S+)re"));
    QStringList words;
    for (auto it = word.globalMatch(line); it.hasNext();) {
        words << it.next().captured().remove('"');
    }
    return words;
}

QString checkScenario(QString const& area, QString const& name, ScenarioStep const& step,
                      TraceText const& traceText, QStringList& dump)
{
    QString const script =
        QString::fromUtf8(readFile(ZELKO_GOLDEN_DIR "/" + area + '/' + name + ".scenario"));
    if (script.isEmpty()) {
        return QStringLiteral("no script %1/%2").arg(area, name);
    }
    TraceCapture traces(0x60);
    for (QString const& line : script.split('\n')) {
        if (line.trimmed().isEmpty() || line.startsWith('#')) {
            continue;
        }
        dump << line;
        step(scenarioWords(line));
        for (TraceLine const& trace : traces.lines()) {
            dump << "  trace " + traceText(trace);
        }
        traces.clear();
    }
    return compareWithGolden((dump.join('\n') + '\n').toUtf8(), area + '/' + name + ".dump");
}

QStringList scenarioNames(QString const& area)
{
    return QDir(ZELKO_GOLDEN_DIR "/" + area)
        .entryList({"*.scenario"}, QDir::Files, QDir::Name)
        .replaceInStrings(".scenario", "");
}

} // namespace zelkotest
