#pragma once
// The AIS messages of ITU-R M.1371 as tables: per message type (and part, for type 24) its
// PDU ID, block name and the fields in transmission order. The decoder reads bits by these
// tables, and PduNaming takes names and labels from them, so that labels and fields cannot
// drift apart.

#include <QString>
#include <vector>

namespace ais {

enum class FieldKind {
    Unsigned,     ///< plain number
    TimeStamp,    ///< second of the minute; 60 to 63 are texts
    Scaled,       ///< number times scale, as a float
    RateOfTurn,   ///< signed 8-bit ROT indicator, turned back into degrees a minute
    Enum,         ///< translated text: translation base + value
    Bool,
    Text,         ///< six-bit characters, bits / 6 of them, trailing '@' and blanks removed
    TextToEnd,    ///< six-bit characters to the end of the message
    Position,     ///< longitude (28 bits) and latitude (27 bits) in 1/10000 minute
    LowPosition,  ///< longitude (18 bits) and latitude (17 bits) in 1/10 minute
    DateTime,     ///< year 14, month 4, day 5, hour 5, minute 6, second 6 bits
    Eta,          ///< month 4, day 5, hour 5, minute 6 bits, as "MM-DD HH:MM UTC"
    PayloadToEnd, ///< the rest of the message as the PDU's payload
    Spare         ///< skipped, no field
};

struct FieldSpec
{
    char const* label;
    FieldKind kind;
    unsigned bits;
    double scale = 1.0;
    int notAvailable = -1;          ///< raw value that means "not available"; -1: none
    int special = -1;               ///< raw value with a text of its own ("x or more")
    unsigned specialTranslation = 0;
    unsigned translationBase = 0;   ///< for Enum
    bool isSigned = false;
};

struct MessageLayout
{
    unsigned type;
    int part; ///< -1, or the part number of type 24
    char const* name;
    std::vector<FieldSpec> fields;
};

/// PDU IDs of AIS: 0x10000 (the communication system) + type * 16 + part.
unsigned pduId(unsigned type, int part);
/// The layout of a message; unknown and reserved types get a layout that keeps the bits as
/// payload.
MessageLayout const& layoutFor(unsigned type, int part);
/// Null for an ID that is no AIS PDU ID.
MessageLayout const* layoutForPduId(unsigned id);
/// The labels of a layout's fields, spares left out.
std::vector<QString> labels(MessageLayout const& layout);

// Translation IDs (PduNaming::PDUDataTranslator).
enum Translation : unsigned {
    NotAvailable = 1,
    TurningRightFast = 2,
    TurningLeftFast = 3,
    SpeedAtLeast102 = 4,
    SpeedAtLeast1022 = 5,
    AltitudeAtLeast4094 = 6,
    DraughtAtLeast255 = 7,
    LengthAtLeast511 = 8,
    BreadthAtLeast63 = 9,
    NavigationalStatusBase = 0x100,
    ShipTypeBase = 0x200,
    EpfdBase = 0x300,
    ManoeuvreBase = 0x400,
    AtonTypeBase = 0x500,
    AccuracyBase = 0x600,
    TimeStampBase = 0x700, ///< only 60 to 63 are texts; 0 to 59 are seconds
    LatencyBase = 0x800
};
/// The text of a translation ID; empty for an unknown one.
QString translation(unsigned id);

} // namespace ais
