#include "symboldatamodel.h"

#include "frameformat.h"
#include "framevalues.h"
#include "moduletrace.h"
#include "symbolfile.h"
#include "symbolrecord.h"
#include "textfile.h"

#include <QFileInfo>
#include <alphabetkit/codechandler.h>
#include <alphabetkit/simplemorsehandler.h>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/info.h>
#include <nerikresultdataxml/transmission.h>
#include <nerikresultdataxml/userdata.h>

namespace zelkodatastreamconverter {

QString const SymbolDataModel::SymbolsKind = QStringLiteral("Symbols");
QString const SymbolDataModel::MorseKind = QStringLiteral("Morse");
QString const SymbolDataModel::ConfidenceType = QStringLiteral("Confidence");
QString const SymbolDataModel::MorseElementsType = QStringLiteral("MorseElements");

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("symboldatamodel"));
    return instance;
}

// Receivers stamp frames with some jitter; only a longer break is silence worth adding, and
// a shorter one must not split a dash that continues in the next frame.
constexpr quint64 FrameGapMicroseconds = 1000;

// A 32-bit value as code units of the raw content: wide values take two, upper half first.
void appendCodeUnits(QString& raw, quint32 value, bool wide)
{
    if (wide) {
        raw += QChar(ushort(value >> 16));
    }
    raw += QChar(ushort(value & 0xFFFFu));
}

QString fileName(QString const& code, int channel, QString const& suffix)
{
    // %1 and %2 stay for the time text and the uniqueness suffix.
    return QStringLiteral("%1_%2_").arg(code).arg(channel) + QStringLiteral("%1%2") + suffix;
}

} // namespace

struct SymbolDataModel::Stream
{
    int channel = 0;
    quint32 kind = 0;
    quint32 width = 0;
    int blockId = 0;
    bool translates = false;
    QByteArray codecState;
    std::unique_ptr<SimpleMorseHandler> morse;
    quint64 end = 0; ///< where the last frame's elements ended, microseconds since 1970
    TextLayout layout;
    std::unique_ptr<SymbolFile> symbolFile;
    std::unique_ptr<TextFile> textFile;
};

SymbolDataModel::SymbolDataModel() : m_codec(std::make_shared<CodecHandler>())
{
    setAlphabetHandler(m_codec);
}

SymbolDataModel::~SymbolDataModel() = default;

void SymbolDataModel::clear()
{
    finish();
    m_streams.clear();
    DecodedTextModel::clear();
}

bool SymbolDataModel::setAlphabetsDirectory(QString const& directory)
{
    m_morseTemplate.reset();
    return DecodedTextModel::setAlphabetsDirectory(directory);
}

SimpleMorseHandler const& SymbolDataModel::morseTemplate()
{
    if (!m_morseTemplate) {
        m_morseTemplate = std::make_unique<SimpleMorseHandler>();
        m_morseTemplate->SetAlphabetsDir(getAlphabetsDirectory());
        m_morseTemplate->SetAlphabet(SimpleMorseHandler::morseName());
    }
    return *m_morseTemplate;
}

void SymbolDataModel::setOutput(QString const& directory, FileInfoCallback* callback)
{
    m_directory = directory;
    m_callback = callback;
}

void SymbolDataModel::setLowConfidenceMarking(int threshold, QChar marker)
{
    m_threshold = threshold;
    m_marker = marker;
}

bool SymbolDataModel::processData(QByteArray const& frame)
{
    if (frame.size() < FrameHeaderSize ||
        readAt<quint32>(frame, FrameTypeOffset) != FrameType::Symbols) {
        return false;
    }
    SymbolRecord record;
    QString reason;
    if (!SymbolRecord::read(frame.constData() + FrameHeaderSize, frame.size() - FrameHeaderSize,
                            record, reason)) {
        ++m_counts.damagedFrames;
        trace().warning(QStringLiteral("processData: damaged symbol frame (%1)").arg(reason),
                        __LINE__);
        return true;
    }
    if (!isChannelSelected(record.channel)) {
        return true;
    }
    ++m_counts.frames;
    QDateTime const time = timeFromMicroseconds(record.microseconds);
    bool started = false;
    Stream& stream = streamFor(record, time, started);
    Transmission* const transmission = getCurrentTransmission();
    transmission->SetStopTime(std::max(transmission->GetStopTime(), time));
    DataBlock* const block = blockOf(stream);
    block->SetTimeStamp(time);
    block->BeginFrame();
    if (stream.symbolFile) {
        stream.symbolFile->setFrequency(double(record.frequencyHz));
        stream.textFile->setFrequency(double(record.frequencyHz));
        stream.symbolFile->writeRecord(record);
    }
    if (started) {
        noteStream(stream, record, time);
    }
    if (record.isMorse()) {
        addMorseElements(stream, *block, record);
    } else {
        addRawSymbols(stream, *block, record);
    }
    block->EndFrame();
    return true;
}

