#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <string>
#include <vector>

/// What the transmission-system model needs from a PDU decoding library: the decoders of
/// protocols whose frames (transmission-system code 16) carry undecoded protocol units, and
/// the names of their units, fields and coded values.
///
/// The model holds a non-owning IPduDecoding (TransmissionSystemModel::setPduDecoding()); while
/// it has none, PDU frames are accepted and leave nothing behind.

namespace zelkodatastreamconverter {

/// How the data of a field are to be read (the type text written with the field in brackets).
enum ePDU_DATAREPRESENTATION : unsigned
{
    PDU_REPRESENTATION_BINARY = 0,   ///< "binary"
    PDU_REPRESENTATION_BOOL = 1,     ///< "bool"
    PDU_REPRESENTATION_BITLIST = 2,  ///< "bitlist"
    PDU_REPRESENTATION_UNSIGNED = 3, ///< "int"
    PDU_REPRESENTATION_SIGNED = 4,   ///< "int"
    PDU_REPRESENTATION_FLOAT = 5,    ///< "float"
    PDU_REPRESENTATION_STRING = 6,   ///< "string"
    PDU_REPRESENTATION_POSITION = 7, ///< "position"
    PDU_REPRESENTATION_DATETIME = 8, ///< "datetime"
};

/// The checksum verdict on a unit; any other value: the unit has no checksum.
enum ePDU_CHECKSUM_STATE : unsigned
{
    PDU_CHECKSUM_NONE = 0,
    PDU_CHECKSUM_OK = 1,
    PDU_CHECKSUM_WRONG = 2,
};

/// A position or a date and time of a decoded unit: an element of a field with representation
/// 7 or 8. The field's data then point at `count` consecutive `CPDU_DisplayObject const*`.
class CPDU_DisplayObject
{
public:
    virtual ~CPDU_DisplayObject() = default;
    virtual std::wstring toWString() const = 0;
};

/// One field of a decoded unit.
class CPDU_FieldContainer
{
public:
    /// The field class of a unit's message text.
    static constexpr unsigned PayloadFieldClass = 8;

    virtual ~CPDU_FieldContainer() = default;
    virtual unsigned getFieldClass() const = 0;
    virtual ePDU_DATAREPRESENTATION getDataRepresentation() const = 0;
    /// Non-zero: the field is a coded value whose text dataIdToString() gives.
    virtual unsigned getDataTranslation() const = 0;
    /// The data with the bits of one element and the number of elements.
    virtual unsigned* getData(unsigned& bitsPerElement, unsigned& elementCount) const = 0;
    /// Whether the field holds nested units (IPduConverter::getSubPDUs()).
    virtual bool isExpandable() const = 0;
};

/// One decoded protocol unit.
class CPDU
{
public:
    virtual ~CPDU() = default;
    virtual unsigned getPDU_ID() const = 0;
    virtual ePDU_CHECKSUM_STATE getCheckSumState() const = 0;
    /// Microseconds since 1970-01-01 00:00 UTC.
    virtual quint64 getTimeStamp() const = 0;
    /// The unit's fields in field order; owned by the unit.
    virtual std::vector<CPDU_FieldContainer*> const& getFields() const = 0;
};

/// The decoder of one communication-system type. The caller owns and deletes the units that
/// both operations return.
class IPduConverter
{
public:
    virtual ~IPduConverter() = default;
    /// The nested units of an expandable field.
    virtual std::vector<CPDU*> getSubPDUs(CPDU_FieldContainer* field) = 0;
    /// The units of a whole frame (header included).
    virtual std::vector<CPDU*> decodeFrame(QByteArray const& frame) = 0;
};

/// The library side: decoders by type and the names of units, fields and coded values.
class IPduDecoding
{
public:
    virtual ~IPduDecoding() = default;
    /// Null when the type has no decoder. The decoding library keeps ownership.
    virtual IPduConverter* getPDU_ConverterByCOMMSYSTYPE(unsigned communicationSystemType) = 0;
    /// The name of a unit, used as its block name.
    virtual QString pduIdToString(unsigned pduId) const = 0;
    /// The labels of a unit's fields, in field order.
    virtual QStringList getHeaders(unsigned pduId) const = 0;
    /// The text of a coded field value.
    virtual QString dataIdToString(unsigned dataId) const = 0;
};

} // namespace zelkodatastreamconverter
