#include "transmissionsystemmodel.h"

#include "clock.h"
#include "frameformat.h"
#include "transmissionsystemhelper.h"

#include <QLocale>
#include <alphabetkit/udadecoder.h>
#include <appstartup/cfgcenter.h>
#include <charconv>
#include <cstring>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

namespace {

template <typename T>
T read(QByteArray const& frame, int offset)
{
    T value;
    std::memcpy(&value, frame.constData() + offset, sizeof value);
    return value;
}

QString configuredAlphabetsDirectory()
{
    std::unique_ptr<Cfg> const configuration =
        CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), 4);
    return configuration
               ? configuration->GetValue(QStringLiteral("MorseAlphabets"), QStringLiteral("."))
               : QStringLiteral(".");
}

QString const TypeInt = QStringLiteral("int");
QString const TypeString = QStringLiteral("string");

} // namespace

// --- Dispatch --------------------------------------------------------------------------------

template <void (TransmissionSystemModel::*process)(TransmissionSystemModel::PDUDataBlock*, void*)>
void TransmissionSystemModel::RunProcessor(TransmissionSystemModel& model, FrameBlocks& blocks,
                                           void* record)
{
    (model.*process)(blocks.block, record);
}

void TransmissionSystemModel::RunACARS(TransmissionSystemModel& model, FrameBlocks& blocks,
                                       void* record)
{
    blocks.parent = model.Process_ACARS(blocks.block, record);
}

void TransmissionSystemModel::RunF7W(TransmissionSystemModel& model, FrameBlocks& blocks,
                                     void* record)
{
    blocks.block = model.Process_F7W(blocks.block, record);
}

// Indexed by transmission-system code.
std::array<TransmissionSystemModel::Processor, TransmissionSystemModel::IgnoredCode> const
    TransmissionSystemModel::Processors = {
        &RunProcessor<&TransmissionSystemModel::Process_ASCII>,
        &RunProcessor<&TransmissionSystemModel::Process_UNICODE>,
        &RunProcessor<&TransmissionSystemModel::Process_ATIS>,
        &RunProcessor<&TransmissionSystemModel::Process_FMS_BOS>,
        &RunProcessor<&TransmissionSystemModel::Process_ZVEI>,
        &RunProcessor<&TransmissionSystemModel::Process_ZVEI_VDEW>,
        &RunProcessor<&TransmissionSystemModel::Process_POCSAG>,
        &RunProcessor<&TransmissionSystemModel::Process_PACKET_RADIO>,
        &RunProcessor<&TransmissionSystemModel::Process_MPT1327>,
        &RunACARS,
        &RunProcessor<&TransmissionSystemModel::Process_PACTOR>,
        &RunProcessor<&TransmissionSystemModel::Process_CLOVER>,
        &RunF7W,
};

// --- Life cycle ------------------------------------------------------------------------------

TransmissionSystemModel::TransmissionSystemModel()
    : m_helper(std::make_unique<TransmissionSystemHelper>()),
      m_decoder(std::make_unique<AlphabetKit::UdaDecoder>())
{
    QString const directory = configuredAlphabetsDirectory();
    if (directory != getAlphabetsDirectory()) {
        NerikResultModel::setAlphabetsDirectory(directory);
        m_decoder->LoadAlphabets(directory);
    }
}

TransmissionSystemModel::~TransmissionSystemModel() = default;

void TransmissionSystemModel::clear()
{
    NerikResultModel::clear();
}

bool TransmissionSystemModel::setAlphabetsDirectory(QString const& directory)
{
    if (directory == getAlphabetsDirectory()) {
        return true;
    }
    NerikResultModel::setAlphabetsDirectory(directory);
    m_decoder->LoadAlphabets(directory);
    return true;
}

bool TransmissionSystemModel::setDemodulator(QString const& demodulator)
{
    if (demodulator == getDemodulator()) {
        return true;
    }
    if (!m_decoder->GetAlphabets(demodulator).contains(m_decoder->GetCurrentAlphabet())) {
        m_decoder->SelectAlphabet(QStringLiteral("None"));
    }
    // Stores the name and notes the settings change.
    return NerikResultModel::setDemodulator(demodulator);
}

bool TransmissionSystemModel::setAlphabet(QString const& alphabet, bool& changed)
{
    if (alphabet.isEmpty() || alphabet == m_decoder->GetCurrentSettings()) {
        return false;
    }
    changed = true;
    if (m_decoder->SelectAlphabet(alphabet)) {
        return true;
    }
    m_decoder->SelectAlphabet(QStringLiteral("None"));
    return false;
}

QString TransmissionSystemModel::getAlphabet() const
{
    return m_decoder->GetCurrentAlphabet();
}

QStringList TransmissionSystemModel::getAllAlphabets() const
{
    return m_decoder->GetAlphabets();
}

QStringList TransmissionSystemModel::getAvailableAlphabets() const
{
    return m_decoder->GetAlphabets(getDemodulator());
}

// --- Frames ----------------------------------------------------------------------------------

