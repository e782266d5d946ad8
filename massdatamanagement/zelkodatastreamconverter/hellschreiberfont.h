#pragma once

#include <QChar>
#include <array>
#include <vector>

namespace zelkodatastreamconverter {

/// The characters a Hellschreiber (Feld-Hell) receiver prints, as glyphs of the mode's
/// character cell: 7 columns sent one after the other, each 7 rows tall, the glyph in the five
/// middle columns (the first and last stay blank, which is what keeps characters apart and
/// lets a reader find where a character begins). Our design of the glyphs follows the plain
/// 5 by 7 dot-matrix letters that the mode's published descriptions show: A to Z, 0 to 9 and
/// . , - / ? = + (a blank cell is a space). Any two glyphs differ in at least three dots.
class HellschreiberFont
{
public:
    static constexpr int Columns = 7; ///< columns of a character cell
    static constexpr int Rows = 7;

    struct Glyph
    {
        char character;
        /// The five inked columns, bit 0 the top row.
        std::array<quint8, 5> columns;
    };

    static std::vector<Glyph> const& glyphs();
    /// The glyph of a character (upper case); null for one the font does not have.
    static Glyph const* find(QChar character);
    /// Whether row (0 = top) of cell column (0 to 6) is inked for the glyph.
    static bool inked(Glyph const& glyph, int column, int row);
};

} // namespace zelkodatastreamconverter
