#include "schemavalidator.h"

#include <QProcess>
#include <QTemporaryFile>

namespace zelkotest {

QString validateXmlFile(QString const& xmlPath, QString const& schemaName)
{
    QProcess xmllint;
    xmllint.setProcessChannelMode(QProcess::MergedChannels);
    xmllint.start(QStringLiteral("xmllint"),
                  {QStringLiteral("--noout"), QStringLiteral("--schema"),
                   QStringLiteral(ZELKO_SCHEMA_DIR "/") + schemaName, xmlPath});
    if (!xmllint.waitForFinished(60000)) {
        return QStringLiteral("xmllint did not run: ") + xmllint.errorString();
    }
    QString const output = QString::fromLocal8Bit(xmllint.readAll());
    if (xmllint.exitStatus() != QProcess::NormalExit || xmllint.exitCode() != 0) {
        return output.isEmpty() ? QStringLiteral("xmllint failed") : output;
    }
    return QString();
}

QString validateXmlText(QString const& xml, QString const& schemaName)
{
    QTemporaryFile file;
    if (!file.open()) {
        return QStringLiteral("cannot write a temporary file");
    }
    file.write(xml.toUtf8());
    file.flush();
    return validateXmlFile(file.fileName(), schemaName);
}

} // namespace zelkotest