bool TransmissionSystemModel::processData(QByteArray& frame)
{
    if (frame.size() < RecordOffset || read<quint32>(frame, FrameMagicOffset) != FRAME_MAGIC ||
        read<quint32>(frame, FrameTypeOffset) != HeaderLength) {
        return false;
    }
    unsigned const code = read<quint32>(frame, CodeOffset) & 0xFFu;
    m_transmissionType = code;
    if (code == IgnoredCode) {
        return true;
    }
    m_transmissionTime = read<quint64>(frame, TimeStampOffset);
    QDateTime const time = ToDateTime(m_transmissionTime);
    int nameWords[4];
    std::memcpy(nameWords, frame.constData() + BlockNameOffset, sizeof nameWords);
    QString const name = ToASCII(nameWords, 4);
    m_endConnection = false;

    NerikResultModel::getTransmissionTime(time);
    Transmission* transmission = getCurrentTransmission();
    if (transmission == nullptr) {
        transmission = createTransmission(time);
    }
    m_pduOffset = transmission->GetPDUDataBlocks().size();
    if (m_pduOffset == 0) {
        m_continuationPending = false;
    }

    if (code == PduCode) {
        ProcessPDU(frame);
        return true;
    }
    // The record is read in place; Word() and WordsAvailable() keep processors inside it.
    m_frameBegin = frame.constData();
    m_frameEnd = m_frameBegin + frame.size();
    FrameBlocks blocks;
    blocks.block = BeginBlock(code << 16, time, name);
    if (code < Processors.size()) {
        Processors[code](*this, blocks, frame.data() + RecordOffset);
    }
    EndBlock(blocks.block, blocks.parent, time);
    m_frameBegin = m_frameEnd = nullptr;
    return true;
}

int TransmissionSystemModel::getPDUOffset() const
{
    Transmission const* transmission = getCurrentTransmission();
    if (transmission != nullptr && m_pduOffset < transmission->GetPDUDataBlocks().size()) {
        return m_pduOffset;
    }
    return -1;
}

QDateTime TransmissionSystemModel::ToDateTime(quint64 microseconds)
{
    // Whole seconds plus the millisecond part; what lies below a millisecond is dropped.
    return QDateTime::fromMSecsSinceEpoch(
        qint64(microseconds / 1000000u) * 1000 + qint64((microseconds / 1000u) % 1000u), Qt::UTC);
}

// --- Blocks ----------------------------------------------------------------------------------

TransmissionSystemModel::PDUDataBlock*
TransmissionSystemModel::BeginBlock(unsigned type, QDateTime const& time, QString const& name)
{
    auto* block = new PDUDataBlock;
    block->SetType(type);
    block->SetTimeStamp(time);
    block->SetName(name);
    // The method is the decoder that produced the message.
    block->SetMethod(getDecoder());
    block->SetID(getNextID());
    Transmission* transmission = getCurrentTransmission();
    if (transmission != nullptr && transmission->GetPDUDataBlocks().isEmpty()) {
        if (time.date().isValid()) {
            transmission->SetStartTime(time);
        } else {
            // A time of day alone is taken as today's.
            QDateTime start = Clock::currentDateTimeUtc();
            start.setTime(time.time());
            transmission->SetStartTime(start);
        }
    }
    return block;
}

void TransmissionSystemModel::EndBlock(PDUDataBlock* block, PDUDataBlock* parent,
                                       QDateTime const& time)
{
    if (block == nullptr) {
        return;
    }
    if (!block->IsValid()) {
        delete block;
        return;
    }
    if (parent != nullptr) {
        parent->AddPDUDataBlock(block);
        return;
    }
    Transmission* transmission = getCurrentTransmission();
    if (transmission == nullptr) {
        delete block;
        return;
    }
    transmission->AddPDUDataBlock(block);
    if (time > transmission->GetStopTime()) {
        transmission->SetStopTime(time);
    }
    m_continuationPending = false;
}

// --- Fields ----------------------------------------------------------------------------------

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label,
                                       QString const& value, QString const& type)
{
    block->AddField(NerikResultDataXml::Field(label, type, value));
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label,
                                       QString const& value)
{
    AddField(block, label, value, TypeString);
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label, unsigned value)
{
    AddField(block, label, QString::number(value), TypeInt);
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label, unsigned value,
                                       int base, int width, QString const& prefix)
{
    AddField(block, label, prefix + QStringLiteral("%1").arg(value, width, base, QLatin1Char('0')),
             TypeInt);
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label, float value)
{
    AddField(block, label, FloatToString(value), QStringLiteral("float"));
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label, double value)
{
    AddField(block, label, QString::number(value, 'g', QLocale::FloatingPointShortest),
             QStringLiteral("float"));
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label, quint64 value)
{
    AddField(block, label, QString::number(value), TypeInt);
}

void TransmissionSystemModel::AddField(PDUDataBlock* block, QString const& label, bool value)
{
    AddField(block, label, value ? tr("true") : tr("false"), QStringLiteral("bool"));
}

