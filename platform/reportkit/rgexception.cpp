#include "rgexception.h"

namespace REPORTKIT {

RGException::RGException(QString message)
    : m_message(std::move(message)), m_utf8(m_message.toUtf8())
{
}

QString RGException::GetMessage() const
{
    return m_message;
}

char const* RGException::what() const noexcept
{
    return m_utf8.constData();
}

} // namespace REPORTKIT
