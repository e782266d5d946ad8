#include "moduletrace.h"

#include <diagnostics/errorhandler.h>

namespace zelkodatastreamconverter {

ModuleTrace::ModuleTrace(QString const& module)
    : m_sourceFile(QStringLiteral("massdatamanagement/zelkodatastreamconverter/") + module)
{
}

bool ModuleTrace::enabled(unsigned bit)
{
    return (ErrorHandler::Instance().traceLevelMask() & bit) != 0;
}

void ModuleTrace::report(unsigned bit, QString const& message, int line) const
{
    if (enabled(bit)) {
        _Q_Trace(message, m_sourceFile, static_cast<unsigned short>(line));
    }
}

} // namespace zelkodatastreamconverter
