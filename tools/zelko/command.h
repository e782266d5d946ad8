#pragma once

#include <QString>
#include <QStringList>
#include <vector>

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

// One function per subcommand, each in its own <name>command.cpp.
int runInspect(QStringList const& arguments);
int runConvert(QStringList const& arguments);
int runBursts(QStringList const& arguments);

} // namespace zelkotool
