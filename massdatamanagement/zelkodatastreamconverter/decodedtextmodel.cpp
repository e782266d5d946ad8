#include "decodedtextmodel.h"

#include "frameformat.h"
#include "framevalues.h"

#include <alphabetkit/ialphabethandler.h>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

QString const DecodedTextModel::NoDecoder = QStringLiteral("NONE");
QString const DecodedTextModel::PreferredAlphabet = QStringLiteral("International");
QString const DecodedTextModel::AllDecoders = QStringLiteral("All");

namespace {

constexpr int FirstEntryOffset = 40;
constexpr int EntrySize = 8;
constexpr int ChannelSize = 4;
// The longest cycle of channels that gatherCycle() takes.
constexpr int LongestCycle = 8;

qint32 channelAt(char const* data, int entry)
{
    qint32 channel;
    std::memcpy(&channel, data + EntrySize * entry, sizeof channel);
    return channel;
}

// The length of the cycle in which the channels of the entries repeat, when the cycle names
// each channel once and is at most LongestCycle entries long; 0 otherwise.
int channelCycle(char const* data, int entries)
{
    for (int cycle = 1; cycle <= std::min(LongestCycle, entries); ++cycle) {
        qint32 const newest = channelAt(data, cycle - 1);
        for (int earlier = 0; earlier < cycle - 1; ++earlier) {
            if (channelAt(data, earlier) == newest) {
                return 0; // every longer cycle would name it twice as well
            }
        }
        int entry = cycle;
        while (entry < entries && channelAt(data, entry) == channelAt(data, entry - cycle)) {
            ++entry;
        }
        if (entry == entries) {
            return cycle;
        }
    }
    return 0;
}

} // namespace

DecodedTextModel::DecodedTextModel()
    : m_alphabetsDirectory(configuredAlphabetsDirectory()), m_decoderName(NoDecoder)
{
}

DecodedTextModel::~DecodedTextModel() = default;

void DecodedTextModel::setAlphabetHandler(std::shared_ptr<IAlphabetHandler> handler)
{
    forgetChannelStates();
    m_handler = std::move(handler);
    if (m_handler) {
        m_handler->SetAlphabetsDir(m_alphabetsDirectory);
        m_handler->SetDecoder(m_decoderName);
        m_handler->SetAlphabet(DefaultAlphabetValue);
    }
}

void DecodedTextModel::clear()
{
    NerikResultModel::clear();
    forgetChannelStates();
    if (m_handler) {
        m_handler->ResetInternalState();
    }
}

bool DecodedTextModel::setAlphabetsDirectory(QString const& directory)
{
    if (directory == m_alphabetsDirectory) {
        return true;
    }
    m_alphabetsDirectory = directory;
    forgetChannelStates();
    if (m_handler) {
        m_handler->SetAlphabetsDir(directory);
    }
    return true;
}

bool DecodedTextModel::setDecoder(QString const& decoder)
{
    if (decoder == m_decoderName) {
        return true;
    }
    m_decoderName = decoder;
    forgetChannelStates();
    if (m_handler) {
        QString const alphabet = m_handler->Alphabet();
        m_handler->ResetInternalState();
        m_handler->SetDecoder(decoder);
        // The new decoder may not offer the alphabet in use: then nothing is translated.
        if (!m_handler->SetAlphabet(alphabet)) {
            m_handler->SetAlphabet(DefaultAlphabetValue);
        }
    }
    return true;
}

bool DecodedTextModel::setAlphabet(QString const& alphabet, bool& changed)
{
    if (!m_handler) {
        return false;
    }
    if (!alphabet.isEmpty() && alphabet == m_handler->Alphabet()) {
        return true;
    }
    changed = true;
    forgetChannelStates();
    bool const preferDefault =
        alphabet.isEmpty() && m_handler->AvailableAlphabets().contains(PreferredAlphabet);
    if (!m_handler->SetAlphabet(preferDefault ? PreferredAlphabet : alphabet)) {
        m_handler->SetAlphabet(DefaultAlphabetValue);
        return false;
    }
    return true;
}

QString DecodedTextModel::getAlphabet() const
{
    return m_handler ? m_handler->Alphabet() : DefaultAlphabetValue;
}

QStringList DecodedTextModel::getAvailableAlphabets() const
{
    return m_handler ? m_handler->AvailableAlphabets() : QStringList();
}

QStringList DecodedTextModel::getAllAlphabets()
{
    if (!m_handler) {
        return QStringList();
    }
    m_handler->SetDecoder(AllDecoders);
    QStringList const all = m_handler->AvailableAlphabets();
    m_handler->SetDecoder(m_decoderName);
    return all;
}

