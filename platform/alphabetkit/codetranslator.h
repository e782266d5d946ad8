#pragma once

#include <QHash>
#include <QPair>
#include <QString>
#include <QVector>
#include <alphabetkit/alphabet.h>

namespace AlphabetKit {

/// Translates a stream of codes through one alphabet. The shift state is kept between calls,
/// because a shift code and the codes it governs often arrive in different frames; reset()
/// returns to the alphabet's initial table.
class CodeTranslator
{
public:
    explicit CodeTranslator(AlphabetPtr alphabet = Alphabet::none());

    AlphabetPtr const& alphabet() const { return m_alphabet; }
    int currentTable() const { return m_table; }
    void reset();
    /// Continues in shift table `table`; an index the alphabet does not have resets.
    void setCurrentTable(int table);

    /// Each UTF-16 code unit of `codes` is one code.
    QString translate(QString const& codes);
    /// The same for `size` codes at `codes`, appended to `out`.
    void translate(QChar const* codes, int size, QString& out);
    void translate(unsigned code, QString& out);

    /// The codes that print `text`, as UTF-16 code units. Starts from an unknown shift state,
    /// so the first character that is not the same in every table is preceded by its shift
    /// code; the result prints `text` whatever state the receiving side is in. Characters that
    /// no table holds are left out. Does not touch the translation state.
    QString backtranslate(QString const& text) const;

private:
    using Place = QPair<int, unsigned>; // table, code

    void buildReverse() const;
    /// True when the place's code prints the same in every one of the tables.
    bool printsAlike(QVector<int> const& tables, Place const& place) const;
    /// The tables a receiver can be in after the code, from any of the tables.
    QVector<int> tablesAfter(QVector<int> const& tables, unsigned code) const;
    /// The lowest code that switches every one of the tables `from` to `to`; -1 if none does.
    int shiftCode(QVector<int> const& from, int to) const;
    /// The places of the longest text starting at `at` that a code prints; moves `at` past it.
    QVector<Place> placesOf(QString const& text, int& at) const;

    void buildSingles();

    AlphabetPtr m_alphabet;
    int m_longestOutput = 1;
    // Per table and code: the one character a code prints, or NotSingle when it prints none
    // or several, shifts or is unassigned. Most codes of teleprinter alphabets print exactly
    // one character, so the translation loop rarely needs the full entry.
    static constexpr quint32 NotSingle = 0x10000;
    QVector<QVector<quint32>> m_singles;
    int m_table = 0;
    mutable QHash<QString, QVector<Place>> m_reverse;
    mutable int m_longestText = 0;
    mutable bool m_reverseBuilt = false;
};

} // namespace AlphabetKit
