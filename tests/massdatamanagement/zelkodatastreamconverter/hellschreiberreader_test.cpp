// Hellschreiber columns into text: glyph cells at any phase, noise, and the confidence order.

#include <QRandomGenerator>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/hellschreiberfont.h>
#include <massdatamanagement/zelkodatastreamconverter/hellschreiberreader.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>

using namespace zelkodatastreamconverter;

namespace {

// The columns a transmitter keys for text: 14 levels a column, bottom first, ink 0, paper 255.
std::vector<QByteArray> columnsOf(QString const& text, int leadingBlankColumns = 0)
{
    std::vector<QByteArray> columns(std::size_t(leadingBlankColumns), QByteArray(14, char(255)));
    for (QChar const c : text) {
        HellschreiberFont::Glyph const* glyph = HellschreiberFont::find(c);
        for (int column = 0; column < HellschreiberFont::Columns; ++column) {
            QByteArray pixels(14, char(255));
            for (int row = 0; glyph && row < HellschreiberFont::Rows; ++row) {
                if (HellschreiberFont::inked(*glyph, column, row)) {
                    pixels[12 - 2 * row] = pixels[13 - 2 * row] = 0;
                }
            }
            columns.push_back(pixels);
        }
    }
    return columns;
}

void flip(std::vector<QByteArray>& columns, double share, quint32 seed)
{
    QRandomGenerator random(seed);
    for (QByteArray& column : columns) {
        for (char& pixel : column) {
            if (random.generateDouble() < share) {
                pixel = char(255 - quint8(pixel));
            }
        }
    }
}

struct ReadRow
{
    char const* name;
    char const* text;
    int leadingBlanks;
    double noise;
    char const* expected;
};

using HellText = testing::TestWithParam<ReadRow>;

TEST_P(HellText, ReadsBack)
{
    std::vector<QByteArray> columns =
        columnsOf(QString::fromLatin1(GetParam().text), GetParam().leadingBlanks);
    flip(columns, GetParam().noise, 7);
    EXPECT_EQ(HellschreiberReader::text(HellschreiberReader::read(columns)),
              QString::fromLatin1(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, HellText,
    testing::Values(ReadRow{"every_glyph", "ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789 .,-/?=+", 0, 0.0,
                            "ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789 .,-/?=+"},
                    ReadRow{"phase_three", "CQ DE DK0ZL", 3, 0.0, "CQ DE DK0ZL"},
                    ReadRow{"phase_six", "CQ DE DK0ZL", 6, 0.0, "CQ DE DK0ZL"},
                    ReadRow{"lower_case_is_sent_as_upper", "cq", 0, 0.0, "CQ"},
                    ReadRow{"five_percent_noise", "FELD HELL TEST 73", 0, 0.05,
                            "FELD HELL TEST 73"}),
    zelkotest::RowName());

// A cleaner cell never scores lower than a more distorted copy of the same character.
TEST(HellConfidence, FallsAsTheCellIsDistorted)
{
    for (HellschreiberFont::Glyph const& glyph : HellschreiberFont::glyphs()) {
        double previous = 2.0;
        for (int flipped = 0; flipped <= 4; ++flipped) {
            std::vector<QByteArray> columns = columnsOf(QString(QLatin1Char(glyph.character)));
            // Each round flips the middle dot of one more of the glyph's columns.
            for (int i = 0; i < flipped; ++i) {
                QByteArray& column = columns[std::size_t(1 + i)];
                column[6] = column[7] = char(255 - quint8(column[6]));
            }
            auto const read = HellschreiberReader::read(columns);
            ASSERT_EQ(read.size(), 1u);
            if (read[0].character == QLatin1Char(glyph.character)) {
                EXPECT_LE(read[0].confidence, previous) << glyph.character << " " << flipped;
                previous = read[0].confidence;
            }
        }
    }
    // Ink is darker than the middle level: 128 is paper, 127 ink.
    for (int level : {128, 127}) {
        std::vector<QByteArray> const tape(7, QByteArray(14, char(level)));
        EXPECT_EQ(HellschreiberReader::text(HellschreiberReader::read(tape)) == " ", level == 128);
    }
    // Blank tape is read from its first column on: one cell, a space.
    EXPECT_EQ(HellschreiberReader::text(HellschreiberReader::read(columnsOf(" "))),
              QStringLiteral(" "));
    EXPECT_EQ(HellschreiberReader::confidenceDigits(HellschreiberReader::read(columnsOf("E "))),
              QStringLiteral("99"));
}

} // namespace
