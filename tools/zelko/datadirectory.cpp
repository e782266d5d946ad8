#include "datadirectory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemhelper.h>

namespace zelkotool {

namespace {

QString midFile(QString const& directory)
{
    return QDir(directory).filePath(
        zelkodatastreamconverter::TransmissionSystemHelper::MIDFileName);
}

} // namespace

bool checkDataDirectory(QString const& directory)
{
    QTextStream err(stderr);
    if (!QFileInfo(directory).isDir()) {
        err << "zelko convert: no data directory " << directory << " (see --help)\n";
        return false;
    }
    if (!QFileInfo(midFile(directory)).isFile()) {
        err << "zelko convert: warning: " << directory << " has no "
            << zelkodatastreamconverter::TransmissionSystemHelper::MIDFileName
            << ": ship countries read as unknown\n";
    }
    return true;
}

QString dataDirectory(QString const& requested)
{
    if (!requested.isEmpty()) {
        return QDir(requested).absolutePath();
    }
    for (QString const& candidate :
         {QCoreApplication::applicationDirPath() + QStringLiteral("/../share/zelko"),
          QStringLiteral(ZELKO_SOURCE_DIR "/data")}) {
        if (QFileInfo(midFile(candidate)).isFile()) {
            return QDir(candidate).absolutePath();
        }
    }
    return QString();
}

WorkingDirectory::WorkingDirectory(QString const& directory)
{
    if (directory.isEmpty()) {
        return;
    }
    QString const configuration = qEnvironmentVariable("ZELKO_CONFIG");
    if (!configuration.isEmpty()) {
        qputenv("ZELKO_CONFIG", QFile::encodeName(QFileInfo(configuration).absoluteFilePath()));
    }
    m_previous = QDir::currentPath();
    QDir::setCurrent(directory);
}

WorkingDirectory::~WorkingDirectory()
{
    if (!m_previous.isEmpty()) {
        QDir::setCurrent(m_previous);
    }
}

} // namespace zelkotool
