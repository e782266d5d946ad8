#pragma once
// Sets an environment variable for one scope and restores it afterwards; a null value removes
// the variable for the scope.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace zelkotest {

class ScopedEnvironment
{
public:
    ScopedEnvironment(char const* name, QString const& value)
        : m_name(name), m_had(qEnvironmentVariableIsSet(name)), m_old(qgetenv(name))
    {
        if (value.isNull()) {
            qunsetenv(name);
        } else {
            qputenv(name, value.toLocal8Bit());
        }
    }
    ~ScopedEnvironment()
    {
        if (m_had) {
            qputenv(m_name, m_old);
        } else {
            qunsetenv(m_name);
        }
    }
    ScopedEnvironment(ScopedEnvironment const&) = delete;
    ScopedEnvironment& operator=(ScopedEnvironment const&) = delete;

private:
    char const* m_name;
    bool m_had;
    QByteArray m_old;
};

} // namespace zelkotest
