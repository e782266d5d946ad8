#include "hellschreiberreader.h"

#include "hellschreiberfont.h"

#include <array>
#include <cmath>
#include <limits>

namespace zelkodatastreamconverter {

namespace {

using Font = HellschreiberFont;
using Dots = std::array<double, Font::Rows>; // ink share of each row of one column

// The ink share of each font row in one column, bottom-first pixels mapped onto top-first rows.
Dots dotsOf(QByteArray const& column)
{
    Dots dots{};
    std::array<int, Font::Rows> pixels{};
    int const height = column.size();
    for (int y = 0; y < height; ++y) {
        int const row = Font::Rows - 1 - (y * Font::Rows) / height;
        pixels[std::size_t(row)] += 1;
        dots[std::size_t(row)] += quint8(column[y]) < 128 ? 1.0 : 0.0;
    }
    for (std::size_t row = 0; row < dots.size(); ++row) {
        dots[row] = pixels[row] > 0 ? dots[row] / pixels[row] : 0.0;
    }
    return dots;
}

double inkOf(Dots const& dots)
{
    double sum = 0.0;
    for (double const dot : dots) {
        sum += dot;
    }
    return sum;
}

// The phase (0 to 6) whose first and last cell columns hold the least ink.
int bestPhase(std::vector<Dots> const& columns)
{
    int best = 0;
    double leastInk = std::numeric_limits<double>::max();
    for (int phase = 0; phase < Font::Columns; ++phase) {
        double ink = 0.0;
        for (std::size_t c = std::size_t(phase); c < columns.size(); ++c) {
            int const inCell = int(c - std::size_t(phase)) % Font::Columns;
            if (inCell == 0 || inCell == Font::Columns - 1) {
                ink += inkOf(columns[c]);
            }
        }
        if (ink < leastInk) {
            leastInk = ink;
            best = phase;
        }
    }
    return best;
}

double distance(std::vector<Dots> const& columns, std::size_t first, Font::Glyph const& glyph)
{
    double sum = 0.0;
    for (int c = 0; c < Font::Columns; ++c) {
        Dots const& dots = columns[first + std::size_t(c)];
        for (int row = 0; row < Font::Rows; ++row) {
            sum += std::fabs(dots[std::size_t(row)] - (Font::inked(glyph, c, row) ? 1.0 : 0.0));
        }
    }
    return sum;
}

HellschreiberReader::Character readCell(std::vector<Dots> const& columns, std::size_t first)
{
    // A space is the blank cell: its distance is the cell's ink, and it competes like a glyph,
    // so that a few noisy dots do not make a character of it.
    double best = 0.0;
    for (int c = 0; c < Font::Columns; ++c) {
        best += inkOf(columns[first + std::size_t(c)]);
    }
    double second = std::numeric_limits<double>::max();
    char character = ' ';
    for (Font::Glyph const& glyph : Font::glyphs()) {
        double const d = distance(columns, first, glyph);
        if (d < best) {
            second = best;
            best = d;
            character = glyph.character;
        } else if (d < second) {
            second = d;
        }
    }
    // How clearly it won: the margin to the next best, relative to their sum.
    double const confidence = second + best > 0.0 ? (second - best) / (second + best) : 0.0;
    return {QLatin1Char(character), confidence, int(first)};
}

} // namespace

std::vector<HellschreiberReader::Character>
HellschreiberReader::read(std::vector<QByteArray> const& columns)
{
    std::vector<Dots> dots;
    dots.reserve(columns.size());
    for (QByteArray const& column : columns) {
        dots.push_back(dotsOf(column));
    }
    std::vector<Character> characters;
    std::size_t const phase = std::size_t(bestPhase(dots));
    for (std::size_t first = phase; first + Font::Columns <= dots.size(); first += Font::Columns) {
        characters.push_back(readCell(dots, first));
    }
    return characters;
}

QString HellschreiberReader::text(std::vector<Character> const& characters)
{
    QString text;
    for (Character const& c : characters) {
        text += c.character;
    }
    return text;
}

QString HellschreiberReader::confidenceDigits(std::vector<Character> const& characters)
{
    QString digits;
    for (Character const& c : characters) {
        digits += QChar(u'0' + int(std::lround(qBound(0.0, c.confidence, 1.0) * 9.0)));
    }
    return digits;
}

} // namespace zelkodatastreamconverter
