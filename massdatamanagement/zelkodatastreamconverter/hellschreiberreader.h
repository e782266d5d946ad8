#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace zelkodatastreamconverter {

/// Reads Hellschreiber text from the columns of a picture, as an operator reads the tape.
///
/// A column is the grey levels of one received column, bottom first (as the mode sends it),
/// any height; dark levels (below 128) are ink. The columns are cut into character cells of
/// HellschreiberFont::Columns, at the phase whose cell borders carry the least ink; each cell
/// is reduced to the font's 7 by 7 dots (the share of ink in each dot's area) and compared with
/// every glyph and with the blank cell. The nearest is the character (the blank cell a space).
///
/// The confidence of a character (0 to 1) is how clearly its glyph won: 1 when it matched
/// exactly and nothing else came close, falling as the cell lies nearer to the next best glyph
/// than to its own; never higher for a cell that is further from its glyph while the second
/// best stays where it was.
class HellschreiberReader
{
public:
    struct Character
    {
        QChar character;
        double confidence;
        int firstColumn; ///< the cell's first column
    };

    static std::vector<Character> read(std::vector<QByteArray> const& columns);
    /// The text of read characters, and their confidences as one digit each (0 to 9), the
    /// form result documents keep them in.
    static QString text(std::vector<Character> const& characters);
    static QString confidenceDigits(std::vector<Character> const& characters);
};

} // namespace zelkodatastreamconverter
