#include "command.h"

#include <QGuiApplication>
#include <QTextStream>
#include <cstdio>

namespace {

QtMessageHandler const defaultMessageHandler = qInstallMessageHandler(nullptr);

// A headless run has no runtime directory; Qt's complaint about it is no news to the user.
void dropPlatformNoise(QtMsgType type, QMessageLogContext const& context, QString const& message)
{
    if (message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))) {
        return;
    }
    defaultMessageHandler(type, context, message);
}

void printOverview(QTextStream& out)
{
    out << "Usage: zelko COMMAND [OPTIONS] ARGUMENTS\n\n"
        << "Converts and examines recordings of the monitoring receiver.\n\n"
        << "Commands:\n";
    for (zelkotool::Command const& command : zelkotool::commands()) {
        out << "  " << command.synopsis.leftJustified(37) << ' ' << command.summary << '\n';
    }
    out << "\nRun 'zelko COMMAND --help' for the options of a command.\n"
        << "Environment: ZELKO_TRACE_MASK sets which traces are shown (0x20 warnings,\n"
        << "0x40 information; default 0x20).\n";
}

} // namespace

int main(int argc, char* argv[])
{
    // Plots are painted with fonts, which needs a GUI application; the tool never opens a
    // window, so it runs on the offscreen platform unless told otherwise.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qInstallMessageHandler(dropPlatformNoise);
    QGuiApplication app(argc, argv);
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