// --- Formatting ------------------------------------------------------------------------------

void TransmissionSystemModel::FormatData(ePDU_DATAREPRESENTATION, unsigned, unsigned, unsigned*,
                                         QString&, QString&)
{
}

void TransmissionSystemModel::FormatBitString(unsigned const*, unsigned, unsigned, QString&) {}

void TransmissionSystemModel::FormatExtNumber(unsigned const*, unsigned, unsigned, QString&) {}

void TransmissionSystemModel::FormatFrequency(QString&) {}

QString TransmissionSystemModel::FrequencyToString(unsigned hertz)
{
    return FrequencyToString(quint64(hertz));
}

QString TransmissionSystemModel::FrequencyToString(quint64 hertz)
{
    QString text = QString::number(hertz);
    FormatFrequency(text);
    return text;
}

QChar TransmissionSystemModel::CleanCharacter(uint code)
{
    if (code == 160) {
        return QLatin1Char('\n');
    }
    QChar const c(code);
    if (c == QLatin1Char('\n') || c == QLatin1Char('\r') || c.isPrint()) {
        return c;
    }
    return QLatin1Char('_');
}

QString TransmissionSystemModel::ToASCII(int const* words, unsigned wordCount)
{
    QString text;
    if (words == nullptr) {
        return text;
    }
    auto const* bytes = reinterpret_cast<uchar const*>(words);
    for (unsigned i = 0; i < 4u * wordCount && bytes[i] != 0; ++i) {
        text += CleanCharacter(bytes[i]);
    }
    return text;
}

void TransmissionSystemModel::DecodeString(QByteArray const& bytes, QString& out, char const* table,
                                           unsigned mask)
{
    out.clear();
    out.reserve(bytes.size());
    for (char const byte : bytes) {
        out += QLatin1Char(table[uchar(byte) & mask]);
    }
}

QString TransmissionSystemModel::FloatToString(float value)
{
    char buffer[32];
    std::to_chars_result const result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

// --- Payloads --------------------------------------------------------------------------------

void TransmissionSystemModel::SetPayload(PDUDataBlock*, QString const&, QString&, QByteArray&,
                                         QString const&, bool)
{
}

void TransmissionSystemModel::SetASCIIPayload(PDUDataBlock*, QString const&, unsigned, char const*)
{
}

void TransmissionSystemModel::SetPackedASCIIPayload(PDUDataBlock*, QString const&, unsigned, int*)
{
}

void TransmissionSystemModel::SetPackedUnicodePayload(PDUDataBlock*, QString const&, unsigned, int*)
{
}

void TransmissionSystemModel::SetBinaryPayload(PDUDataBlock*, QString const&,
                                               ePDU_DATAREPRESENTATION, unsigned, unsigned,
                                               unsigned*)
{
}

void TransmissionSystemModel::SetCRC(PDUDataBlock* block, ePDU_CHECKSUM_STATE state)
{
    if (state == PDU_CHECKSUM_OK || state == PDU_CHECKSUM_WRONG) {
        SetCRC(block, state == PDU_CHECKSUM_OK);
    }
}

void TransmissionSystemModel::SetCRC(PDUDataBlock* block, bool ok)
{
    block->SetCRC(m_helper->GetCRCText(ok));
}

// --- PDU frames ------------------------------------------------------------------------------

void TransmissionSystemModel::ProcessPDU(QByteArray const&) {}
void TransmissionSystemModel::ProcessPDUVector(std::vector<CPDU*>&) {}
void TransmissionSystemModel::ProcessPDUSubVectors(PDUDataBlock*, std::vector<CPDU*>&,
                                                   QString const&, quint64)
{
}
void TransmissionSystemModel::ProcessPDUFields(PDUDataBlock*,
                                               std::vector<CPDU_FieldContainer*> const&,
                                               QStringList&, quint64)
{
}

// --- Re-translation --------------------------------------------------------------------------

void TransmissionSystemModel::translateCurrentTransmission() {}

void TransmissionSystemModel::Translate(QString const&, bool, QList<PDUDataBlock*>&) {}

// --- Records ---------------------------------------------------------------------------------

unsigned TransmissionSystemModel::WordsAvailable(void const* record, unsigned index) const
{
    auto const* begin = static_cast<char const*>(record);
    if (begin < m_frameBegin || begin >= m_frameEnd) {
        return 0;
    }
    quint64 const words = quint64(m_frameEnd - begin) / 4u;
    return words > index ? unsigned(words - index) : 0u;
}

quint32 TransmissionSystemModel::Word(void const* record, unsigned index) const
{
    if (WordsAvailable(record, index) == 0) {
        return 0;
    }
    quint32 value;
    std::memcpy(&value, static_cast<char const*>(record) + 4u * quint64(index), sizeof value);
    return value;
}

int* TransmissionSystemModel::WordAt(void* record, unsigned index)
{
    return reinterpret_cast<int*>(static_cast<char*>(record) + 4u * quint64(index));
}

} // namespace zelkodatastreamconverter