void SymbolDataModel::finish()
{
    for (auto& entry : m_streams) {
        Stream& stream = *entry.second;
        endStream(stream);
        if (stream.symbolFile) {
            stream.symbolFile->closeFile(false);
        }
        if (stream.textFile) {
            stream.textFile->closeFile(false);
        }
    }
}

SymbolDataModel::Stream& SymbolDataModel::streamFor(SymbolRecord const& record,
                                                    QDateTime const& time, bool& started)
{
    std::unique_ptr<Stream>& slot = m_streams[record.channel];
    if (!slot) {
        slot = std::make_unique<Stream>();
        slot->channel = record.channel;
    }
    Stream& stream = *slot;
    started = stream.blockId == 0 || stream.kind != record.kind ||
              (!record.isMorse() && stream.width != record.widthOrTone) ||
              blockOf(stream) == nullptr;
    if (started) {
        startStream(stream, record, time);
    }
    return stream;
}

void SymbolDataModel::startStream(Stream& stream, SymbolRecord const& record, QDateTime const& time)
{
    endStream(stream);
    bool const kindChanged = stream.kind != record.kind;
    stream.kind = record.kind;
    stream.width = record.widthOrTone;
    stream.end = record.microseconds;
    stream.codecState.clear();
    stream.layout = TextLayout{m_threshold, m_marker};
    QString code = SymbolsKind;
    QString contentCode = DefaultAlphabetValue;
    QString rawType = QStringLiteral("Symbols/%1").arg(record.widthOrTone);
    if (record.isMorse()) {
        code = MorseKind;
        rawType = MorseElementsType;
        stream.morse = std::make_unique<SimpleMorseHandler>(morseTemplate());
        contentCode = stream.morse->Alphabet();
        stream.translates = true;
    } else {
        stream.morse.reset();
        stream.translates = m_codec->Alphabet() != DefaultAlphabetValue &&
                            m_codec->AlphabetWidth() == int(record.widthOrTone);
        if (stream.translates) {
            contentCode = m_codec->Alphabet();
        }
    }
    if (kindChanged && !m_directory.isEmpty()) {
        if (stream.symbolFile) {
            stream.symbolFile->closeFile(false);
            stream.textFile->closeFile(false);
        }
        stream.symbolFile =
            std::make_unique<SymbolFile>(code, m_maxFileSize, m_callback, stream.channel);
        stream.symbolFile->setFileName(fileName(code, stream.channel, QStringLiteral(".zsym")));
        stream.symbolFile->setDirectory(m_directory);
        stream.textFile = std::make_unique<TextFile>(code, m_maxFileSize, m_callback);
        stream.textFile->setFileName(fileName(code, stream.channel, QStringLiteral(".txt")));
        stream.textFile->setDirectory(m_directory);
    }

    Transmission* transmission = getCurrentTransmission();
    if (transmission == nullptr) {
        transmission = createTransmission(time);
    }
    auto* block = new DataBlock(stream.channel);
    block->SetID(getNextID());
    block->SetContentCode(contentCode);
    block->SetRawContentType(rawType);
    transmission->AddDataBlock(block);
    stream.blockId = block->GetID();
}

void SymbolDataModel::endStream(Stream& stream)
{
    if (!stream.morse) {
        return;
    }
    if (DataBlock* const block = blockOf(stream)) {
        addCharacters(stream, *block, stream.morse->FlushElements());
    }
    if (stream.layout.written) {
        writeText(stream, QStringLiteral("\n"));
    }
    stream.layout = TextLayout{m_threshold, m_marker};
}

void SymbolDataModel::addRawSymbols(Stream& stream, DataBlock& block, SymbolRecord const& record)
{
    bool const wide = record.widthOrTone > 16;
    QString raw;
    raw.reserve(record.values.size() * (wide ? 2 : 1));
    for (quint32 const symbol : record.values) {
        appendCodeUnits(raw, symbol, wide);
    }
    block.AppendRawData(raw);
    m_counts.symbols += record.values.size();
    getEstimateDataSize() += 3 * raw.size();
    if (!stream.translates) {
        return;
    }
    m_codec->RestoreInternalState(stream.codecState);
    QString const text = m_codec->Translate(raw);
    stream.codecState = m_codec->SaveInternalState();
    block.AppendData(text);
    getEstimateDataSize() += 2 * text.size();
    writeText(stream, text);
}

