#pragma once

#include <QDateTime>
#include <QImage>
#include <QVector>
#include <massdatamanagement/zelkodatastreamconverter/imagefile.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <massdatamanagement/zelkodatastreamconverter/textfile.h>
#include <memory>

namespace zelkodatastreamconverter {

class FileInfoCallback;

/// Assembles the lines of image frames (FrameType::Image, layout in imageframe.h) into
/// pictures, writes each picture as a PNG (ImageFile) and notes it in the result document.
///
/// A picture is the run of lines with one image ID, width, pixel format and kind. It is
/// closed, and the next line starts a new one, when any of these changes, when a line comes
/// more than MaxLineGapSeconds after the previous one, and at the end (finish()). Lines are
/// placed by their index, so lines out of order land where they belong; a line index seen
/// before replaces the earlier line (the later reception wins, and is counted as repeated);
/// indexes never received stay white and are counted as missing. A picture reaching
/// MaxPictureHeight lines is written and continued in a new picture, whose line indexes count
/// on from there.
///
/// Pixels become 8-bit grey (1 and 8 bits per pixel), 16-bit grey, or RGB (colour, 16 bits as
/// RGB 5-6-5, 24 bits as bytes), as QImage holds them; the PNG keeps that depth.
///
/// Hellschreiber pictures arrive as glyph columns, one line a column, bottom pixel first: their
/// PNG shows the columns side by side as the tape does (one picture pixel row per line pixel,
/// bottom up), and HellschreiberReader reads their text, which goes to a text file
/// ("Hellschreiber_<yyyyMMdd_hhmmss>.txt", file code "Hellschreiber", one line a picture) and
/// into the picture's Info record. The picture is written whatever the reader made of it.
///
/// Each written picture adds an Info record to the current transmission at the picture's start
/// time, items "Picture" (the PNG's file name), "Kind", "Width", "Height", "MissingLines" and
/// "RepeatedLines", and for Hellschreiber "Text" and "Confidence" (one digit 0 to 9 a
/// character, 9 the surest); the transmission spans the pictures.
///
/// Messages (module "imagedatamodel", warning bit):
///   "processData: damaged image line (%1)"   a line whose header or pixels cannot be right,
///                                            with the reason; the line is skipped
class ImageDataModel : public NerikResultModel
{
public:
    static constexpr int MaxPictureHeight = 4096;
    static constexpr int MaxLineGapSeconds = 60;

    struct Counts
    {
        int pictures = 0;
        int lines = 0;
        int missingLines = 0;
        int repeatedLines = 0;
        int damagedLines = 0;
    };

    ImageDataModel();
    ~ImageDataModel() override;

    /// The directory of the pictures and the callback that hears of each PNG.
    void setOutput(QString const& directory, FileInfoCallback* callback);
    /// One frame (header and payload in host order). False for a frame of another type; a
    /// damaged line is skipped (traced, counted) and answers true.
    bool processData(QByteArray const& frame);
    /// Writes the picture being assembled, if any.
    void finish();

    Counts const& counts() const { return m_counts; }

private:
    struct Line;
    struct Picture
    {
        quint32 imageId = 0;
        quint32 width = 0;
        quint32 format = 0;
        quint32 firstIndex = 0; ///< the line index of row 0
        double frequency = 0.0;
        QDateTime start;
        QDateTime stop;
        QVector<QByteArray> rows; ///< packed pixels by row; empty: not received
        int received = 0;
        int repeated = 0;
    };

    bool readLine(QByteArray const& frame, Line& line, QString& reason) const;
    bool belongsToPicture(Line const& line) const;
    void startPicture(Line const& line, quint32 firstIndex);
    void addLine(Line const& line);
    void writePicture();
    QImage toImage(Picture const& picture) const;
    /// The text of a Hellschreiber picture, written to the text file; its confidence digits.
    QString readHellschreiber(QImage const& columns, QString& confidence);
    void notePicture(Picture const& picture, QString const& fileName, QSize size,
                     QString const& text, QString const& confidence);

    std::unique_ptr<Picture> m_picture;
    std::unique_ptr<ImageFile> m_file;
    std::unique_ptr<TextFile> m_textFile;
    Counts m_counts;
};

} // namespace zelkodatastreamconverter
