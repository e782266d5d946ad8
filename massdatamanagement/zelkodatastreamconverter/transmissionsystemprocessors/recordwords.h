#pragma once

#include <QByteArray>
#include <QString>
#include <QVarLengthArray>
#include <QtGlobal>
#include <cstring>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>

namespace zelkodatastreamconverter {

/// The record of one transmission-system frame as the processors read it: 32-bit words in
/// host order, counted from 0, of which only `available` lie inside the frame. A damaged or
/// cut frame must never make a processor read past its end, so every access is bounded here:
/// a word past the end reads 0, a text past the end reads as if zero-filled, and counts that
/// the record states are clamped to what the frame holds.
///
///     RecordWords const words(record, WordsAvailable(record, 0));
///     AddField(block, tr("Ship ID"), words.text(1, 2));
class RecordWords
{
public:
    RecordWords(void* record, unsigned available)
        : m_record(static_cast<char*>(record)), m_available(record ? available : 0u)
    {
    }

    /// Word index, 0 past the end.
    quint32 at(unsigned index) const
    {
        quint32 value = 0;
        if (index < m_available) {
            std::memcpy(&value, m_record + 4u * quint64(index), sizeof value);
        }
        return value;
    }

    /// Whole words from index to the end of the record (0 past it).
    unsigned available(unsigned index) const
    {
        return index < m_available ? m_available - index : 0u;
    }

    /// The text of count words from index: at most 4 * count characters up to the first zero
    /// byte, cleaned. Words past the end read as zeros.
    QString text(unsigned index, unsigned count) const
    {
        QVarLengthArray<int, 16> copy(static_cast<int>(count));
        for (unsigned i = 0; i < count; ++i) {
            copy[int(i)] = int(at(index + i));
        }
        return TransmissionSystemModel::ToASCII(copy.constData(), count);
    }

    /// Bytes from word index on; valid for byteCount(index, ...) bytes.
    char* bytes(unsigned index) const { return m_record + 4u * quint64(qMin(index, m_available)); }
    /// Words from index on, for the packed-text helpers; valid for available(index) words.
    int* words(unsigned index) const { return reinterpret_cast<int*>(bytes(index)); }

    /// A stated byte count from word index on, clamped to the bytes that the frame holds.
    unsigned byteCount(unsigned index, quint64 stated) const
    {
        return unsigned(qMin<quint64>(stated, 4u * quint64(available(index))));
    }

    /// Bytes from word index up to the first zero byte, at most stated bytes and never past
    /// the end.
    unsigned textLength(unsigned index, quint64 stated) const
    {
        unsigned const limit = byteCount(index, stated);
        auto const* zero = static_cast<char const*>(std::memchr(bytes(index), 0, limit));
        return zero ? unsigned(zero - bytes(index)) : limit;
    }

    /// A stated number of elements of bits bits from word index on, clamped to the elements
    /// that the frame holds whole.
    unsigned elementCount(unsigned index, quint64 stated, unsigned bits) const
    {
        if (bits == 0) {
            return 0;
        }
        quint64 const fitting = 32u * quint64(available(index)) / bits;
        return unsigned(qMin(stated, fitting));
    }

private:
    char* m_record;
    unsigned m_available;
};

/// A coded value with its meaning, as the processors show table lookups: "6 (Feuerwehr)".
inline QString codeWithText(quint32 code, QString const& text)
{
    return QStringLiteral("%1 (%2)").arg(code).arg(text);
}

} // namespace zelkodatastreamconverter
