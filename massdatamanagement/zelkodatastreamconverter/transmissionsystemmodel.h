#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>
#include <array>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <memory>
#include <pdu/cpdu_converter.h>
#include <vector>

namespace AlphabetKit {
class UdaDecoder;
}

namespace zelkodatastreamconverter {

class TransmissionSystemHelper;

/// The result model of transmission-system recordings (frame type 368): every frame holds one
/// decoded message of a pager, selective-calling, packet-radio, data-link or similar system,
/// and becomes one PDU data block (with child blocks where the system nests messages) of the
/// current transmission.
///
/// Frame layout (byte offsets from the frame start, host order):
///   0   32-bit  frame magic, FRAME_MAGIC
///   12  32-bit  header length, 368
///   24  64-bit  time stamp, microseconds since 1970-01-01 UTC
///   32  16 bytes block name, ASCII, NUL-terminated unless all 16 are used
///   48  32-bit  transmission-system code; only the low byte counts (TransmissionSystemCode)
///   52  ...     the system's record, 32-bit words
///
/// Each system's record is read by one processor (Process_<SYSTEM>) behind a table from code
/// to processor. Code 13 frames are accepted and ignored; an unknown code gives a block with
/// the frame's name only (dropped when the name is empty); PDU frames (code 16) go through the
/// PDU decoding library (CPDU_Converter_Factory), by the communication system their record
/// names; frames of a system it does not decode leave nothing.
///
/// Message texts (payloads) are decoded through the selected user alphabet; without one the
/// bytes are shown as Latin-1 with unprintable characters replaced. Changing the alphabet
/// does not touch what is there until translateCurrentTransmission().
class TransmissionSystemModel : public NerikResultModel
{
    Q_DECLARE_TR_FUNCTIONS(zelkodatastreamconverter::TransmissionSystemModel)
public:
    /// The header length every transmission-system frame carries.
    static constexpr quint32 HeaderLength = 368;
    /// Byte offsets in the frame.
    static constexpr int TimeStampOffset = 24;
    static constexpr int BlockNameOffset = 32;
    static constexpr int CodeOffset = 48;
    static constexpr int RecordOffset = 52;
    /// Frames of this code carry nothing for the result and are skipped.
    static constexpr unsigned IgnoredCode = 13;
    static constexpr unsigned PduCode = 16;

    /// The alphabets directory comes from the configuration ("JobManagement",
    /// "MorseAlphabets", default "." = the working directory).
    TransmissionSystemModel();
    ~TransmissionSystemModel() override;
    TransmissionSystemModel(TransmissionSystemModel const&) = delete;
    TransmissionSystemModel& operator=(TransmissionSystemModel const&) = delete;

    /// One frame. False only for a frame whose magic or header length is wrong; such a frame
    /// changes nothing.
    bool processData(QByteArray& frame);

    /// Index of the first top-level block that the last processData() added to the current
    /// transmission (for a continued multi-block message: its parent); -1 when it added none.
    int getPDUOffset() const;
    /// Whether the last frame ended a link connection (AX.25 disconnect request). The
    /// converter of a recording does not act on it; a host converting live may close the
    /// transmission.
    bool getEndConnection() const { return m_endConnection; }
    /// Raw time stamp of the last frame, microseconds since 1970-01-01 UTC.
    quint64 getTransmissionTime() const { return m_transmissionTime; }
    /// Transmission-system code of the last frame.
    quint32 getTransmissionType() const { return m_transmissionType; }

    /// Decodes the payloads of the current transmission again with the current alphabet.
    void translateCurrentTransmission();
    QStringList getAllAlphabets() const;
    /// The alphabets offered for the current demodulator.
    QStringList getAvailableAlphabets() const;

    void clear() override;
    bool setDemodulator(QString const& demodulator) override;
    bool setAlphabet(QString const& alphabet, bool& changed) override;
    bool setAlphabetsDirectory(QString const& directory) override;
    QString getAlphabet() const override;

    // --- Formatting, public for hosts and tests ---------------------------------------------

