#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <alphabetkit/alphabetcatalog.h>
#include <alphabetkit/codetranslator.h>

namespace AlphabetKit {

/// Decodes the message payloads of transmission systems through a selectable alphabet of the
/// alphabets directory (the same alphabet files as CodecHandler's).
///
/// The Decode operations fail (return false, `out` untouched) while the alphabet is "None",
/// so that the caller falls back to its own rendering of the bytes. With any other alphabet
/// every element of the input is one code, translated through the alphabet; the shift state
/// is kept from one call to the next until ClearBuffer().
///
/// GetAlphabets(demodulator) lists the alphabets whose file names that demodulator among its
/// "decoders". One decoder serves one thread.
class UdaDecoder
{
public:
    UdaDecoder();
    ~UdaDecoder();

    void LoadAlphabets(QString const& directory);
    QStringList GetAlphabets() const;
    QStringList GetAlphabets(QString const& demodulator) const;
    QString GetCurrentAlphabet() const;
    /// Selects any loaded alphabet by its exact name and clears the buffer.
    bool SelectAlphabet(QString const& name);
    /// The content code written with decoded text: the current alphabet's name.
    QString GetCurrentSettings() const;
    bool TextDirectionRTL() const;
    void ClearBuffer();

    /// Each byte is one code.
    bool DecodeASCII(QString& out, QByteArray& in);
    /// Each pair of bytes, low byte first, is one code; an odd byte count fails.
    bool DecodeUnicode(QString& out, QByteArray& in);
    /// `elements` codes of `bits` bits (1 to 32), packed from the least significant bit of
    /// the first byte on. Fails when the bytes are too few.
    bool DecodeBinary(QString& out, QByteArray& in, unsigned elements, unsigned bits);
    /// The same, packed from the least significant bit of data[0] on.
    bool DecodeBinary(QString& out, unsigned* data, unsigned elements, unsigned bits);
    /// The bytes as Latin-1 text, made printable: byte 160 becomes a line feed, carriage
    /// returns and line feeds stay, every other unprintable character becomes "_".
    void ConvertToString(QString& out, QByteArray const& in);

    QStringList LoadErrors() const { return m_catalog.errors(); }

private:
    bool usable() const;

    AlphabetCatalog m_catalog;
    CodeTranslator m_translator;
};

} // namespace AlphabetKit
