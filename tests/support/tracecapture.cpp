#include "tracecapture.h"

#include <diagnostics/errorhandler.h>

namespace zelkotest {

TraceCapture::TraceCapture(unsigned mask)
    : m_previousMask(ErrorHandler::Instance().traceLevelMask())
{
    ErrorHandler::Instance().setTraceLevelMask(mask);
    ErrorHandler::Instance().setTraceSink(
        [this](QString const& message, QString const& sourceFile, unsigned short line) {
            m_lines.push_back({message, sourceFile, line});
        });
}

TraceCapture::~TraceCapture()
{
    ErrorHandler::Instance().setTraceSink({});
    ErrorHandler::Instance().setTraceLevelMask(m_previousMask);
}

QStringList TraceCapture::messages() const
{
    QStringList result;
    for (TraceLine const& line : m_lines) {
        result << line.message;
    }
    return result;
}

int TraceCapture::count(QString const& message) const
{
    return messages().count(message);
}

} // namespace zelkotest
