#include "symbolfile.h"

#include <QtEndian>

namespace zelkodatastreamconverter {

namespace {

QByteArray const Magic = QByteArrayLiteral("ZSYMBOLS");

// The file's words are little-endian, the record reader takes host order: the same swap
// either way, and none on a little-endian machine.
QByteArray littleEndianWords(QByteArray words)
{
    if (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
        return words;
    }
    auto* word = reinterpret_cast<quint32*>(words.data());
    for (int i = 0; i < words.size() / 4; ++i) {
        word[i] = qbswap(word[i]);
    }
    return words;
}

} // namespace

SymbolFile::SymbolFile(QString const& fileCode, int maximumSize, FileInfoCallback* callback,
                       int channel)
    : BinaryFile(QStringLiteral("Symbols"), fileCode, maximumSize, callback), m_channel(channel)
{
}

QByteArray SymbolFile::header() const
{
    QByteArray out = Magic;
    out.resize(HeaderBytes);
    qToLittleEndian(Version, out.data() + 8);
    qToLittleEndian(qint32(m_channel), out.data() + 12);
    return out;
}

void SymbolFile::writeRecord(SymbolRecord const& record)
{
    // A split leaves no file behind; the record that follows opens the next one.
    QByteArray const words = littleEndianWords(record.words);
    saveToFile(isOpen() ? words : header() + words);
}

bool SymbolFile::read(QByteArray const& file, QVector<SymbolRecord>& records, QString& reason)
{
    if (file.size() < HeaderBytes || !file.startsWith(Magic)) {
        reason = QStringLiteral("not a symbol file");
        return false;
    }
    quint32 const version = qFromLittleEndian<quint32>(file.constData() + 8);
    if (version != Version) {
        reason = QStringLiteral("version %1").arg(version);
        return false;
    }
    QByteArray const body = littleEndianWords(file.mid(HeaderBytes));
    int offset = 0;
    while (offset < body.size()) {
        SymbolRecord record;
        QString why;
        if (!SymbolRecord::read(body.constData() + offset, body.size() - offset, record, why)) {
            reason = QStringLiteral("record at byte %1: %2").arg(HeaderBytes + offset).arg(why);
            return false;
        }
        offset += record.recordBytes();
        records.append(record);
    }
    return true;
}

} // namespace zelkodatastreamconverter