bool DecodedTextModel::processData(QByteArray const& frame, Transmission* transmission)
{
    if (frame.size() < FirstEntryOffset ||
        readAt<quint32>(frame, FrameMagicOffset) != FRAME_MAGIC ||
        readAt<quint32>(frame, FrameTypeOffset) != FrameType::DecodedText) {
        return false;
    }
    QDateTime const time = timeFromMicroseconds(readAt<quint64>(frame, 24));

    bool const wholeContent = transmission != nullptr;
    if (wholeContent) {
        transmission->SetStartTime(getTransmissionTime(time));
    } else {
        transmission = getCurrentTransmission();
        if (!transmission) {
            transmission = createTransmission(time);
        }
    }
    transmission->SetStopTime(time);

    QList<DataBlock*>& blocks = transmission->GetDataBlock();
    for (int i = blocks.size() - 1; i >= 0; --i) {
        blocks[i]->SetTimeStamp(time);
        blocks[i]->BeginFrame();
    }

    // The count comes from the recording: never read past the frame, whatever it claims.
    qint32 const claimed = readAt<qint32>(frame, 36);
    int const fitting = (frame.size() - FirstEntryOffset) / EntrySize;
    int const entries = qBound(0, claimed, fitting);
    // Each entry goes to its channel's block; the codes are gathered per block and appended
    // once per frame, which keeps the per-character work to a copy.
    char const* const data = frame.constData() + FirstEntryOffset;
    int const cycle = channelCycle(data, entries);
    size_t const used = cycle > 0 ? gatherCycle(data, entries, cycle, transmission, time)
                                  : gatherEach(data, entries, transmission, time);
    for (size_t i = 0; i < used; ++i) {
        FrameCodes const& codes = m_frameCodes[i];
        codes.block->AppendRawData(reinterpret_cast<QChar const*>(codes.codes.data()),
                                   codes.count());
    }

    for (int i = blocks.size() - 1; i >= 0; --i) {
        DataBlock* const each = blocks[i];
        if (!each->GetRawContent().isEmpty() && m_handler) {
            translateWithChannelState(each, wholeContent ? 0 : each->GetRawFramePos());
        }
        each->EndFrame();
    }
    return true;
}

// Receivers interleave their channels in a fixed order, so that a frame's channels mostly
// repeat in a short cycle: then each channel's codes lie a cycle apart and are copied without
// a look at every entry's channel. The codes go to the blocks in the order in which the
// entries name them, as gatherEach() does.
size_t DecodedTextModel::gatherCycle(char const* data, int entries, int cycle,
                                     Transmission* transmission, QDateTime const& time)
{
    size_t used = 0;
    for (int first = 0; first < cycle; ++first) {
        FrameCodes& codes = frameCodesFor(transmission, channelAt(data, first), time, used);
        ushort* out = codes.room((entries - first + cycle - 1) / cycle);
        for (char const* entry = data + EntrySize * first; entry < data + EntrySize * entries;
             entry += EntrySize * cycle) {
            std::memcpy(out++, entry + ChannelSize, sizeof(ushort));
        }
        codes.next = out;
    }
    return used;
}

// Any order of channels: each entry is looked at, with the last two channels at hand for
// channels that take turns.
size_t DecodedTextModel::gatherEach(char const* data, int entries, Transmission* transmission,
                                    QDateTime const& time)
{
    size_t used = 0;
    FrameCodes* current = nullptr;
    FrameCodes* other = nullptr;
    for (char const* entry = data; entry != data + EntrySize * entries; entry += EntrySize) {
        qint32 channel;
        std::memcpy(&channel, entry, sizeof channel);
        if (!current || current->channel != channel) {
            std::swap(current, other);
            if (!current || current->channel != channel) {
                current = &frameCodesFor(transmission, channel, time, used);
            }
        }
        std::memcpy(current->room(1), entry + ChannelSize, sizeof(ushort));
        ++current->next;
    }
    return used;
}

// The block's raw content from rawFrom on, continuing the channel's own shift state. In
// whole-content mode too: a host that hands in a fresh transmission for every frame gets each
// channel's text continued from that channel's previous frame, not from another channel's.
void DecodedTextModel::translateWithChannelState(DataBlock* block, int rawFrom)
{
    int const channel = block->GetChannel();
    m_handler->RestoreInternalState(m_channelStates.value(channel));
    translateContent(block, rawFrom);
    m_channelStates.insert(channel, m_handler->SaveInternalState());
}

