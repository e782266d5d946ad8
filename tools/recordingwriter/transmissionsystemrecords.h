#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// Record builders for transmission-system frames (frame type 368), one per system, as the
/// receiver delivers them.
///
/// A transmission-system frame's payload (from frame offset 24) is:
///
///   offset 24  u64 time stamp, microseconds since 1970-01-01 00:00 UTC, low word first
///   offset 32  block name, 16 bytes of ASCII, zero-filled (or all 16 used)
///   offset 48  u32 transmission-system code (TransmissionSystem; only the low byte counts)
///   offset 52  the system's record
///
/// A record is a sequence of 32-bit words in the receiver's byte order. A text field of n
/// words holds up to 4 * n 8-bit characters, the first at the lowest address, zero-filled.
/// Every builder here returns the record in host order; RecordingWriter::writeFrame turns
/// the whole frame, record included, into the other byte order when asked, word by word, as
/// a receiver of that order writes it.
///
///     RecordingWriter out(&file);
///     PocsagRecord page;
///     page.address = 1234567;
///     page.function = 3;
///     page.message = "CALL OFFICE";
///     out.writeFrame(FrameType::TransmissionSystem,
///                    transmissionSystemPayload(TransmissionSystem::POCSAG, time, "POCSAG",
///                                              page.record()),
///                    ByteOrder::Swapped);
namespace zelkorecording {

/// The transmission-system code of a frame (offset 48).
enum class TransmissionSystem : quint32
{
    ASCII = 0,
    Unicode = 1,
    ATIS = 2,
    FmsBos = 3,
    ZVEI = 4,
    ZveiVdew = 5,
    POCSAG = 6,
    PacketRadio = 7,
    MPT1327 = 8,
    ACARS = 9,
    PACTOR = 10,
    CLOVER = 11,
    F7W = 12,
    Ignored = 13, ///< a frame the converter reads and drops (the receiver's keep-alive)
    PDU = 16,     ///< a protocol unit for the PDU decoding library
};

/// The payload of one transmission-system frame: time, block name, code, record.
QByteArray transmissionSystemPayload(TransmissionSystem system, quint64 microseconds,
                                     QByteArray const& blockName, QByteArray const& record);

/// Free text: word 0 = word count n, then n words of packed 8-bit characters.
struct AsciiRecord
{
    QByteArray text;
    QByteArray record() const;
};

/// Free text in UTF-16: word 0 = word count n, then n words of 16-bit units, the first unit
/// of each word at its lower address, a zero unit after the text.
struct UnicodeRecord
{
    QString text;
    QByteArray record() const;
};

/// An ATIS identification on inland waterways: word 0 = maritime identification digits,
/// words 1-2 = the ship's identifier (text of 2 words).
struct AtisRecord
{
    quint32 mid = 0;
    QByteArray shipId;
    QByteArray record() const;
};

/// An FMS telegram of the German BOS vehicle radio: word 0 organisation, word 1 state
/// (0-17: codes 14 and 15 split by district half), word 2 district, word 3 vehicle (text of
/// 1 word), word 4 status, word 5 control byte (bit value 1 stage 1, bit value 2 direction
/// to vehicle, bits 2-3 short-info number).
struct FmsBosRecord
{
    quint32 organisation = 0;
    quint32 state = 0;
    quint32 district = 0;
    QByteArray vehicle;
    quint32 status = 0;
    bool stageOne = false;
    bool toVehicle = false;
    quint32 shortInfo = 0;
    quint32 controlByte() const;
    QByteArray record() const;
};

/// A ZVEI tone call: word 0 checksum flag (non-zero: ok), word 1 mode (tone-call meaning),
/// word 2 status, word 3 EVU word (manufacturer in the low byte, model above), word 4 call
/// number (text of 1 word).
struct ZveiRecord
{
    bool crcOk = true;
    quint32 mode = 0;
    quint32 status = 0;
    quint32 manufacturer = 0;
    quint32 model = 0;
    QByteArray callNumber;
    quint32 evuWord() const { return (model << 8) | (manufacturer & 0xFFu); }
    QByteArray record() const;
};

/// A ZVEI call under the VDEW (utilities) meanings: as ZVEI, but word 4 gives the length of
/// the call number in words and the call number follows from word 5.
struct ZveiVdewRecord : ZveiRecord
{
    QByteArray record() const;
};

/// A POCSAG page: word 0 checksum flag, word 1 data rate (baud), word 2 address code word
/// (function in bits 0-1, frame position in bits 2-4, address from bit 5), word 3 message
/// word count n, then the message as packed 8-bit text ending with a zero byte.
struct PocsagRecord
{
    bool crcOk = true;
    quint32 rate = 1200;
    quint32 address = 0;
    quint32 function = 0; ///< 0 numeric, 3 alphanumeric
    quint32 codeWord() const { return (address << 5) | ((address & 7u) << 2) | (function & 3u); }
    QByteArray message;
    QByteArray record() const;
};

/// An AX.25 address as the receiver delivers it: call sign (text of 2 words), SSID, and a
/// fourth word with the address's C/H bit (command/response, or "has been repeated").
struct Ax25Address
{
    QByteArray callSign;
    quint32 ssid = 0;
    bool chBit = false;
};

/// An AX.25 frame: word 0 checksum flag, word 1 frame type (0 I, 1 S, 2 U), word 2 PID,
/// words 3-6 sender, 7-10 relay 1, 11-14 relay 2, 15-18 receiver, word 19 N(S) (I),
/// supervisory function (S) or modifier function (U), word 20 N(R) (I) or poll/final (U),
/// word 21 poll/final (I), word 22 information word count n, then the information bytes.
struct PacketRadioRecord
{
    enum FrameType : quint32
    {
        Information = 0,
        Supervisory = 1,
        Unnumbered = 2
    };
    /// Modifier functions as the receiver numbers them.
    enum Modifier : quint32
    {
        UI = 0,
        DM = 1,
        SABM = 2,
        DISC = 3,
        UA = 4
    };

