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
            if (entry.kind == CodeEntry::Text && entry.text.size() == 1) {
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
    // Written straight into a buffer that holds the longest possible text: decoded-text
    // conversions translate every received character through here.
    QString out(codes.size() * m_longestOutput, Qt::Uninitialized);
    QChar* const begin = out.data();
    QChar* at = begin;
    QVector<CodeEntry> const* entries = &m_alphabet->entries(m_table);
    quint32 const* singles = m_singles[m_table].constData();
    QString const& unknown = m_alphabet->unknownText();
    for (QChar const unit : codes) {
        unsigned const code = unit.unicode();
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
            *at++ = unit;
            break;
        case CodeEntry::Shift:
            m_table = entry.shift;
            entries = &m_alphabet->entries(m_table);
            singles = m_singles[m_table].constData();
            break;
        case CodeEntry::Nothing:
            break;
        case CodeEntry::Unassigned:
            at = std::copy(unknown.begin(), unknown.end(), at);
            break;
        }
    }
    out.truncate(int(at - begin));
    return out;
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
    case CodeEntry::Shift:
        m_table = entry.shift;
        break;
    case CodeEntry::Nothing:
        break;
    case CodeEntry::Unassigned:
        out += m_alphabet->unknownText();
        break;
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

bool CodeTranslator::sameInEveryTable(unsigned code) const
{
    CodeEntry const& first = m_alphabet->entry(0, code);
    for (int table = 1; table < m_alphabet->tableCount(); ++table) {
        CodeEntry const& other = m_alphabet->entry(table, code);
        if (other.kind != first.kind || other.text != first.text) {
            return false;
        }
    }
    return true;
}

int CodeTranslator::shiftCode(int from, int to) const
{
    unsigned const size = 1u << m_alphabet->width();
    for (unsigned code = 0; code < size; ++code) {
        CodeEntry const& entry = m_alphabet->entry(from, code);
        if (entry.kind == CodeEntry::Shift && entry.shift == to) {
            return int(code);
        }
    }
    return -1;
}

QString CodeTranslator::backtranslate(QString const& text) const
{
    buildReverse();
    QString codes;
    int const initial = m_alphabet->initialTable();
    int state = m_alphabet->tableCount() > 1 ? -1 : initial;
    int i = 0;
    while (i < text.size()) {
        QVector<Place> places;
        int length = 1;
        for (int n = qMin(m_longestText, text.size() - i); n >= 1; --n) {
            auto const found = m_reverse.constFind(text.mid(i, n));
            if (found != m_reverse.constEnd()) {
                places = *found;
                length = n;
                break;
            }
        }
        if (places.isEmpty()) {
            unsigned const unit = text[i].unicode();
            for (int table = 0; table < m_alphabet->tableCount(); ++table) {
                if (m_alphabet->entry(table, unit).kind == CodeEntry::Same) {
                    places.append({table, unit});
                }
            }
        }
        i += length;
        if (places.isEmpty()) {
            continue; // nothing prints this character
        }
        Place chosen = places.front();
        bool needsShift = true;
        for (Place const& place : qAsConst(places)) {
            if (place.first == state || (state < 0 && sameInEveryTable(place.second))) {
                chosen = place;
                needsShift = false;
                break;
            }
            if (place.first == initial) {
                chosen = place;
            }
        }
        if (needsShift) {
            int shift = shiftCode(state < 0 ? initial : state, chosen.first);
            if (shift < 0 && state < 0) {
                shift = shiftCode(chosen.first, chosen.first);
            }
            if (shift < 0) {
                continue; // the table cannot be reached from here
            }
            codes += QChar(ushort(shift));
            state = chosen.first;
        }
        codes += QChar(ushort(chosen.second));
    }
    return codes;
}

} // namespace AlphabetKit
