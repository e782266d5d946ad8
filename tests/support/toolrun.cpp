#include "toolrun.h"

#include <QProcess>

namespace zelkotest {

ToolRun runTool(QString const& program, QStringList const& arguments, ToolSetup const& setup)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto const& [name, value] : setup.environment) {
        if (value.isNull()) {
            environment.remove(name);
        } else {
            environment.insert(name, value);
        }
    }
    process.setProcessEnvironment(environment);
    if (!setup.workingDirectory.isEmpty()) {
        process.setWorkingDirectory(setup.workingDirectory);
    }
    if (setup.mergeChannels) {
        process.setProcessChannelMode(QProcess::MergedChannels);
    }
    process.start(program, arguments);
    ToolRun run;
    if (!process.waitForFinished(setup.timeoutMs)) {
        process.kill();
        process.waitForFinished();
        run.err = process.errorString();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace zelkotest
