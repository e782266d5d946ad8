#pragma once
// Makes a directory the working directory for one scope and restores the previous one after.

#include <QDir>
#include <QString>

namespace zelkotest {

class ScopedWorkingDirectory
{
public:
    explicit ScopedWorkingDirectory(QString const& path) : m_previous(QDir::currentPath())
    {
        QDir::setCurrent(path);
    }
    ~ScopedWorkingDirectory() { QDir::setCurrent(m_previous); }
    ScopedWorkingDirectory(ScopedWorkingDirectory const&) = delete;
    ScopedWorkingDirectory& operator=(ScopedWorkingDirectory const&) = delete;

private:
    QString m_previous;
};

} // namespace zelkotest
