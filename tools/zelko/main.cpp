#include "command.h"

#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>

namespace {

void printOverview(QTextStream& out)
{
    out << "Usage: zelko COMMAND [OPTIONS] ARGUMENTS\n\n"
        << "Converts and examines recordings of the monitoring receiver.\n\n"
        << "Commands:\n";
    for (zelkotool::Command const& command : zelkotool::commands()) {
        out << "  " << command.synopsis.leftJustified(34) << ' ' << command.summary << '\n';
    }
    out << "\nRun 'zelko COMMAND --help' for the options of a command.\n"
        << "Environment: ZELKO_TRACE_MASK sets which traces are shown (0x20 warnings,\n"
        << "0x40 information; default 0x20).\n";
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zelko"));
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();

    QTextStream out(stdout);
    if (arguments.isEmpty() || arguments.first() == QLatin1String("--help") ||
        arguments.first() == QLatin1String("-h") || arguments.first() == QLatin1String("help")) {
        printOverview(out);
        return arguments.isEmpty() ? 2 : 0;
    }
    QString const name = arguments.takeFirst();
    for (zelkotool::Command const& command : zelkotool::commands()) {
        if (command.name == name) {
            out.flush();
            return command.run(arguments);
        }
    }
    QTextStream err(stderr);
    err << "zelko: unknown command '" << name << "'\n\n";
    err.flush();
    printOverview(out);
    return 2;
}
