#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <massdatamanagement/zelkodatastreamconverter/symbolframe.h>

namespace zelkodatastreamconverter {

/// One run of symbols or Morse elements, read from the payload of a symbol frame (layout in
/// symbolframe.h) or from a record of a symbol file (SymbolFile), which has the same layout.
///
/// read() checks everything a damaged recording can get wrong (a header cut short, an unknown
/// kind, a width of 0 or above 32, a count the payload cannot hold) and answers why it refused
/// the run; a run it accepts can be used without further checks.
struct SymbolRecord
{
    quint64 microseconds = 0;
    quint64 frequencyHz = 0;
    qint32 channel = 0;
    quint32 kind = 0;
    quint32 widthOrTone = 0;
    quint32 rateOrLevel = 0;
    /// Raw symbols: one value a symbol, unpacked. Morse: the element words as they stand.
    QVector<quint32> values;
    /// The payload words that hold the run (header and data, no padding words past them), in
    /// the byte order they were read in: what a symbol file keeps of the frame.
    QByteArray words;

    bool isMorse() const { return kind == SymbolKind::MorseElements; }

    /// Reads a run from `bytes` 32-bit words in host order at `data`. False with the reason
    /// ("32 bytes, a symbol header has 36", "kind 7", "symbol width 0", "9 symbols of 5 bits
    /// in 4 bytes", "3 elements in 8 bytes") when the run cannot be right.
    static bool read(char const* data, int bytes, SymbolRecord& record, QString& reason);

    /// Bytes of the run's header and data words: the size of a file record.
    int recordBytes() const { return words.size(); }
};

} // namespace zelkodatastreamconverter
