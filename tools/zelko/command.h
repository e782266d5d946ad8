#pragma once

#include <QString>
#include <QStringList>
#include <vector>

class QCommandLineParser;

namespace zelkotool {

/// One subcommand of the zelko tool. run() receives the arguments after the subcommand's
/// name and returns the exit status.
struct Command
{
    QString name;
    QString synopsis; ///< "inspect RECORDING..."
    QString summary;  ///< one line for the overview
    int (*run)(QStringList const& arguments);
};

/// Every subcommand, in the order the help lists them (commandtable.cpp).
std::vector<Command> const& commands();

/// QCommandLineParser::process() for a subcommand's arguments (a wrong option ends the
/// program with Qt's message), except that --help is answered here, with the usage line
/// "zelko <command> [options] ..." instead of the path the binary was started by. True when
/// the help was printed: the command then ends with status 0.
bool processCommandLine(QCommandLineParser& parser, QString const& command,
                        QStringList const& arguments);

// One function per subcommand, each in its own <name>command.cpp.
int runInspect(QStringList const& arguments);
int runConvert(QStringList const& arguments);
int runBursts(QStringList const& arguments);
int runImport(QStringList const& arguments);
int runImportMorseAudio(QStringList const& arguments); ///< importmorseaudio.cpp, from runImport

} // namespace zelkotool
