#pragma once

#include "transmission.h"

class QFile;
class QIODevice;

namespace NerikResultDataXml {

/// The result document: the transmissions of a job, in insertion order, and the running
/// ID counter that gives every data block of the document its own ID.
///
/// XML form (schemas/nerikresultdata.xsd):
///   <?xml version="1.0" encoding="UTF-8"?>
///   <NerikResultData version="1" nextId="13">
///     <Transmission .../>...
///   </NerikResultData>
///
/// Text that XML 1.0 cannot carry (control characters, unpaired surrogates, U+FFFE/U+FFFF,
/// carriage returns that a parser would normalise) is escaped: in element text as
/// <c u="HHHH"/> (one UTF-16 code unit, hex), in attributes by writing the attribute
/// "<name>64" with the base64 of the UTF-16LE code units instead. Raw content is always
/// base64. A document saved and loaded again is equal (operator==) to the original.
///
/// Not copyable: a document has one owner.
class NerikResultData : public INerikResultData
{
public:
    NerikResultData();
    NerikResultData(NerikResultData const&) = delete;
    NerikResultData& operator=(NerikResultData const&) = delete;
    ~NerikResultData() override;

    /// Appends a transmission; the document takes ownership. The ID counter moves past the
    /// IDs the transmission already holds, so that later blocks get IDs of their own.
    void AddTransmission(Transmission* transmission);
    /// The transmissions in insertion order. A caller that removes a pointer from the list
    /// takes over its ownership.
    QList<Transmission*>& GetTransmission() { return m_transmissions; }
    QList<Transmission*> const& GetTransmission() const { return m_transmissions; }

    /// A new block ID on every call (1, 2, 3, ...). Clear() does not reset the counter, and
    /// loading a document continues after the highest ID it holds.
    int GetNextID();
    /// The ID that the next GetNextID() call returns.
    int PeekNextID() const { return m_nextId; }

    /// Why the last SaveFile() or load failed; empty after success.
    QString const& GetErrorText() const { return m_errorText; }

    /// Writes the whole document into file, which must be open for writing, as UTF-8.
    /// Returns false with GetErrorText() when writing fails.
    bool SaveFile(QFile& file);
    /// The same, leaving out the text data blocks that filter rejects.
    bool SaveFile(QFile& file, DataBlockFilter const& filter);
    /// Writes the document into any open device.
    bool Save(QIODevice& device, DataBlockFilter const& filter = DataBlockFilter());

    /// Replaces the content by the document in file (opened here if it is not open yet).
    /// Returns false with GetErrorText() naming line and column (or the file problem); the
    /// document is then unchanged.
    bool LoadFile(QFile& file);
    bool LoadFile(QString const& path);
    /// The same from text.
    bool SetXmlString(QString const& xml);

    /// Deletes every transmission. The ID counter keeps running.
    virtual void Clear();

    void WriteXml(Utf8XmlWriter& writer) const override;
    void WriteXml(Utf8XmlWriter& writer, DataBlockFilter const& filter) const;

    /// Equal transmissions, compared by value. The ID counter is not compared.
    bool operator==(NerikResultData const& other) const;
    bool operator!=(NerikResultData const& other) const { return !(*this == other); }

private:
    bool load(QXmlStreamReader& reader, QString const& source);

    QList<Transmission*> m_transmissions;
    int m_nextId = 1;
    QString m_errorText;
};

} // namespace NerikResultDataXml
