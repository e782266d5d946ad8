#pragma once

#include <QDateTime>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>

class QImage;

namespace zelkodatastreamconverter {

/// One picture as a PNG file, "Image_<yyyyMMdd_hhmmss><suffix>.png" in the output directory,
/// reported as a REPORTKIT::Picture with the file code the owner sets ("WeatherFax", ...) and
/// the picture's own start and stop time (its first and last line), not the file's.
///
/// The PNG goes to a staged file first and takes its name only when complete, so that the
/// name never shows half a picture. A picture is never split: each writeImage() completes its
/// file, and the next one creates a new file.
///
/// Messages (module "imagefile", warning bit):
///   "writeImage: cannot write %1: %2"   the PNG could not be written (full disk, ...)
class ImageFile : public BinaryFile
{
public:
    explicit ImageFile(FileInfoCallback* callback);

    /// Writes the picture and completes its file. False when nothing could be written.
    bool writeImage(QImage const& image, QDateTime const& start, QDateTime const& stop);
    /// The path of the last picture written; empty before the first.
    QString const& lastPath() const { return m_lastPath; }

protected:
    void sendFileInfo(bool complete) override;
    /// The picture's times instead of the file's: an analyst looks for when it was received.
    void fillRecord(REPORTKIT::FileRecord& record, bool complete) const override;

private:
    /// The PNG into a new file at path; false with the reason when it could not be written.
    static bool writePng(QString const& path, QImage const& image, QString& failure);

    QDateTime m_pictureStart;
    QDateTime m_pictureStop;
    QString m_lastPath;
};

} // namespace zelkodatastreamconverter
