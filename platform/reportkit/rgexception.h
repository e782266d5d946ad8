#pragma once

#include <QString>
#include <exception>

namespace REPORTKIT {

/// The exception type of the report library: thrown by validating setters.
class RGException : public std::exception
{
public:
    explicit RGException(QString message);

    /// The message, for traces.
    virtual QString GetMessage() const;
    char const* what() const noexcept override;

private:
    QString m_message;
    QByteArray m_utf8;
};

} // namespace REPORTKIT
