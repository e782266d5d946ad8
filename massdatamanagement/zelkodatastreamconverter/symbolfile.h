#pragma once

#include <QVector>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>
#include <massdatamanagement/zelkodatastreamconverter/symbolrecord.h>

namespace zelkodatastreamconverter {

/// The symbol file of one channel: the raw symbols or Morse elements exactly as the receiver
/// delivered them, with their times, so that they can be decoded again with other settings.
///
/// Layout, every word 32 bits little-endian whatever the recording's byte order:
///
///   bytes 0-7    "ZSYMBOLS"
///   word  2      version, 1
///   word  3      channel
///   then one record per symbol frame: the frame's payload as symbolframe.h lays it out
///   (nine header words: time, frequency, channel, kind, width or tone, rate or level, count;
///   then the packed symbols or the element words), cut after the last word the count needs.
///
/// A record is never split over two files: when a write takes the file past the maximum size,
/// the next record opens a new file, which starts with its own 16-byte header. File type
/// "Symbols", the file code the owner sets ("Symbols" or "Morse").
class SymbolFile : public BinaryFile
{
public:
    static constexpr int HeaderBytes = 16;
    static constexpr quint32 Version = 1;

    SymbolFile(QString const& fileCode, int maximumSize, FileInfoCallback* callback, int channel);

    /// Appends the record, after the file header when the record opens a new file.
    void writeRecord(SymbolRecord const& record);

    /// The records of a whole symbol file. False with a reason ("not a symbol file", "version
    /// 2", "record at byte 52: <why>") at the first thing that is wrong; the records before
    /// it are in `records`.
    static bool read(QByteArray const& file, QVector<SymbolRecord>& records, QString& reason);

private:
    QByteArray header() const;

    int m_channel;
};

} // namespace zelkodatastreamconverter
