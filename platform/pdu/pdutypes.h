#pragma once
// Value kinds, checksum states and communication systems shared by the PDU decoding library
// and its users.

/// How the data of a field container is to be read.
enum ePDU_DATAREPRESENTATION : unsigned {
    PDU_REPRESENTATION_BINARY = 0,   ///< bytes, 16- or 32-bit words shown in hexadecimal
    PDU_REPRESENTATION_BOOL = 1,     ///< the lowest bit of the first byte
    PDU_REPRESENTATION_BITLIST = 2,  ///< `bits` bits per element, least significant first
    PDU_REPRESENTATION_UNSIGNED = 3, ///< 8, 16, 32 or 64-bit elements; other widths are gathered bit by bit
    PDU_REPRESENTATION_SIGNED = 4,   ///< as unsigned, two's complement
    PDU_REPRESENTATION_FLOAT = 5,    ///< 32 or 64-bit IEEE 754
    PDU_REPRESENTATION_STRING = 6,   ///< characters of 8, 16 or 32 bits
    PDU_REPRESENTATION_POSITION = 7, ///< pointers to CPDU_DisplayObject, one per element
    PDU_REPRESENTATION_DATETIME = 8  ///< pointers to CPDU_DisplayObject, one per element
};

/// Whether the PDU carried a checksum and whether it matched.
enum ePDU_CHECKSUM_STATE : unsigned {
    PDU_CHECKSUM_NONE = 0,
    PDU_CHECKSUM_OK = 1,
    PDU_CHECKSUM_WRONG = 2
};

/// The communication systems whose frames the library decodes: the first word of a PDU
/// frame's record.
enum eCOMMSYSTYPE : unsigned {
    COMMSYS_AIS = 1 ///< ITU-R M.1371 messages, see AisPduConverter
};

/// Field class of a container whose data is the PDU's payload rather than a labelled value.
constexpr unsigned PDU_FIELDCLASS_VALUE = 0;
constexpr unsigned PDU_FIELDCLASS_PAYLOAD = 8;
