#pragma once

#include "field.h"
#include "ownedlist.h"
#include "payload.h"
#include "userdata.h"

#include <QDateTime>
#include <QList>
#include <QVector>

class QXmlStreamReader;

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// One decoded protocol unit (message) of a transmission system: ID, type code, time
/// stamp, name, decoding method, checksum text, labelled fields, a payload, child blocks
/// (nested units) and user annotations. The block owns its children and user data; copies
/// are deep.
///
/// XML form:
///   <PDUDataBlock id="12" type="589824" timeStamp="..." name="AIS Position Report"
///                 method="AIS" crc="ok">
///     <Field name="MMSI" type="int">211234567</Field>...
///     <Payload .../>                 (only when it holds something)
///     <UserData .../>...
///     <PDUDataBlock .../>...         (children)
///   </PDUDataBlock>
class PDUDataBlock
{
public:
    /// Whether the block is worth keeping: true when its time stamp is valid and it has a
    /// name or some content (fields, a payload that IsValid(), or children). The type is not
    /// looked at (0 is a legitimate type). So a freshly begun block with type, time stamp
    /// and name counts as valid before it has fields or children.
    /// This is the first virtual operation of the class.
    virtual bool IsValid() const;

    PDUDataBlock() = default;
    PDUDataBlock(PDUDataBlock const& other) = default;
    PDUDataBlock(PDUDataBlock&& other) noexcept = default;
    /// Safe when other is one of this block's own children.
    PDUDataBlock& operator=(PDUDataBlock const& other);
    PDUDataBlock& operator=(PDUDataBlock&& other) noexcept = default;
    virtual ~PDUDataBlock();

    int GetID() const { return m_id; }
    void SetID(int id) { m_id = id; }
    unsigned GetType() const { return m_type; }
    void SetType(unsigned type) { m_type = type; }
    QDateTime const& GetTimeStamp() const { return m_timeStamp; }
    void SetTimeStamp(QDateTime const& time) { m_timeStamp = time; }
    QString const& GetName() const { return m_name; }
    void SetName(QString const& name) { m_name = name; }
    QString const& GetMethod() const { return m_method; }
    void SetMethod(QString const& method) { m_method = method; }
    /// Checksum text ("ok", "not ok"); empty when the unit has no checksum.
    QString const& GetCRC() const { return m_crc; }
    void SetCRC(QString const& crc) { m_crc = crc; }

    void AddField(Field const& field) { m_fields.append(field); }
    QVector<Field>& GetFields() { return m_fields; }
    QVector<Field> const& GetFields() const { return m_fields; }

    void SetPayload(Payload const& payload) { m_payload = payload; }
    Payload& GetPayload() { return m_payload; }
    Payload const& GetPayload() const { return m_payload; }
    /// Same as GetPayload(); the historical spelling is kept for existing callers.
    Payload& GetPlayload() { return m_payload; }
    Payload const& GetPlayload() const { return m_payload; }

    /// Appends a child block; this block takes ownership.
    void AddPDUDataBlock(PDUDataBlock* child);
    QList<PDUDataBlock*>& GetPDUDataBlocks() { return m_children.items(); }
    QList<PDUDataBlock*> const& GetPDUDataBlocks() const { return m_children.items(); }
    /// The last of these blocks with the ID, or null (an indexed lookup, see OwnedList).
    PDUDataBlock* FindPDUDataBlock(int id) const { return m_children.findLastById(id); }

    /// Appends an item; the block takes ownership.
    void AddUserData(UserData* userData);
    QList<UserData*>& GetUserData() { return m_userData.items(); }
    QList<UserData*> const& GetUserData() const { return m_userData.items(); }
    void DeleteUserData();

    void WriteXml(Utf8XmlWriter& writer) const;
    /// Reads the element whose start tag the reader has just read. Blocks nested deeper than
    /// MaxNesting levels are refused (they would only come from a damaged or hostile file).
    bool ReadXml(QXmlStreamReader& reader, QString& error);

    static constexpr int MaxNesting = 200;

    /// Equal attributes, fields, payload, user data and children (by value, recursively).
    bool operator==(PDUDataBlock const& other) const;
    bool operator!=(PDUDataBlock const& other) const { return !(*this == other); }

private:
    bool readXml(QXmlStreamReader& reader, QString& error, int depth);

    int m_id = 0;
    unsigned m_type = 0;
    QDateTime m_timeStamp;
    QString m_name;
    QString m_method;
    QString m_crc;
    QVector<Field> m_fields;
    Payload m_payload;
    OwnedList<PDUDataBlock> m_children;
    OwnedList<UserData> m_userData;
};

} // namespace NerikResultDataXml