    /// The value text and type text of a field's data; nothing (both untouched) for null
    /// data, no elements or an unknown representation. Elements are separated by a blank.
    static void FormatData(ePDU_DATAREPRESENTATION representation, unsigned count, unsigned bits,
                           unsigned* data, QString& value, QString& type);
    /// count elements of bits "1"/"0" characters, gathered from the least significant bit of
    /// data[0] on without regard to element or word boundaries.
    static void FormatBitString(unsigned const* data, unsigned bits, unsigned count,
                                QString& value);
    /// count elements of bits bits gathered as FormatBitString(), in decimal.
    static void FormatExtNumber(unsigned const* data, unsigned bits, unsigned count,
                                QString& value);
    /// Puts the point and unit into a decimal frequency in Hz and drops trailing zeros
    /// ("14250000000" -> "14.25 GHz", "145000000" -> "145. MHz", "100" -> "100 Hz"). Below
    /// 1 MHz the point lands where receivers have always put it, not at the kHz position.
    static void FormatFrequency(QString& frequency);
    static QString FrequencyToString(unsigned hertz);
    static QString FrequencyToString(quint64 hertz);
    /// At most 4 * wordCount bytes up to the first zero byte, cleaned (CleanCharacter()).
    static QString ToASCII(int const* words, unsigned wordCount);
    /// Each byte b becomes table[b & mask].
    static void DecodeString(QByteArray const& bytes, QString& out, char const* table,
                             unsigned mask);
    /// Byte 160 becomes a line feed; carriage return and line feed stay; anything else that
    /// is not printable becomes "_".
    static QChar CleanCharacter(uint code);
    /// The shortest text that reads back as the same float ("1.5", "0.1").
    static QString FloatToString(float value);

private:
    // The tests drive blocks, fields and payloads directly.
    friend struct TransmissionSystemModelTestAccess;

    /// The block and the parent it goes to while a frame is processed.
    struct FrameBlocks
    {
        PDUDataBlock* block = nullptr;
        PDUDataBlock* parent = nullptr;
    };
    using Processor = void (*)(TransmissionSystemModel& model, FrameBlocks& blocks, void* record);
    /// The processor of each transmission-system code below 13; set in
    /// transmissionsystemmodel.cpp.
    static std::array<Processor, IgnoredCode> const Processors;

    template <void (TransmissionSystemModel::*process)(PDUDataBlock*, void*)>
    static void RunProcessor(TransmissionSystemModel& model, FrameBlocks& blocks, void* record);
    static void RunACARS(TransmissionSystemModel& model, FrameBlocks& blocks, void* record);
    static void RunF7W(TransmissionSystemModel& model, FrameBlocks& blocks, void* record);

    // --- Blocks -------------------------------------------------------------------------------

    PDUDataBlock* BeginBlock(unsigned type, QDateTime const& time, QString const& name);
    void EndBlock(PDUDataBlock* block, PDUDataBlock* parent, QDateTime const& time);
    static QDateTime ToDateTime(quint64 microseconds);

    // --- Fields -------------------------------------------------------------------------------

    void AddField(PDUDataBlock* block, QString const& label, QString const& value,
                  QString const& type);
    /// Type "string".
    void AddField(PDUDataBlock* block, QString const& label, QString const& value);
    /// Decimal, type "int".
    void AddField(PDUDataBlock* block, QString const& label, unsigned value);
    /// prefix, then value in base, left-padded with "0" to width digits; type "int".
    void AddField(PDUDataBlock* block, QString const& label, unsigned value, int base, int width,
                  QString const& prefix);
    void AddField(PDUDataBlock* block, QString const& label, float value);
    void AddField(PDUDataBlock* block, QString const& label, double value);
    void AddField(PDUDataBlock* block, QString const& label, quint64 value);
    /// "true" or "false", translated; type "bool".
    void AddField(PDUDataBlock* block, QString const& label, bool value);
    /// A text literal would otherwise turn into a bool.
    void AddField(PDUDataBlock* block, QString const& label, char const* value) = delete;

