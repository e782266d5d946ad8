#include "transmissionsystemmodel.h"

#include "clock.h"
#include "frameformat.h"
#include "framevalues.h"
#include "transmissionsystemhelper.h"

#include <QLocale>
#include <alphabetkit/udadecoder.h>
#include <charconv>
#include <cstring>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>
#include <pdu/pdunaming.h>

namespace zelkodatastreamconverter {

namespace {

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
    if (frame.size() < RecordOffset || readAt<quint32>(frame, FrameMagicOffset) != FRAME_MAGIC ||
        readAt<quint32>(frame, FrameTypeOffset) != HeaderLength) {
        return false;
    }
    unsigned const code = readAt<quint32>(frame, CodeOffset) & 0xFFu;
    m_transmissionType = code;
    if (code == IgnoredCode) {
        return true;
    }
    m_transmissionTime = readAt<quint64>(frame, TimeStampOffset);
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
    // The record is read in place; WordsAvailable() keeps processors inside it.
    m_frameBegin = frame.constData();
    m_frameEnd = m_frameBegin + frame.size();
    FrameBlocks blocks;
    blocks.block = BeginBlock(code << 16, time, name);
    if (code < Processors.size()) {
        // Processors only read the record; constData() spares a detaching copy of a shared frame.
        Processors[code](*this, blocks, const_cast<char*>(frame.constData()) + RecordOffset);
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
    return timeFromMicroseconds(microseconds);
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

namespace {

// Element i of an array of T, read without alignment assumptions.
template <typename T>
T element(unsigned const* data, unsigned i)
{
    T value;
    std::memcpy(&value, reinterpret_cast<char const*>(data) + sizeof(T) * i, sizeof value);
    return value;
}

// The elements as texts separated by a blank.
template <typename T, typename Format>
QString joinElements(unsigned const* data, unsigned count, Format format)
{
    QStringList parts;
    parts.reserve(int(count));
    for (unsigned i = 0; i < count; ++i) {
        parts << format(element<T>(data, i));
    }
    return parts.join(QLatin1Char(' '));
}

template <typename T>
QString joinNumbers(unsigned const* data, unsigned count)
{
    return joinElements<T>(data, count, [](T value) { return QString::number(value); });
}

template <typename T>
QString joinHex(unsigned const* data, unsigned count)
{
    return joinElements<T>(data, count, [](T value) {
        return QStringLiteral("%1").arg(quint64(value), 2, 16, QLatin1Char('0')).toUpper();
    });
}

template <typename T>
QString joinFloats(unsigned const* data, unsigned count)
{
    return joinElements<T>(data, count,
                           [](T value) { return QString::number(double(value), 'g', 6); });
}

template <typename T>
QString cleanText(unsigned const* data, unsigned count)
{
    QString text;
    text.reserve(int(count));
    for (unsigned i = 0; i < count; ++i) {
        text += TransmissionSystemModel::CleanCharacter(uint(element<T>(data, i)));
    }
    return text;
}

QString displayObjects(unsigned const* data, unsigned count)
{
    return joinElements<CPDU_DisplayObject const*>(data, count, [](auto object) {
        return object != nullptr ? QString::fromStdWString(object->toWString()) : QString();
    });
}

// Gathers bits from the least significant bit of data[0] on; the cursor runs on over word
// boundaries.
class BitCursor
{
public:
    explicit BitCursor(unsigned const* data) : m_data(data) {}
    bool next()
    {
        bool const bit = (m_data[m_position / 32] >> (m_position % 32)) & 1u;
        ++m_position;
        return bit;
    }

private:
    unsigned const* m_data;
    quint64 m_position = 0;
};

QString const TypeNames[] = {
    QStringLiteral("binary"), QStringLiteral("bool"),     QStringLiteral("bitlist"),
    QStringLiteral("int"),    QStringLiteral("int"),      QStringLiteral("float"),
    QStringLiteral("string"), QStringLiteral("position"), QStringLiteral("datetime"),
};

} // namespace

void TransmissionSystemModel::FormatData(ePDU_DATAREPRESENTATION representation, unsigned count,
                                         unsigned bits, unsigned* data, QString& value,
                                         QString& type)
{
    if (data == nullptr || count == 0 || representation > PDU_REPRESENTATION_DATETIME) {
        return;
    }
    // Element width in bytes; 0 for widths that are no whole number of bytes.
    unsigned const width = bits % 8 == 0 ? bits / 8 : 0;
    QString text;
    bool produced = true;
    switch (representation) {
    case PDU_REPRESENTATION_BINARY:
        text = width == 4   ? joinHex<quint32>(data, count)
               : width == 2 ? joinHex<quint16>(data, count)
                            : joinHex<quint8>(data, count);
        break;
    case PDU_REPRESENTATION_BOOL: {
        // Every element is judged by the first byte: receivers deliver repeated flags so.
        QString const one = (element<quint8>(data, 0) & 1u) ? tr("true") : tr("false");
        text = QStringList(QVector<QString>(int(count), one).toList()).join(QLatin1Char(' '));
        break;
    }
    case PDU_REPRESENTATION_BITLIST:
        FormatBitString(data, bits, count, text);
        break;
    case PDU_REPRESENTATION_UNSIGNED:
    case PDU_REPRESENTATION_SIGNED: {
        bool const isSigned = representation == PDU_REPRESENTATION_SIGNED;
        switch (width) {
        case 1:
            text = isSigned ? joinNumbers<qint8>(data, count) : joinNumbers<quint8>(data, count);
            break;
        case 2:
            text = isSigned ? joinNumbers<qint16>(data, count) : joinNumbers<quint16>(data, count);
            break;
        case 4:
            text = isSigned ? joinNumbers<qint32>(data, count) : joinNumbers<quint32>(data, count);
            break;
        case 8:
            text = isSigned ? joinNumbers<qint64>(data, count) : joinNumbers<quint64>(data, count);
            break;
        default:
            FormatExtNumber(data, bits, count, text);
        }
        break;
    }
    case PDU_REPRESENTATION_FLOAT:
        produced = width == 4 || width == 8;
        if (produced) {
            text = width == 4 ? joinFloats<float>(data, count) : joinFloats<double>(data, count);
        }
        break;
    case PDU_REPRESENTATION_STRING:
        produced = width == 1 || width == 2 || width == 4;
        if (produced) {
            text = width == 1   ? cleanText<quint8>(data, count)
                   : width == 2 ? cleanText<quint16>(data, count)
                                : cleanText<quint32>(data, count);
        }
        break;
    case PDU_REPRESENTATION_POSITION:
    case PDU_REPRESENTATION_DATETIME:
        text = displayObjects(data, count);
        break;
    }
    if (produced) {
        value = text;
        type = TypeNames[representation];
    }
}

void TransmissionSystemModel::FormatBitString(unsigned const* data, unsigned bits, unsigned count,
                                              QString& value)
{
    value.clear();
    if (data == nullptr) {
        return;
    }
    BitCursor cursor(data);
    for (unsigned i = 0; i < count; ++i) {
        if (i > 0) {
            value += QLatin1Char(' ');
        }
        for (unsigned bit = 0; bit < bits; ++bit) {
            value += cursor.next() ? QLatin1Char('1') : QLatin1Char('0');
        }
    }
}

void TransmissionSystemModel::FormatExtNumber(unsigned const* data, unsigned bits, unsigned count,
                                              QString& value)
{
    value.clear();
    if (data == nullptr) {
        return;
    }
    BitCursor cursor(data);
    QStringList parts;
    for (unsigned i = 0; i < count; ++i) {
        quint64 number = 0;
        for (unsigned bit = 0; bit < bits; ++bit) {
            // Bits above the 64th are read past but cannot be shown.
            if (cursor.next() && bit < 64) {
                number |= quint64(1) << bit;
            }
        }
        parts << QString::number(number);
    }
    value = parts.join(QLatin1Char(' '));
}

void TransmissionSystemModel::FormatFrequency(QString& frequency)
{
    int const length = frequency.size();
    QString unit;
    int point = 0;
    if (length > 9) {
        point = length - 9;
        unit = QStringLiteral(" GHz");
    } else if (length >= 7) {
        point = length - 6;
        unit = QStringLiteral(" MHz");
    } else if (length >= 4) {
        // Receivers have always put the point here; a negative position counts from the end.
        point = length - 6;
        if (point < 0) {
            point += length;
        }
        unit = QStringLiteral(" kHz");
    } else {
        frequency += QStringLiteral(" Hz");
        return;
    }
    frequency.insert(point, QLatin1Char('.'));
    // Trailing zeros go, up to the point at most (which ends the loop); the check starts one
    // before the last character, as it always has.
    int last = length - 1;
    if (frequency.at(last) == QLatin1Char('0')) {
        while (frequency.at(last) == QLatin1Char('0')) {
            --last;
        }
        frequency.truncate(last + 1);
    }
    frequency += unit;
}

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

namespace {

QString cleanBytes(QByteArray const& bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (char const byte : bytes) {
        text += TransmissionSystemModel::CleanCharacter(uchar(byte));
    }
    return text;
}

} // namespace

void TransmissionSystemModel::SetPayload(PDUDataBlock* block, QString const& label, QString& text,
                                         QByteArray& data, QString const& contentCode, bool rtl)
{
    NerikResultDataXml::Payload payload;
    payload.SetName(label);
    payload.SetContent(text);
    payload.SetContentCode(contentCode);
    payload.SetContentDirectionRTL(rtl);
    payload.SetData(data, unsigned(data.size()), 8);
    block->SetPayload(payload);
}

void TransmissionSystemModel::SetASCIIPayload(PDUDataBlock* block, QString const& label,
                                              unsigned byteCount, char const* bytes)
{
    QByteArray data = bytes != nullptr ? QByteArray(bytes, int(byteCount)) : QByteArray();
    QString text;
    if (m_decoder->DecodeASCII(text, data)) {
        SetPayload(block, label, text, data, m_decoder->GetCurrentSettings(),
                   m_decoder->TextDirectionRTL());
    } else {
        text = cleanBytes(data);
        SetPayload(block, label, text, data, QString(), false);
    }
}

void TransmissionSystemModel::SetPackedASCIIPayload(PDUDataBlock* block, QString const& label,
                                                    unsigned wordCount, int* words)
{
    auto const* bytes = reinterpret_cast<char const*>(words);
    unsigned length = 0;
    if (words != nullptr) {
        while (length < 4u * wordCount && bytes[length] != 0) {
            ++length;
        }
    }
    SetASCIIPayload(block, label, length, bytes);
}

void TransmissionSystemModel::SetPackedUnicodePayload(PDUDataBlock* block, QString const& label,
                                                      unsigned wordCount, int* words)
{
    QByteArray data;
    QString fallback;
    if (words != nullptr) {
        auto const* bytes = reinterpret_cast<char const*>(words);
        for (unsigned i = 0; i < 2u * wordCount; ++i) {
            quint16 unit;
            std::memcpy(&unit, bytes + 2u * quint64(i), sizeof unit);
            if (unit == 0) {
                break;
            }
            data.append(bytes + 2u * quint64(i), 2);
            fallback += CleanCharacter(unit);
        }
    }
    QString text;
    if (m_decoder->DecodeUnicode(text, data)) {
        SetPayload(block, label, text, data, m_decoder->GetCurrentSettings(),
                   m_decoder->TextDirectionRTL());
    } else {
        SetPayload(block, label, fallback, data, QString(), false);
    }
}

void TransmissionSystemModel::SetBinaryPayload(PDUDataBlock* block, QString const& label,
                                               ePDU_DATAREPRESENTATION, unsigned count,
                                               unsigned bits, unsigned* data)
{
    quint64 const byteCount = data != nullptr ? (quint64(count) * bits + 7) / 8 : 0;
    QByteArray bytes(reinterpret_cast<char const*>(data), int(byteCount));
    NerikResultDataXml::Payload payload;
    payload.SetName(label);
    QString text;
    if (m_decoder->DecodeBinary(text, data, count, bits)) {
        payload.SetContent(text);
        payload.SetContentCode(m_decoder->GetCurrentSettings());
        payload.SetContentDirectionRTL(m_decoder->TextDirectionRTL());
    } else {
        m_decoder->ConvertToString(text, bytes);
        payload.SetContent(text);
    }
    payload.SetData(bytes, count, bits);
    block->SetPayload(payload);
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

namespace {

QString pduName(unsigned pduID)
{
    return QString::fromStdWString(PduNaming::PDUIdTranslator::pduIdToString(pduID));
}

QStringList pduHeaders(unsigned pduID)
{
    QStringList headers;
    for (std::wstring const& header : PduNaming::PDUFieldNameProvider::getHeaders(pduID)) {
        headers << QString::fromStdWString(header);
    }
    return headers;
}

} // namespace

void TransmissionSystemModel::ProcessPDU(QByteArray const& frame)
{
    m_pduConverter = nullptr;
    if (frame.size() < RecordOffset + 4) {
        return;
    }
    m_pduConverter = CPDU_Converter_Factory::getInstance()->getPDU_ConverterByCOMMSYSTYPE(
        readAt<quint32>(frame, RecordOffset));
    if (m_pduConverter == nullptr) {
        return; // a communication system the library does not decode
    }
    std::vector<CPDU*> pdus = m_pduConverter->decodeFrame(frame);
    ProcessPDUVector(pdus);
    deletePDUs(pdus);
}

void TransmissionSystemModel::ProcessPDUVector(std::vector<CPDU*>& pdus)
{
    for (CPDU const* pdu : pdus) {
        if (pdu == nullptr) {
            continue;
        }
        QDateTime const time = ToDateTime(pdu->getTimeStamp());
        PDUDataBlock* block = BeginBlock(pdu->getPDU_ID(), time, pduName(pdu->getPDU_ID()));
        SetCRC(block, pdu->getCheckSumState());
        QStringList headers = pduHeaders(pdu->getPDU_ID());
        ProcessPDUFields(block, pdu->getFields(), headers, pdu->getTimeStamp());
        EndBlock(block, nullptr, time);
    }
}

void TransmissionSystemModel::ProcessPDUSubVectors(PDUDataBlock* parent, std::vector<CPDU*>& pdus,
                                                   QString const&, quint64 time)
{
    // Nested units have no time of their own worth showing: they take their parent's.
    QDateTime const parentTime = ToDateTime(time);
    for (CPDU const* pdu : pdus) {
        if (pdu == nullptr) {
            continue;
        }
        PDUDataBlock* block = BeginBlock(pdu->getPDU_ID(), parentTime, pduName(pdu->getPDU_ID()));
        SetCRC(block, pdu->getCheckSumState());
        QStringList headers = pduHeaders(pdu->getPDU_ID());
        ProcessPDUFields(block, pdu->getFields(), headers, time);
        EndBlock(block, parent, parentTime);
    }
}

void TransmissionSystemModel::ProcessPDUFields(PDUDataBlock* block,
                                               std::vector<CPDU_FieldContainer*> const& fields,
                                               QStringList& headers, quint64 time)
{
    bool const isAIS = block->GetName().startsWith(QLatin1String("AIS"));
    for (size_t i = 0; i < fields.size(); ++i) {
        // Surplus fields keep their place and are labelled "?".
        if (int(i) >= headers.size()) {
            headers.append(QStringLiteral("?"));
        }
        QString const& label = headers[int(i)];
        CPDU_FieldContainer* field = fields[i];
        if (field == nullptr) {
            continue;
        }
        unsigned bits = 0;
        unsigned count = 0;
        if (field->isExpandable()) {
            std::vector<CPDU*> subPdus = m_pduConverter->getSubPDUs(field);
            ProcessPDUSubVectors(block, subPdus, label, time);
            deletePDUs(subPdus);
        } else if (field->getDataTranslation() != 0) {
            AddField(block, label,
                     QString::fromStdWString(
                         PduNaming::PDUDataTranslator::dataIdToString(field->getDataTranslation())),
                     TypeString);
        } else if (field->getFieldClass() == CPDU_FieldContainer::PayloadFieldClass) {
            unsigned* data = field->getData(bits, count);
            SetBinaryPayload(block, label, field->getDataRepresentation(), count, bits, data);
        } else {
            unsigned* data = field->getData(bits, count);
            QString value;
            QString type;
            FormatData(field->getDataRepresentation(), count, bits, data, value, type);
            AddField(block, label, value, type);
            // An AIS safety message's text is also its message.
            if (isAIS && field->getDataRepresentation() == PDU_REPRESENTATION_STRING &&
                label == QLatin1String("Text")) {
                QByteArray bytes = value.toLatin1();
                SetPayload(block, label, value, bytes, QString(), false);
            }
        }
    }
}

// --- Re-translation --------------------------------------------------------------------------

void TransmissionSystemModel::translateCurrentTransmission()
{
    QString const settings = m_decoder->GetCurrentSettings();
    bool const rtl = m_decoder->TextDirectionRTL();
    // Codes left in the buffer belong to the old alphabet.
    m_decoder->ClearBuffer();
    if (Transmission* transmission = getCurrentTransmission()) {
        Translate(settings, rtl, transmission->GetPDUDataBlocks());
    }
}

void TransmissionSystemModel::Translate(QString const& contentCode, bool rtl,
                                        QList<PDUDataBlock*>& blocks)
{
    for (PDUDataBlock* block : qAsConst(blocks)) {
        NerikResultDataXml::Payload& payload = block->GetPayload();
        if (!payload.GetData().isEmpty()) {
            QByteArray data = payload.GetData();
            QString text;
            if (!m_decoder->DecodeBinary(text, data, payload.GetDataElements(),
                                         payload.GetDataBits())) {
                m_decoder->ConvertToString(text, data);
            }
            if (text.isEmpty()) {
                text = QStringLiteral("-");
            }
            if (text != payload.GetContent()) {
                payload.SetContent(text);
                // Annotations were made on the old text.
                block->DeleteUserData();
            }
            payload.SetContentCode(contentCode);
            payload.SetContentDirectionRTL(rtl);
        }
        Translate(contentCode, rtl, block->GetPDUDataBlocks());
    }
}

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

} // namespace zelkodatastreamconverter
