#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace NerikResultDataXml {

/// The exception type of the result-document library: thrown when a document cannot be
/// rendered as XML (GetXmlString()). Its text says what went wrong.
class NerikResultDataException : public std::exception
{
public:
    explicit NerikResultDataException(QString message);

    /// The message, for traces.
    virtual QString GetMessage() const;
    char const* what() const noexcept override;

private:
    QString m_message;
    QByteArray m_utf8;
};

} // namespace NerikResultDataXml
