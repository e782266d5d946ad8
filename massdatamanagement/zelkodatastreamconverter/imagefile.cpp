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
    bool written = false;
    {
        QFile staged(stagedPath);
        if (staged.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            QImageWriter writer(&staged, "png");
            written = writer.write(image) && flushToDisk(staged);
            if (!written) {
                trace().warning(QStringLiteral("writeImage: cannot write %1: %2")
                                    .arg(stagedPath, writer.errorString()),
                                __LINE__);
            }
        } else {
            trace().warning(QStringLiteral("writeImage: cannot write %1: %2")
                                .arg(stagedPath, staged.errorString()),
                            __LINE__);
        }
    }
    bool const placed = written && createFileFrom(stagedPath);
    QFile::remove(stagedPath);
    if (placed) {
        m_lastPath = getOpenFile()->fileName();
        closeFile(false);
    }
    return placed;
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
