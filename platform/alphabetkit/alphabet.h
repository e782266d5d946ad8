#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <memory>

namespace AlphabetKit {

/// What one code of one shift table stands for.
struct CodeEntry
{
    enum Kind : unsigned char
    {
        Unassigned, ///< not listed: translated to the alphabet's unknown text
        Text,       ///< produces `text`, then switches to table `shift` if it is not -1
        Same,       ///< produces the code itself as one UTF-16 code unit
        Shift,      ///< produces nothing and switches to table `shift`
        Nothing     ///< produces nothing (blank tape, idle and repetition signals)
    };

    Kind kind = Unassigned;
    /// The table switched to: always for Shift; for Text -1 (stay) or a table entered after
    /// printing, as the space of unshift-on-space teleprinter codes returns to letters.
    int shift = -1;
    QString text;
};

/// One alphabet, read from an alphabet file: a code of `width` bits is translated through
/// the table of the current shift state. Immutable once read, so one definition is shared by
/// every translator that uses it.
///
/// Alphabet file format (UTF-8 text, one alphabet per file, file name ending ".alphabet"):
///
///     # International Telegraph Alphabet No. 2
///     name = International      # shown to users and written as the content code
///     decoders = BAUDOT, RTTY   # decoder names that offer it (any case); * = every decoder
///     width = 5                 # bits per code, 1 to 16
///     direction = ltr           # ltr or rtl (optional, default ltr)
///     initial = letters         # shift table after a reset (optional, default the first)
///     unknown = U+FFFD          # for codes that no table lists (optional; none = nothing)
///
///     [letters]                 # one table per shift state, named freely
///     0 = none                  # prints nothing
///     1 = E                     # one character, written as itself
///     4 = SP                    # SP, LF, CR, TAB name the blank and the controls
///     5 = U+0027                # a character by its code point
///     27 = shift figures        # switches to the table [figures], prints nothing
///     [figures]
///     2-4 = same                # a range; "same" prints the code itself as a character
///     4 = SP shift letters      # prints, then switches to [letters] (unshift on space)
///     ...
///     end                       # the last line: a file without it counts as truncated
///
/// Codes are decimal, hexadecimal (0x41) or binary (0b00001), as numbers: the value that the
/// decoder delivers, most significant bit written first. A value may chain several
/// characters ("CR LF"); characters followed by "shift <table>" print and then switch tables.
/// Comments start with "#" at the start of a line or after a blank;
/// write "#" itself as U+0023. Every code of a table appears at most once; a shift must name a
/// table of the file. Codes wider than `width` and codes no table lists give the unknown text.
class Alphabet
{
public:
    static constexpr int MaxWidth = 16;

    QString const& name() const { return m_name; }
    QStringList const& decoders() const { return m_decoders; }
    int width() const { return m_width; }
    bool rightToLeft() const { return m_rightToLeft; }
    int initialTable() const { return m_initialTable; }
    QString const& unknownText() const { return m_unknown; }
    int tableCount() const { return m_tables.size(); }
    QString const& tableName(int table) const { return m_tables[table].name; }

    /// The entry of a code in a table; codes of `width` bits or more are Unassigned.
    CodeEntry const& entry(int table, unsigned code) const;
    /// All entries of a table, indexed by code (codes past the end are Unassigned).
    QVector<CodeEntry> const& entries(int table) const { return m_tables[table].entries; }
    /// The most characters one code can print (the unknown text included).
    int longestOutput() const;

    /// True when the decoder name is listed (compared ignoring case) or "*" is listed.
    bool offeredBy(QString const& decoder) const;

    /// Reads an alphabet file's bytes. On failure returns null and sets error to
    /// "<origin>:<line>: <problem>" (or "<origin>: <problem>" for the file as a whole).
    static std::shared_ptr<Alphabet const> parse(QByteArray const& bytes, QString const& origin,
                                                 QString& error);
    /// Reads the file at path; the error names the path.
    static std::shared_ptr<Alphabet const> load(QString const& path, QString& error);

    /// The built-in "None": every 16-bit code unit stands for itself, offered by every
    /// decoder. Used when the alphabets directory holds no "None" of its own.
    static std::shared_ptr<Alphabet const> none();

    static QString const& noneName();

private:
    struct Table
    {
        QString name;
        QVector<CodeEntry> entries;
    };

    friend class AlphabetParser;

    QString m_name;
    QStringList m_decoders;
    int m_width = 0;
    bool m_rightToLeft = false;
    int m_initialTable = 0;
    QString m_unknown = QString(QChar(0xFFFD));
    QVector<Table> m_tables;
};

using AlphabetPtr = std::shared_ptr<Alphabet const>;

} // namespace AlphabetKit
