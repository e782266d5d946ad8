#include "imagefile.h"

#include "moduletrace.h"

#include <QImage>
#include <QImageWriter>
#include <reportkit/picture.h>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("imagefile"));
    return instance;
}

} // namespace

ImageFile::ImageFile(FileInfoCallback* callback)
    : BinaryFile(QStringLiteral("Image"), QStringLiteral("Image"), 0, callback)
{
    setFileName(QStringLiteral("Image_%1%2.png"));
}

bool ImageFile::writeImage(QImage const& image, QDateTime const& start, QDateTime const& stop)
{
    m_pictureStart = start;
    m_pictureStop = stop;
    QString const stagedPath = stagedFilePath(getDirectory());
    QString failure;
    bool const written = writePng(stagedPath, image, failure);
    if (!written) {
        trace().warning(QStringLiteral("writeImage: cannot write %1: %2").arg(stagedPath, failure),
                        __LINE__);
    }
    bool const placed = written && createFileFrom(stagedPath);
    QFile::remove(stagedPath);
    if (placed) {
        m_lastPath = getOpenFile()->fileName();
        closeFile(false);
    }
    return placed;
}

bool ImageFile::writePng(QString const& path, QImage const& image, QString& failure)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        failure = file.errorString();
        return false;
    }
    QImageWriter writer(&file, "png");
    if (writer.write(image) && flushToDisk(file)) {
        return true;
    }
    failure = writer.errorString();
    return false;
}

void ImageFile::sendFileInfo(bool complete)
{
    REPORTKIT::Picture record;
    record.SetType(getFileType());
    deliverRecord(record, complete, trace());
}

void ImageFile::fillRecord(REPORTKIT::FileRecord& record, bool complete) const
{
    BinaryFile::fillRecord(record, complete);
    record.GetMetadata().SetStartTime(m_pictureStart);
    record.GetMetadata().SetStopTime(complete ? m_pictureStop : QDateTime());
}

} // namespace zelkodatastreamconverter
