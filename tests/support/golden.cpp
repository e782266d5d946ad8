#include "golden.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>

namespace zelkotest {

QByteArray readFile(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString compareWithGolden(QByteArray const& actual, QString const& relativePath)
{
    QString const path = QStringLiteral(ZELKO_GOLDEN_DIR "/") + relativePath;
    if (qEnvironmentVariableIntValue("ZELKO_REGENERATE_GOLDEN") == 1) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(actual) < 0) {
            return QStringLiteral("cannot regenerate %1").arg(path);
        }
        return QString();
    }
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly)) {
        return QStringLiteral("no golden file %1 (run with ZELKO_REGENERATE_GOLDEN=1)").arg(path);
    }
    QByteArray const expected = in.readAll();
    if (expected == actual) {
        return QString();
    }
    QList<QByteArray> const expectedLines = expected.split('\n');
    QList<QByteArray> const actualLines = actual.split('\n');
    for (int i = 0; i < std::max(expectedLines.size(), actualLines.size()); ++i) {
        QByteArray const e = expectedLines.value(i);
        QByteArray const a = actualLines.value(i);
        if (e != a) {
            return QStringLiteral("%1:%2: expected \"%3\", got \"%4\"")
                .arg(relativePath)
                .arg(i + 1)
                .arg(QString::fromUtf8(e), QString::fromUtf8(a));
        }
    }
    return QStringLiteral("%1: differs").arg(relativePath);
}

} // namespace zelkotest