    // --- Payloads -----------------------------------------------------------------------------

    void SetPayload(PDUDataBlock* block, QString const& label, QString& text, QByteArray& data,
                    QString const& contentCode, bool rtl);
    void SetASCIIPayload(PDUDataBlock* block, QString const& label, unsigned byteCount,
                         char const* bytes);
    void SetPackedASCIIPayload(PDUDataBlock* block, QString const& label, unsigned wordCount,
                               int* words);
    void SetPackedUnicodePayload(PDUDataBlock* block, QString const& label, unsigned wordCount,
                                 int* words);
    void SetBinaryPayload(PDUDataBlock* block, QString const& label,
                          ePDU_DATAREPRESENTATION representation, unsigned count, unsigned bits,
                          unsigned* data);

    /// "ok" for PDU_CHECKSUM_OK, "not ok" for PDU_CHECKSUM_WRONG, nothing otherwise.
    void SetCRC(PDUDataBlock* block, ePDU_CHECKSUM_STATE state);
    void SetCRC(PDUDataBlock* block, bool ok);

    // --- PDU frames (code 16) -----------------------------------------------------------------

    void ProcessPDU(QByteArray const& frame);
    void ProcessPDUVector(std::vector<CPDU*>& pdus);
    void ProcessPDUSubVectors(PDUDataBlock* parent, std::vector<CPDU*>& pdus, QString const& label,
                              quint64 time);
    void ProcessPDUFields(PDUDataBlock* block, std::vector<CPDU_FieldContainer*> const& fields,
                          QStringList& headers, quint64 time);

    void Translate(QString const& contentCode, bool rtl, QList<PDUDataBlock*>& blocks);

    // --- Records ------------------------------------------------------------------------------

    /// How many whole words the frame holds from word index of record on (0 past its end).
    /// Processors read their records through a RecordWords view bounded by it.
    unsigned WordsAvailable(void const* record, unsigned index) const;

    // --- The per-system processors (one unit each) --------------------------------------------

    void Process_ASCII(PDUDataBlock* block, void* record);
    void Process_UNICODE(PDUDataBlock* block, void* record);
    void Process_ATIS(PDUDataBlock* block, void* record);
    void Process_FMS_BOS(PDUDataBlock* block, void* record);
    void Process_ZVEI(PDUDataBlock* block, void* record);
    void Process_ZVEI_VDEW(PDUDataBlock* block, void* record);
    /// The fields both five-tone calls share: the EVU word split into maker and model, the
    /// status and the mode with its meaning.
    void AddFiveToneFields(PDUDataBlock* block, quint32 evu, quint32 status, QString const& mode);
    void Process_POCSAG(PDUDataBlock* block, void* record);
    void Process_PACKET_RADIO(PDUDataBlock* block, void* record);
    void Process_MPT1327(PDUDataBlock* block, void* record);
    /// The parent block of a continued multi-block message, or null.
    PDUDataBlock* Process_ACARS(PDUDataBlock* block, void* record);
    void Process_PACTOR(PDUDataBlock* block, void* record);
    void Process_CLOVER(PDUDataBlock* block, void* record);
    /// The block to end in place of block.
    PDUDataBlock* Process_F7W(PDUDataBlock* block, void* record);
    /// A 4-word AX.25 address: "SSID:CALL", empty without a call sign.
    static QString PACKET_RADIO_Address(void* address);

    std::unique_ptr<TransmissionSystemHelper> m_helper;
    CPDU_Converter* m_pduConverter = nullptr; // the PDU library's, for the last PDU frame
    quint32 m_transmissionType = 0;
    quint64 m_transmissionTime = 0;
    int m_pduOffset = 0;
    bool m_continuationPending = false;
    bool m_endConnection = false;
    std::unique_ptr<AlphabetKit::UdaDecoder> m_decoder;

    // The frame being processed, for WordsAvailable().
    char const* m_frameBegin = nullptr;
    char const* m_frameEnd = nullptr;
};

} // namespace zelkodatastreamconverter
