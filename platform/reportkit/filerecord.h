#pragma once

#include "filemetadata.h"
#include "xmlelementobject.h"

class QXmlStreamReader;
class QXmlStreamWriter;

namespace REPORTKIT {

/// Common part of the produced-file records Binary, Text and Picture: URL, file type and
/// metadata. The three records are siblings; a Results keeps one list of each.
///
/// XML form (the element name is the record's class name):
///   <Binary url="/out/x.wav" type="AudioData">
///     <Metadata startTime="..." stopTime="...">
///       <Detail code="WAV" channel="2" frequency="10000000"/>
///     </Metadata>
///   </Binary>
class FileRecord : public XmlElementObject
{
public:
    ~FileRecord() override;

    /// Throws RGException for an empty URL while validating.
    void SetURL(QString const& url);
    QString const& GetURL() const { return m_url; }
    void SetType(QString const& type) { m_type = type; }
    QString const& GetType() const { return m_type; }

    FileMetadata& GetMetadata() { return m_metadata; }
    FileMetadata const& GetMetadata() const { return m_metadata; }

    /// Writes the record as one element ("Binary", "Text" or "Picture").
    void WriteXml(QXmlStreamWriter& writer) const override;
    /// Reads the element whose start tag the reader has just read. Unknown attributes and
    /// elements are errors while validating and skipped otherwise.
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

protected:
    FileRecord();
    FileRecord(FileRecord const&);
    FileRecord& operator=(FileRecord const&);
    bool sameContent(FileRecord const& other) const;

private:
    QString m_url;
    QString m_type;
    FileMetadata m_metadata;
};

} // namespace REPORTKIT