// The gathered codes of a channel in this frame: the first `used` entries of m_frameCodes
// belong to the frame; a channel not among them gets its block as blockForChannel finds or
// makes it, exactly as if its codes were appended one by one.
DecodedTextModel::FrameCodes& DecodedTextModel::frameCodesFor(Transmission* transmission,
                                                              int channel, QDateTime const& time,
                                                              size_t& used)
{
    // A few channels are searched in place; a damaged frame may name thousands.
    constexpr size_t searchedInPlace = 8;
    if (used <= searchedInPlace) {
        for (size_t i = 0; i < used; ++i) {
            if (m_frameCodes[i].channel == channel) {
                return m_frameCodes[i];
            }
        }
    } else {
        auto const found = m_frameCodesIndex.constFind(channel);
        if (found != m_frameCodesIndex.constEnd()) {
            return m_frameCodes[found.value()];
        }
    }
    if (used == 0) {
        m_frameCodesIndex.clear();
    }
    DataBlock* const block = blockForChannel(transmission, channel, time, nullptr);
    if (used == m_frameCodes.size()) {
        m_frameCodes.push_back({channel, block, {}, nullptr});
    } else {
        m_frameCodes[used].channel = channel;
        m_frameCodes[used].block = block;
    }
    m_frameCodes[used].restart();
    if (used == searchedInPlace) {
        for (size_t i = 0; i < used; ++i) {
            m_frameCodesIndex.insert(m_frameCodes[i].channel, i);
        }
    }
    if (used >= searchedInPlace) {
        m_frameCodesIndex.insert(channel, used);
    }
    return m_frameCodes[used++];
}

DecodedTextModel::DataBlock* DecodedTextModel::blockForChannel(Transmission* transmission,
                                                               int channel, QDateTime const& time,
                                                               DataBlock* previous)
{
    if (previous && previous->GetChannel() == channel) {
        return previous;
    }
    if (DataBlock* existing = getDataBlock(transmission, channel)) {
        return existing;
    }
    DataBlock* const created = createDataBlock(channel, time);
    transmission->AddDataBlock(created);
    return created;
}

DecodedTextModel::DataBlock* DecodedTextModel::createDataBlock(int channel,
                                                               QDateTime const& timeStamp)
{
    DataBlock const* existing = getDataBlock(getCurrentTransmission(), channel);
    // Positions count from the start of the channel's text, so a block that itself continues
    // an earlier one is continued behind its own start, not behind its length alone.
    auto* block = new DataBlock(
        channel, existing ? existing->GetContentStart() + existing->GetContent().size() : 0,
        existing ? existing->GetRawStart() + existing->GetRawContent().size() : 0);
    block->SetID(existing ? existing->GetID() : getNextID());
    block->SetTimeStamp(timeStamp);
    if (m_handler) {
        block->SetContentCode(m_handler->Alphabet());
        block->SetContentDirectionRTL(m_handler->TextDirectionRTL());
    }
    block->SetRawContentType(DataBlock::sRawData_DecodedText);
    block->BeginFrame();
    return block;
}

void DecodedTextModel::translateBlock(DataBlock* block)
{
    if (!block || !m_handler) {
        return;
    }
    block->DeleteUserData();
    block->ClearContent();
    m_handler->ResetInternalState();
    auto& stamps = block->GetTimeStamp();
    QString const& raw = block->GetRawContent();
    int const rawStart = block->GetRawStart();
    int const contentStart = block->GetContentStart();
    for (int i = 0; i < stamps.size(); ++i) {
        // Positions count from the start of the channel's text; this block holds it from
        // rawStart / contentStart on.
        int const from = stamps[i].GetRawPosition() - rawStart;
        int const to =
            i + 1 < stamps.size() ? stamps[i + 1].GetRawPosition() - rawStart : raw.size();
        stamps[i].SetPosition(contentStart + block->GetContent().size());
        if (from >= 0 && to >= from && to <= raw.size()) {
            block->AppendData(m_handler->Translate(raw.mid(from, to - from)));
        }
    }
    block->SetContentCode(m_handler->Alphabet());
    block->SetContentDirectionRTL(m_handler->TextDirectionRTL());
    m_channelStates.insert(block->GetChannel(), m_handler->SaveInternalState());
}

void DecodedTextModel::translateContent(DataBlock* block)
{
    if (block && m_handler && !block->GetRawContent().isEmpty()) {
        block->AppendData(m_handler->Translate(block->GetRawContent()));
    }
}

void DecodedTextModel::translateContent(DataBlock* block, int rawFrom)
{
    if (!block || !m_handler || block->GetRawContent().isEmpty()) {
        return;
    }
    // Through one buffer that keeps its room from frame to frame.
    QString const& raw = block->GetRawContent();
    rawFrom = qBound(0, rawFrom, raw.size());
    m_translated.truncate(0);
    m_handler->Translate(raw.constData() + rawFrom, raw.size() - rawFrom, m_translated);
    block->AppendData(m_translated);
}

void DecodedTextModel::translateCurrentTransmission()
{
    if (Transmission* const transmission = getCurrentTransmission()) {
        for (DataBlock* block : transmission->GetDataBlock()) {
            translateBlock(block);
        }
    }
}

} // namespace zelkodatastreamconverter
