#include "nerikresultdataexception.h"

namespace NerikResultDataXml {

NerikResultDataException::NerikResultDataException(QString message)
    : m_message(std::move(message)), m_utf8(m_message.toUtf8())
{
}

QString NerikResultDataException::GetMessage() const
{
    return m_message;
}

char const* NerikResultDataException::what() const noexcept
{
    return m_utf8.constData();
}

} // namespace NerikResultDataXml
