#include "imagedatamodel.h"

#include "frameformat.h"
#include "framevalues.h"
#include "hellschreiberreader.h"
#include "imageframe.h"
#include "moduletrace.h"

#include <QFileInfo>
#include <cstring>
#include <nerikresultdataxml/info.h>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("imagedatamodel"));
    return instance;
}

template <typename T>
T lineValue(QByteArray const& frame, int word)
{
    return readAt<T>(frame, FrameHeaderSize + 4 * word);
}

quint32 wordAt(QByteArray const& frame, int word)
{
    return lineValue<quint32>(frame, word);
}

QString kindName(quint32 kind)
{
    switch (kind) {
    case ImageKind::WeatherFax:
        return QStringLiteral("WeatherFax");
    case ImageKind::SatelliteApt:
        return QStringLiteral("SatelliteAPT");
    case ImageKind::Sstv:
        return QStringLiteral("SSTV");
    case ImageKind::Hellschreiber:
        return QStringLiteral("Hellschreiber");
    default:
        return QStringLiteral("Image");
    }
}

QImage::Format imageFormat(quint32 format)
{
    switch (bitsPerPixel(format)) {
    case 16:
        return isColour(format) ? QImage::Format_RGB16 : QImage::Format_Grayscale16;
    case 24:
        return isColour(format) ? QImage::Format_RGB888 : QImage::Format_Grayscale16;
    default:
        return QImage::Format_Grayscale8;
    }
}

// One packed line into one row of the picture's QImage.
void unpackRow(QByteArray const& packed, quint32 format, int width, uchar* row)
{
    auto const* in = reinterpret_cast<uchar const*>(packed.constData());
    switch (bitsPerPixel(format)) {
    case 1:
        for (int x = 0; x < width; ++x) {
            row[x] = (in[x / 8] & (0x80u >> (x % 8))) ? 0xFF : 0x00;
        }
        break;
    case 24:
        if (!isColour(format)) {
            // Three bytes of grey, most significant first: PNG keeps the upper sixteen bits.
            auto* grey = reinterpret_cast<quint16*>(row);
            for (int x = 0; x < width; ++x) {
                grey[x] = quint16((in[3 * x] << 8) | in[3 * x + 1]);
            }
            break;
        }
        std::memcpy(row, in, std::size_t(width) * 3);
        break;
    default:
        std::memcpy(row, in, imageLineBytes(quint32(width), bitsPerPixel(format)));
        break;
    }
}

// Lines as columns, side by side, each column's first pixel at the bottom.
QImage asColumns(QImage const& lines)
{
    QImage const grey = lines.convertToFormat(QImage::Format_Grayscale8);
    QImage columns(grey.height(), grey.width(), QImage::Format_Grayscale8);
    for (int line = 0; line < grey.height(); ++line) {
        uchar const* in = grey.constScanLine(line);
        for (int pixel = 0; pixel < grey.width(); ++pixel) {
            columns.scanLine(grey.width() - 1 - pixel)[line] = in[pixel];
        }
    }
    return columns;
}

} // namespace

struct ImageDataModel::Line
{
    QDateTime time;
    double frequency = 0.0;
    quint32 imageId = 0;
    quint32 index = 0;
    quint32 width = 0;
    quint32 format = 0;
    QByteArray pixels;
};

ImageDataModel::ImageDataModel() = default;

ImageDataModel::~ImageDataModel() = default;

void ImageDataModel::setOutput(QString const& directory, FileInfoCallback* callback)
{
    m_file = std::make_unique<ImageFile>(callback);
    m_file->setDirectory(directory);
    m_textFile = std::make_unique<TextFile>(QStringLiteral("Hellschreiber"), 1 << 30, callback);
    m_textFile->setFileName(QStringLiteral("Hellschreiber_%1%2.txt"));
    m_textFile->setDirectory(directory);
}

bool ImageDataModel::processData(QByteArray const& frame)
{
    quint32 const type =
        frame.size() >= FrameHeaderSize ? readAt<quint32>(frame, FrameTypeOffset) : 0u;
    if (type != FrameType::Image) {
        return false;
    }
    Line line;
    QString reason;
    if (!readLine(frame, line, reason)) {
        ++m_counts.damagedLines;
        trace().warning(QStringLiteral("processData: damaged image line (%1)").arg(reason),
                        __LINE__);
        return true;
    }
    if (m_picture && !belongsToPicture(line)) {
        writePicture();
    }
    if (!m_picture) {
        // A picture starts at the part of MaxPictureHeight lines its first line falls in, so
        // that the parts of one long picture line up however its reception began.
        startPicture(line, line.index - line.index % MaxPictureHeight);
    }
    addLine(line);
    return true;
}

void ImageDataModel::finish()
{
    if (m_picture) {
        writePicture();
    }
    if (m_textFile) {
        m_textFile->closeFile(false);
    }
}

bool ImageDataModel::readLine(QByteArray const& frame, Line& line, QString& reason) const
{
    int const payload = frame.size() - FrameHeaderSize;
    if (payload < ImageLineHeaderBytes) {
        reason =
            QStringLiteral("%1 bytes, a line header has %2").arg(payload).arg(ImageLineHeaderBytes);
        return false;
    }
    using W = ImageLineWord::Value;
    line.width = wordAt(frame, W::Width);
    line.format = wordAt(frame, W::Format);
    quint32 const needed = imageLineBytes(line.width, bitsPerPixel(line.format));
    quint32 const stated = wordAt(frame, W::PixelBytes);
    if (line.width == 0 || line.width > MaxImageWidth) {
        reason = QStringLiteral("width %1").arg(line.width);
        return false;
    }
    if (needed == 0) {
        reason = QStringLiteral("%1 bits per pixel").arg(bitsPerPixel(line.format));
        return false;
    }
    if (stated < needed || stated > quint32(payload - ImageLineHeaderBytes)) {
        reason = QStringLiteral("%1 pixel bytes for %2 pixels in %3 bytes")
                     .arg(stated)
                     .arg(line.width)
                     .arg(payload - ImageLineHeaderBytes);
        return false;
    }
    // 64-bit values stand as two words, low word first, as in the other frames.
    line.time = timeFromMicroseconds(lineValue<quint64>(frame, W::TimeLow));
    line.frequency = double(lineValue<quint64>(frame, W::FrequencyLow));
    line.imageId = wordAt(frame, W::ImageId);
    line.index = wordAt(frame, W::LineIndex);
    line.pixels = frame.mid(FrameHeaderSize + ImageLineHeaderBytes, int(needed));
    return true;
}