void SymbolDataModel::addMorseElements(Stream& stream, DataBlock& block, SymbolRecord const& record)
{
    QVector<MorseElement> elements;
    elements.reserve(record.values.size() + 1);
    if (record.microseconds > stream.end + FrameGapMicroseconds) {
        ++m_counts.breaks;
        elements.append({false, quint32(std::min<quint64>(record.microseconds - stream.end,
                                                          MorseDurationMask))});
    }
    QString raw;
    raw.reserve(2 * record.values.size());
    quint64 duration = 0;
    for (quint32 const word : record.values) {
        elements.append({isKeyDown(word), elementMicroseconds(word)});
        appendCodeUnits(raw, word, true);
        duration += elementMicroseconds(word);
    }
    stream.end = std::max(stream.end, record.microseconds) + duration;
    block.AppendRawData(raw);
    m_counts.elements += record.values.size();
    getEstimateDataSize() += 6 * record.values.size();
    addCharacters(stream, block, stream.morse->AddElements(elements));
}

void SymbolDataModel::addCharacters(Stream& stream, DataBlock& block,
                                    QVector<MorseCharacter> const& characters)
{
    if (characters.isEmpty()) {
        return;
    }
    QString text;
    QStringList confidences;
    QStringList elements;
    for (MorseCharacter const& character : characters) {
        text += character.text;
        confidences << QString::number(character.confidence);
        elements << (character.elements.isEmpty() ? QStringLiteral("/") : character.elements);
    }
    int const from = block.GetContentStart() + block.GetContent().size();
    block.AppendData(text);
    block.AddUserData(new UserData(from, from + text.size(), ConfidenceType,
                                   confidences.join(QLatin1Char(' ')),
                                   elements.join(QLatin1Char(' ')), text));
    m_counts.characters += characters.size();
    getEstimateDataSize() += 120 + 12 * characters.size();
    writeText(stream, textFileForm(characters, stream.layout));
}

void SymbolDataModel::writeText(Stream& stream, QString const& text)
{
    if (text.isEmpty() || !stream.textFile) {
        return;
    }
    if (QTextStream* const out = stream.textFile->getTextStream()) {
        *out << text;
        stream.textFile->addFileSize(text.size());
    }
}

QString SymbolDataModel::textFileForm(QVector<MorseCharacter> const& characters, TextLayout& layout)
{
    QString out;
    for (MorseCharacter const& character : characters) {
        if (character.elements.isEmpty()) {
            // A word gap is written only once the next word shows it is not the line's end.
            layout.pendingSpace = layout.written;
            continue;
        }
        if (layout.written &&
            character.startMicroseconds - layout.lastEnd > qint64(MessagePauseSeconds) * 1000000) {
            out += QLatin1Char('\n');
        } else if (layout.pendingSpace) {
            out += QLatin1Char(' ');
        }
        layout.pendingSpace = false;
        if (character.confidence < layout.threshold) {
            out += layout.marker;
        }
        out += character.text;
        layout.written = true;
        layout.lastEnd = character.endMicroseconds;
    }
    return out;
}

void SymbolDataModel::noteStream(Stream const& stream, SymbolRecord const& record,
                                 QDateTime const& time)
{
    auto* info = new Info(time);
    info->SetItem(QStringLiteral("Channel"), QString::number(stream.channel));
    if (record.isMorse()) {
        info->SetItem(QStringLiteral("Kind"), MorseKind);
        info->SetItem(QStringLiteral("ToneFrequency"), QString::number(record.widthOrTone));
        info->SetItem(QStringLiteral("Level"),
                      QString::number(double(qint32(record.rateOrLevel)) / 10.0, 'f', 1));
    } else {
        info->SetItem(QStringLiteral("Kind"), SymbolsKind);
        info->SetItem(QStringLiteral("SymbolWidth"), QString::number(record.widthOrTone));
        info->SetItem(QStringLiteral("SymbolRate"),
                      QString::number(double(record.rateOrLevel) / 1000.0, 'g', 10));
    }
    QFile const* const file = stream.symbolFile ? stream.symbolFile->getOpenFile() : nullptr;
    info->SetItem(QStringLiteral("SymbolFile"),
                  file ? QFileInfo(file->fileName()).fileName() : QString());
    getCurrentTransmission()->AddInfo(info);
    getEstimateDataSize() += 256;
}

SymbolDataModel::DataBlock* SymbolDataModel::blockOf(Stream const& stream) const
{
    Transmission* const transmission = getCurrentTransmission();
    if (transmission == nullptr) {
        return nullptr;
    }
    QList<DataBlock*> const& blocks = transmission->GetDataBlock();
    for (int i = blocks.size() - 1; i >= 0; --i) {
        if (blocks[i]->GetID() == stream.blockId) {
            return blocks[i];
        }
    }
    return nullptr;
}

} // namespace zelkodatastreamconverter
