#include "codetranslator.h"

#include <algorithm>

namespace AlphabetKit {

CodeTranslator::CodeTranslator(AlphabetPtr alphabet)
    : m_alphabet(alphabet ? std::move(alphabet) : Alphabet::none()),
      m_longestOutput(m_alphabet->longestOutput())
{
    buildSingles();
    reset();
}

void CodeTranslator::buildSingles()
{
    m_singles.resize(m_alphabet->tableCount());
    for (int table = 0; table < m_alphabet->tableCount(); ++table) {
        QVector<CodeEntry> const& entries = m_alphabet->entries(table);
        QVector<quint32>& singles = m_singles[table];
        singles.resize(entries.size());
        for (int code = 0; code < entries.size(); ++code) {
            CodeEntry const& entry = entries[code];
            if (entry.kind == CodeEntry::Text && entry.text.size() == 1 && entry.shift < 0) {
                singles[code] = entry.text.at(0).unicode();
            } else if (entry.kind == CodeEntry::Same) {
                singles[code] = quint32(code);
            } else {
                singles[code] = NotSingle;
            }
        }
    }
}

void CodeTranslator::reset()
{
    m_table = m_alphabet->initialTable();
}

void CodeTranslator::setCurrentTable(int table)
{
    if (table >= 0 && table < m_alphabet->tableCount()) {
        m_table = table;
    } else {
        reset();
    }
}

QString CodeTranslator::translate(QString const& codes)
{
    QString out(0, Qt::Uninitialized); // empty, not null, even for no codes
    translate(codes.constData(), codes.size(), out);
    return out;
}

void CodeTranslator::translate(QChar const* codes, int size, QString& out)
{
    // Written straight into out, grown to hold the longest possible text: decoded-text
    // conversions translate every received character through here, a frame at a time. The
    // room grows by doubling, so that appending frame after frame stays linear.
    int const before = out.size();
    int const longest = before + size * m_longestOutput;
    if (out.capacity() < longest) {
        out.reserve(std::max(longest, 2 * out.capacity()));
    }
    out.resize(longest);
    QChar* const begin = out.data() + before;
    QChar* at = begin;
    QVector<CodeEntry> const* entries = &m_alphabet->entries(m_table);
    quint32 const* singles = m_singles[m_table].constData();
    QString const& unknown = m_alphabet->unknownText();
    for (QChar const* unit = codes; unit != codes + size; ++unit) {
        unsigned const code = unit->unicode();
        if (code < unsigned(entries->size()) && singles[code] != NotSingle) {
            *at++ = QChar(ushort(singles[code]));
            continue;
        }
        if (code >= unsigned(entries->size())) {
            at = std::copy(unknown.begin(), unknown.end(), at);
            continue;
        }
        CodeEntry const& entry = (*entries)[int(code)];
        switch (entry.kind) {
        case CodeEntry::Text:
            at = std::copy(entry.text.begin(), entry.text.end(), at);
            break;
        case CodeEntry::Same:
            *at++ = *unit;
            break;
        case CodeEntry::Unassigned:
            at = std::copy(unknown.begin(), unknown.end(), at);
            break;
        case CodeEntry::Shift:
        case CodeEntry::Nothing:
            break;
        }
        // Shift codes, and characters that also shift (unshift on space), change the table.
        if (entry.shift >= 0) {
            m_table = entry.shift;
            entries = &m_alphabet->entries(m_table);
            singles = m_singles[m_table].constData();
        }
    }
    out.resize(before + int(at - begin));
}

void CodeTranslator::translate(unsigned code, QString& out)
{
    CodeEntry const& entry = m_alphabet->entry(m_table, code);
    switch (entry.kind) {
    case CodeEntry::Text:
        out += entry.text;
        break;
    case CodeEntry::Same:
        out += QChar(ushort(code));
        break;
    case CodeEntry::Unassigned:
        out += m_alphabet->unknownText();
        break;
    case CodeEntry::Shift:
    case CodeEntry::Nothing:
        break;
    }
    if (entry.shift >= 0) {
        m_table = entry.shift;
    }
}

void CodeTranslator::buildReverse() const
{
    if (m_reverseBuilt) {
        return;
    }
    unsigned const size = 1u << m_alphabet->width();
    for (int table = 0; table < m_alphabet->tableCount(); ++table) {
        for (unsigned code = 0; code < size; ++code) {
            CodeEntry const& entry = m_alphabet->entry(table, code);
            if (entry.kind == CodeEntry::Text && !entry.text.isEmpty()) {
                m_reverse[entry.text].append({table, code});
                m_longestText = qMax(m_longestText, entry.text.size());
            }
        }
    }
    m_reverseBuilt = true;
}

bool CodeTranslator::printsAlike(QVector<int> const& tables, Place const& place) const
{
    CodeEntry const& wanted = m_alphabet->entry(place.first, place.second);
    for (int const table : tables) {
        CodeEntry const& entry = m_alphabet->entry(table, place.second);
        if (entry.kind != wanted.kind || entry.text != wanted.text) {
            return false;
        }
    }
    return true;
}

QVector<int> CodeTranslator::tablesAfter(QVector<int> const& tables, unsigned code) const
{
    QVector<int> after;
    for (int const table : tables) {
        int const shift = m_alphabet->entry(table, code).shift;
        int const next = shift >= 0 ? shift : table;
        if (!after.contains(next)) {
            after.append(next);
        }
    }
    return after;
}

int CodeTranslator::shiftCode(QVector<int> const& from, int to) const
{
    unsigned const size = 1u << m_alphabet->width();
    for (unsigned code = 0; code < size; ++code) {
        bool everywhere = true;
        for (int const table : from) {
            CodeEntry const& entry = m_alphabet->entry(table, code);
            everywhere = everywhere && entry.kind == CodeEntry::Shift && entry.shift == to;
        }
        if (everywhere) {
            return int(code);
        }
    }
    return -1;
}

QVector<CodeTranslator::Place> CodeTranslator::placesOf(QString const& text, int& at) const
{
    QVector<Place> places;
    int length = 1;
    for (int n = qMin(m_longestText, text.size() - at); n >= 1; --n) {
        auto const found = m_reverse.constFind(text.mid(at, n));
        if (found != m_reverse.constEnd()) {
            places = *found;
            length = n;
            break;
        }
    }
    if (places.isEmpty()) {
        unsigned const unit = text[at].unicode();
        for (int table = 0; table < m_alphabet->tableCount(); ++table) {
            if (m_alphabet->entry(table, unit).kind == CodeEntry::Same) {
                places.append({table, unit});
            }
        }
    }
    at += length;
    // Among equal choices the initial table wins: that is where a receiver starts.
    int const initial = m_alphabet->initialTable();
    std::stable_partition(places.begin(), places.end(),
                          [initial](Place const& place) { return place.first == initial; });
    return places;
}

QString CodeTranslator::backtranslate(QString const& text) const
{
    buildReverse();
    QString codes;
    // The tables the receiver may be in. At first it may be in any; a character that prints
    // alike in all of them needs no shift, and each code sent narrows or moves the set (a
    // space of an unshift-on-space code moves figures back to letters).
    QVector<int> possible;
    for (int table = 0; table < m_alphabet->tableCount(); ++table) {
        possible.append(table);
    }
    auto send = [&](unsigned code) {
        codes += QChar(ushort(code));
        possible = tablesAfter(possible, code);
    };
    int i = 0;
    while (i < text.size()) {
        QVector<Place> const places = placesOf(text, i);
        bool sent = false;
        for (Place const& place : places) {
            if (printsAlike(possible, place)) {
                send(place.second);
                sent = true;
                break;
            }
        }
        for (int p = 0; !sent && p < places.size(); ++p) {
            int const shift = shiftCode(possible, places[p].first);
            if (shift >= 0) {
                send(unsigned(shift));
                send(places[p].second);
                sent = true;
            }
        }
        // No single code reaches the table from every possible state (MTK-2 with unshift on
        // space has a figures table per letters table): first fix the state, then shift.
        for (int p = 0; !sent && p < places.size(); ++p) {
            for (int via = 0; !sent && via < m_alphabet->tableCount(); ++via) {
                int const fix = shiftCode(possible, via);
                int const shift = shiftCode({via}, places[p].first);
                if (fix >= 0 && shift >= 0) {
                    send(unsigned(fix));
                    send(unsigned(shift));
                    send(places[p].second);
                    sent = true;
                }
            }
        }
        // A character that no table prints, or whose table cannot be reached, is left out.
    }
    return codes;
}

} // namespace AlphabetKit
