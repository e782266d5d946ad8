#include "command.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

namespace zelkotool {

bool processCommandLine(QCommandLineParser& parser, QString const& command,
                        QStringList const& arguments)
{
    QString const invocation = QStringLiteral("zelko ") + command;
    QStringList const all = QStringList{invocation} + arguments;
    if (parser.parse(all) && parser.isSet(QStringLiteral("help"))) {
        // helpText() names the binary by the path it was started with, which means nothing
        // to a reader of "zelko convert --help".
        QString text = parser.helpText();
        QString const started =
            QStringLiteral("Usage: ") + QCoreApplication::arguments().constFirst();
        if (text.startsWith(started)) {
            text.replace(0, started.size(), QStringLiteral("Usage: ") + invocation);
        }
        QTextStream(stdout) << text;
        return true;
    }
    parser.process(all);
    return false;
}

} // namespace zelkotool