bool ImageDataModel::belongsToPicture(Line const& line) const
{
    Picture const& p = *m_picture;
    qint64 const gap = p.stop.msecsTo(line.time);
    return line.imageId == p.imageId && line.width == p.width && line.format == p.format &&
           line.index >= p.firstIndex && line.index - p.firstIndex < quint32(MaxPictureHeight) &&
           gap <= qint64(MaxLineGapSeconds) * 1000 && gap >= -qint64(MaxLineGapSeconds) * 1000;
}

void ImageDataModel::startPicture(Line const& line, quint32 firstIndex)
{
    m_picture = std::make_unique<Picture>();
    m_picture->imageId = line.imageId;
    m_picture->width = line.width;
    m_picture->format = line.format;
    m_picture->firstIndex = firstIndex;
    m_picture->frequency = line.frequency;
    m_picture->start = line.time;
    m_picture->stop = line.time;
}

void ImageDataModel::addLine(Line const& line)
{
    Picture& p = *m_picture;
    int const row = int(line.index - p.firstIndex);
    if (row >= p.rows.size()) {
        p.rows.resize(row + 1);
    }
    if (p.rows[row].isEmpty()) {
        ++p.received;
    } else {
        ++p.repeated;
        ++m_counts.repeatedLines;
    }
    p.rows[row] = line.pixels;
    p.start = std::min(p.start, line.time);
    p.stop = std::max(p.stop, line.time);
    ++m_counts.lines;
}

QImage ImageDataModel::toImage(Picture const& picture) const
{
    QImage image(int(picture.width), picture.rows.size(), imageFormat(picture.format));
    image.fill(Qt::white);
    for (int y = 0; y < picture.rows.size(); ++y) {
        if (!picture.rows[y].isEmpty()) {
            unpackRow(picture.rows[y], picture.format, int(picture.width), image.scanLine(y));
        }
    }
    return image;
}

void ImageDataModel::writePicture()
{
    std::unique_ptr<Picture> const picture = std::move(m_picture);
    m_counts.missingLines += picture->rows.size() - picture->received;
    ++m_counts.pictures;
    QImage image = toImage(*picture);
    QString text;
    QString confidence;
    if (kindOf(picture->format) == ImageKind::Hellschreiber) {
        image = asColumns(image);
        text = readHellschreiber(image, confidence);
    }
    QString fileName;
    if (m_file) {
        m_file->setFileCode(kindName(kindOf(picture->format)));
        m_file->setFrequency(picture->frequency);
        if (m_file->writeImage(image, picture->start, picture->stop)) {
            fileName = QFileInfo(m_file->lastPath()).fileName();
        }
    }
    notePicture(*picture, fileName, image.size(), text, confidence);
}

QString ImageDataModel::readHellschreiber(QImage const& columns, QString& confidence)
{
    // The reader takes each column bottom first, as it was sent.
    std::vector<QByteArray> sent(std::size_t(columns.width()), QByteArray(columns.height(), 0));
    for (int y = 0; y < columns.height(); ++y) {
        uchar const* row = columns.constScanLine(y);
        for (int x = 0; x < columns.width(); ++x) {
            sent[std::size_t(x)][columns.height() - 1 - y] = char(row[x]);
        }
    }
    auto const characters = HellschreiberReader::read(sent);
    QString const text = HellschreiberReader::text(characters);
    confidence = HellschreiberReader::confidenceDigits(characters);
    if (m_textFile) {
        if (QTextStream* const stream = m_textFile->getTextStream()) {
            *stream << text << '\n';
            m_textFile->addFileSize(text.size() + 1);
        }
    }
    return text;
}

void ImageDataModel::notePicture(Picture const& picture, QString const& fileName, QSize size,
                                 QString const& text, QString const& confidence)
{
    Transmission* transmission = getCurrentTransmission();
    if (transmission == nullptr) {
        transmission = createTransmission(picture.start);
    }
    transmission->SetStopTime(std::max(transmission->GetStopTime(), picture.stop));
    auto* info = new NerikResultDataXml::Info(picture.start);
    info->SetItem(QStringLiteral("Picture"), fileName);
    info->SetItem(QStringLiteral("Kind"), kindName(kindOf(picture.format)));
    info->SetItem(QStringLiteral("Width"), QString::number(size.width()));
    info->SetItem(QStringLiteral("Height"), QString::number(size.height()));
    info->SetItem(QStringLiteral("MissingLines"),
                  QString::number(picture.rows.size() - picture.received));
    info->SetItem(QStringLiteral("RepeatedLines"), QString::number(picture.repeated));
    if (kindOf(picture.format) == ImageKind::Hellschreiber) {
        info->SetItem(QStringLiteral("Text"), text);
        info->SetItem(QStringLiteral("Confidence"), confidence);
    }
    transmission->AddInfo(info);
    getEstimateDataSize() += 256 + 2 * text.size();
}

} // namespace zelkodatastreamconverter