    bool crcOk = true;
    quint32 frameType = Unnumbered;
    quint32 pid = 0xF0;
    Ax25Address sender;
    Ax25Address relay1;
    Ax25Address relay2;
    Ax25Address receiver;
    quint32 word19 = 0; ///< N(S), supervisory function or modifier function
    quint32 word20 = 0; ///< N(R) or poll/final of a U frame
    quint32 word21 = 0; ///< poll/final of an I frame
    QByteArray information;
    QByteArray record() const;
};

/// An MPT1327 trunked-radio event. Word 0 is a flag word: bit value 4 short data message,
/// 2 call, 1 control channel. A short data message is word 1 word count n, then packed text;
/// a call is word 1 transmission type, words 2-3 calling and 4-5 called party (text of 2
/// words each), word 6 channel, words 7-8 frequency in Hz (u64, low word first), word 9
/// frames; a control channel is word 1 system ID, word 2 channel, words 3-4 frequency in Hz.
struct Mpt1327Record
{
    static QByteArray shortData(QByteArray const& text);
    static QByteArray call(quint32 transmissionType, QByteArray const& calling,
                           QByteArray const& called, quint32 channel, quint64 frequencyHz,
                           quint32 frames);
    static QByteArray controlChannel(quint32 systemId, quint32 channel, quint64 frequencyHz);
};

/// One ACARS block: word 0 checksum flag, word 1 mode (category of operation), words 2-3
/// aircraft registration, word 4 link type, word 5 technical acknowledgement, word 6 label,
/// word 7 block ID (text of 1 word each but the registration), word 8 last-block flag (ETX
/// rather than ETB), word 9 message word count n, then the message text.
struct AcarsRecord
{
    bool crcOk = true;
    QByteArray mode = "2";
    QByteArray aircraft;
    QByteArray linkType = "VHF";
    QByteArray acknowledgement;
    QByteArray label;
    QByteArray blockId;
    bool lastBlock = true;
    QByteArray message;
    QByteArray record() const;
};

/// One PACTOR burst as the receiver's analyser reports it (word numbers in brackets): variant
/// [0], burst type [1], speed level [2], path mode [3], transmission mode [4], data (chat)
/// mode [5], [6] reserved (0), burst length in s [7, float], frequency in Hz [8], symbol rate
/// [9, float], signal level in dBµV [10, float], SNR in dB [11, float], sideband [12], packet
/// number [13], coding [14], data mode suggestion [15], speed level changeover request [16],
/// QRT packet [17], CRC value [18], decoding quality [19], content type [20], message byte
/// count [21], the message bytes from word 22.
struct PactorRecord
{
    quint32 variant = 2;
    quint32 burstType = 2;
    quint32 speedLevel = 1;
    quint32 pathMode = 2;
    quint32 transmissionMode = 2;
    quint32 dataMode = 3;
    float burstLength = 0.96f;
    quint32 frequency = 0;
    float symbolRate = 100.0f;
    float signalLevel = 0.0f;
    float snr = 0.0f;
    quint32 sideband = 1;
    quint32 packetNumber = 0;
    quint32 coding = 0;
    quint32 dataModeSuggestion = 0;
    quint32 speedLevelRequest = 0;
    quint32 qrtPacket = 0;
    quint32 crcValue = 0;
    quint32 decodingQuality = 15;
    quint32 contentType = 1;
    QByteArray message;
    QByteArray record() const;
};

/// One CLOVER block: block type [0], header [1], modulation [2], Reed-Solomon code
/// efficiency [3], block size [4], packet number [5], sideband [6], frequency in Hz [7],
/// [8] reserved (0), message byte count [9], the message bytes from word 10.
struct CloverRecord
{
    quint32 blockType = 0;
    quint32 header = 0;
    quint32 modulation = 3;
    quint32 codeEfficiency = 2;
    quint32 blockSize = 255;
    quint32 packetNumber = 0;
    quint32 sideband = 1;
    quint32 frequency = 0;
    QByteArray message;
    QByteArray record() const;
};

/// F7W: a two-channel (four-frequency) FSK emission whose channels the receiver splits into
/// time-multiplexed sub-channels. The record lists what every sub-channel carried during the
/// frame:
///
///   word 0            channel count C
///   per channel:      channel number, rate code (F7WRates), sub-channel count S
///   per sub-channel:  sub-channel number, name (text of 10 words), payload type (0 RAW,
///                     1 ASCII, 2 MORSE), element count E, bits per element B,
///                     then (E * B + 31) / 32 words of payload, packed from the least
///                     significant bit of the first byte on
///
/// RAW payloads are the sub-channel's demodulated bits as they came (B bits an element);
/// ASCII and MORSE payloads are characters (B = 8), MORSE being text that the receiver read
/// from on-off keying on the sub-channel.
struct F7WSubChannel
{
    enum PayloadType : quint32
    {
        Raw = 0,
        Ascii = 1,
        Morse = 2
    };
    quint32 number = 0;
    QByteArray name;
    quint32 payloadType = Ascii;
    quint32 elementCount = 0;
    quint32 bitsPerElement = 8;
    QByteArray data;
    /// A text sub-channel (ASCII or MORSE): one 8-bit element a character.
    static F7WSubChannel text(quint32 number, QByteArray const& name, QByteArray const& text,
                              quint32 payloadType = Ascii);
};

struct F7WChannel
{
    quint32 number = 0;
    quint32 rateCode = 0;
    QVector<F7WSubChannel> subChannels;
};

struct F7WRecord
{
    QVector<F7WChannel> channels;
    QByteArray record() const;
};

/// The symbol rates (baud) that an F7W rate code stands for; a code past the table is an
/// unmeasured rate.
constexpr float F7WRates[] = {50.0f, 75.0f, 96.0f, 100.0f, 150.0f, 192.0f, 200.0f, 300.0f};

} // namespace zelkorecording
