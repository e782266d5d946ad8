// Image lines into pictures: assembly rules, pixel formats read back from the PNGs, damaged
// lines, and the samples converted end to end against their golden documents.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <massdatamanagement/zelkodatastreamconverter/imagedataconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/imagedatamodel.h>
#include <nerikresultdataxml/info.h>
#include <nerikresultdataxml/transmission.h>
#include <recordingwriter/imagelinepayload.h>
#include <recordingwriter/recordingwriter.h>
#include <reportkit/picture.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>

using namespace zelkodatastreamconverter;
using zelkorecording::ImageLine;

namespace {

// A line of an 8-bit grey picture whose pixels all read `level`.
ImageLine line(quint32 index, quint32 id = 1, quint32 width = 4, qint64 secondsAfter = -1)
{
    ImageLine l;
    l.microseconds =
        1700000000000000ull + quint64(secondsAfter < 0 ? index : quint32(secondsAfter)) * 1000000u;
    l.imageId = id;
    l.lineIndex = index;
    l.width = width;
    l.kind = ImageKind::WeatherFax;
    l.pixels = QByteArray(int(width), char(index * 10));
    return l;
}

QByteArray frameOf(ImageLine const& l, qint64 claimedBytes = -1)
{
    return zelkorecording::RecordingWriter::frameBytes(
        FrameType::Image, zelkorecording::imageLinePayload(l, claimedBytes));
}

/// "WxH missing/repeated" of every picture the model noted, in order.
QStringList pictures(ImageDataModel const& model)
{
    QStringList out;
    NerikResultDataXml::Transmission const* t = model.getCurrentTransmission();
    for (NerikResultDataXml::Info const* info :
         t ? t->GetInfos() : QList<NerikResultDataXml::Info*>()) {
        out << QStringLiteral("%1x%2 %3/%4")
                   .arg(info->GetItem("Width"), info->GetItem("Height"),
                        info->GetItem("MissingLines"), info->GetItem("RepeatedLines"));
    }
    return out;
}

struct AssemblyRow
{
    char const* name;
    std::vector<ImageLine> lines;
    QStringList expected;
};

using Assembly = testing::TestWithParam<AssemblyRow>;

TEST_P(Assembly, MakesThePictures)
{
    ImageDataModel model;
    for (ImageLine const& l : GetParam().lines) {
        ASSERT_TRUE(model.processData(frameOf(l)));
    }
    model.finish();
    EXPECT_EQ(pictures(model), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, Assembly,
    testing::Values(
        AssemblyRow{"in_order", {line(0), line(1), line(2)}, {"4x3 0/0"}},
        AssemblyRow{"missing_lines_stay_blank", {line(0), line(3)}, {"4x4 2/0"}},
        AssemblyRow{"a_repeated_line_replaces", {line(0), line(1), line(1)}, {"4x2 0/1"}},
        AssemblyRow{"out_of_order", {line(2), line(0), line(1)}, {"4x3 0/0"}},
        AssemblyRow{"reception_begins_late", {line(5), line(6)}, {"4x7 5/0"}},
        AssemblyRow{"new_id", {line(0), line(1, 2)}, {"4x1 0/0", "4x2 1/0"}},
        AssemblyRow{"new_width", {line(0), line(1, 1, 8)}, {"4x1 0/0", "8x2 1/0"}},
        AssemblyRow{"gap_of_a_minute_joins", {line(0, 1, 4, 0), line(1, 1, 4, 60)}, {"4x2 0/0"}},
        AssemblyRow{"a_minute_earlier_joins", {line(0, 1, 4, 60), line(1, 1, 4, 0)}, {"4x2 0/0"}},
        AssemblyRow{"gap_of_a_minute_and_a_second_splits",
                    {line(0, 1, 4, 0), line(1, 1, 4, 61)},
                    {"4x1 0/0", "4x2 1/0"}},
        AssemblyRow{"earlier_line_than_the_part", {line(4100), line(5)}, {"4x5 4/0", "4x6 5/0"}}),
    zelkotest::RowName());

TEST(ImageDataModel, TallPicturesContinueInANewPicture)
{
    ImageDataModel model;
    for (quint32 index = 0; index <= ImageDataModel::MaxPictureHeight; ++index) {
        model.processData(frameOf(line(index, 1, 1, 0)));
    }
    model.finish();
    EXPECT_EQ(pictures(model), (QStringList{"1x4096 0/0", "1x1 0/0"}));
}

struct DamageRow
{
    char const* name;
    QByteArray frame;
    char const* reason;
};

using DamagedLine = testing::TestWithParam<DamageRow>;

TEST_P(DamagedLine, IsSkippedAndTraced)
{
    zelkotest::TraceCapture capture;
    ImageDataModel model;
    EXPECT_TRUE(model.processData(GetParam().frame));
    EXPECT_EQ(model.counts().damagedLines, 1);
    EXPECT_EQ(capture.messages(), QStringList{QStringLiteral("processData: damaged image line (") +
                                              QString::fromUtf8(GetParam().reason) + ')'});
}

ImageLine withDepth(quint32 bits)
{
    ImageLine l = line(0);
    l.bitsPerPixel = bits;
    return l;
}

INSTANTIATE_TEST_SUITE_P(
    Frames, DamagedLine,
    testing::Values(DamageRow{"header_only", frameOf(line(0)).left(FrameHeaderSize),
                              "0 bytes, a line header has 40"},
                    DamageRow{"header_cut", frameOf(line(0)).left(FrameHeaderSize + 36),
                              "36 bytes, a line header has 40"},
                    DamageRow{"width_zero", frameOf(line(0, 1, 0)), "width 0"},
                    DamageRow{"width_one_past_the_maximum", frameOf(line(0, 1, MaxImageWidth + 1)),
                              "width 8193"},
                    DamageRow{"depth_of_two_bits", frameOf(withDepth(2)), "2 bits per pixel"},
                    DamageRow{"pixels_short", frameOf(withDepth(16)),
                              "4 pixel bytes for 4 pixels in 4 bytes"},
                    DamageRow{"pixel_count_beyond_the_frame", frameOf(line(0), 400),
                              "400 pixel bytes for 4 pixels in 4 bytes"}),
    zelkotest::RowName());

TEST(ImageDataModel, OtherFrameTypesAreRefused)
{
    ImageDataModel model;
    EXPECT_FALSE(model.processData(
        zelkorecording::RecordingWriter::frameBytes(FrameType::DecodedText, QByteArray(40, 0))));
    EXPECT_FALSE(model.processData(QByteArray(10, 0)));
}

// Each depth and colour read back from its PNG, pixel by pixel. Lines 0 and 2 of four pixels
// (the row's two repeated) leave line 1 missing: it stays white, so no row spills into the
// next (four pixels fill a row of every format to the byte).
struct PixelRow
{
    char const* name;
    quint32 bits;
    bool colour;
    QByteArray pixels; // of a line two pixels wide
    QRgb first;
    QRgb second;
};

using PixelFormats = testing::TestWithParam<PixelRow>;

TEST_P(PixelFormats, ReadBackFromThePng)
{
    QTemporaryDir dir;
    FileInfoList files;
    ImageDataModel model;
    model.setOutput(dir.path(), &files);
    for (quint32 index : {0u, 2u}) {
        ImageLine l = line(index, 1, 4);
        l.bitsPerPixel = GetParam().bits;
        l.colour = GetParam().colour;
        l.pixels = GetParam().bits == 1 ? GetParam().pixels : GetParam().pixels.repeated(2);
        ASSERT_TRUE(model.processData(frameOf(l)));
    }
    model.finish();
    ASSERT_EQ(files.getResults().GetPicture().size(), 1u);
    QImage const image(files.getResults().GetPicture().front().GetURL());
    ASSERT_EQ(image.size(), QSize(4, 3));
    EXPECT_EQ(image.pixel(0, 2), GetParam().first);
    EXPECT_EQ(image.pixel(1, 2), GetParam().second);
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(image.pixel(x, 1), qRgb(255, 255, 255)) << "x " << x;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Depths, PixelFormats,
    testing::Values(PixelRow{"one_bit_set_is_white", 1, false, QByteArray("\xA0", 1),
                             qRgb(255, 255, 255), qRgb(0, 0, 0)},
                    PixelRow{"grey_8", 8, false, QByteArray("\x10\xF0", 2), qRgb(16, 16, 16),
                             qRgb(240, 240, 240)},
                    PixelRow{"grey_16", 16, false, QByteArray("\x10\x10\xF0\xF0", 4),
                             qRgb(16, 16, 16), qRgb(240, 240, 240)},
                    PixelRow{"rgb_565", 16, true, QByteArray("\x00\xF8\xE0\x07", 4),
                             qRgb(255, 0, 0), qRgb(0, 255, 0)},
                    PixelRow{"rgb_888", 24, true, QByteArray("\x01\x02\x03\xFE\xFD\xFC", 6),
                             qRgb(1, 2, 3), qRgb(254, 253, 252)},
                    PixelRow{"grey_24_keeps_the_upper_bits", 24, false,
                             QByteArray("\x10\x10\xFF\xF0\xF0\xFF", 6), qRgb(16, 16, 16),
                             qRgb(240, 240, 240)}),
    zelkotest::RowName());

} // namespace

namespace {

// The image samples through ImageDataConverter: the records, the result document and the
// Hellschreiber text as one golden dump, the pictures pixel by pixel against golden PNGs.
using ImageSamples = testing::TestWithParam<char const*>;

TEST_P(ImageSamples, ConvertToTheGoldenPicturesAndDocument)
{
    Clock::Override const clock(QDateTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime));
    QTemporaryDir out;
    JobSpec::Settings settings;
    settings.SetValidate(false);
    QString const name = QString::fromLatin1(GetParam());
    REPORTKIT::Results const results = ImageDataConverter().convertFile(
        QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/%1.zdr").arg(name), out.path(), settings, 0);
    QByteArray dump;
    auto const list = [&dump](REPORTKIT::FileRecord const& r) {
        dump += QStringLiteral("%1 %2 %3 %4 %5 %6\n")
                    .arg(QFileInfo(r.GetURL()).fileName(), r.GetType(),
                         r.GetMetadata().GetDetail().GetCode(),
                         r.GetMetadata().GetStartTime().toString(Qt::ISODateWithMs))
                    .arg(r.GetMetadata().GetStopTime().isValid())
                    .arg(r.GetMetadata().GetDetail().GetFrequency().GetValue(), 0, 'f', 0)
                    .toUtf8();
    };
    for (auto const& record : results.GetPicture()) {
        list(record);
        QImage const golden(QStringLiteral(ZELKO_GOLDEN_DIR "/image/%1.png").arg(name));
        QImage const written(record.GetURL());
        if (qEnvironmentVariableIntValue("ZELKO_REGENERATE_GOLDEN") == 1) {
            written.save(QStringLiteral(ZELKO_GOLDEN_DIR "/image/%1.png").arg(name));
        } else {
            EXPECT_EQ(written.convertToFormat(QImage::Format_RGB32),
                      golden.convertToFormat(QImage::Format_RGB32));
        }
    }
    for (auto const& record : results.GetBinary()) {
        list(record);
        dump += zelkotest::readFile(record.GetURL());
    }
    for (auto const& record : results.GetText()) {
        list(record);
        EXPECT_EQ(zelkotest::validateXmlFile(record.GetURL(), "nerikresultdata.xsd"), QString());
        dump += zelkotest::readFile(record.GetURL());
    }
    EXPECT_EQ(zelkotest::compareWithGolden(dump, QStringLiteral("image/%1.txt").arg(name)),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, ImageSamples,
                         testing::Values("weatherfax-chart", "feldhell-call"),
                         [](auto const& info) {
                             return QString::fromLatin1(info.param).replace('-', '_').toStdString();
                         });

} // namespace
