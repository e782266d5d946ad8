#include "nerikresultmodel.h"

#include "aisposition.h"
#include "clock.h"
#include "guardedcall.h"
#include "moduletrace.h"
#include "nerikresultcallback.h"

#include <algorithm>
#include <jobspec/demodulatorsettings.h>
#include <jobspec/settings.h>
#include <jobspec/station.h>
#include <jobspec/valuelist.h>
#include <limits>
#include <nerikresultdataxml/field.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <reportkit/ffmsettings.h>

namespace zelkodatastreamconverter {

using NerikResultDataXml::TimeStamp;

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("nerikresultmodel"));
    return instance;
}

// Hosts know these messages by the line numbers they have always carried, so the numbers are
// fixed here rather than taken from this file.
enum TraceLine
{
    LineGetMessageData = 696,
    LineMaxDataSizeExceeded = 711,
    LineSetParameterDocument = 794,
    LineSetParameterReport = 798,
    LineSetParameterOther = 802,
    LineSetDemodulatorSettingsDocument = 833,
    LineSetDemodulatorSettingsReport = 837,
    LineSetDemodulatorSettingsOther = 841,
    LineSetChannelSelectionReport = 910,
    LineSetChannelSelectionOther = 914,
    LineGetChannelSelectionReport = 939,
    LineGetChannelSelectionOther = 943,
    LineScanAISData = 1014,
};

// Data stamped up to this long before a settings change still belong to the open
// transmission.
constexpr qint64 SettingsChangeGraceMs = 60000;
// A settings change ends the open transmission this long after it at the latest.
constexpr qint64 IdleCloseDelayMs = 1000;
constexpr int MaximumSelectableChannel = 255;
// The start of a user data item that has not been placed in the text yet.
constexpr int UnplacedPosition = std::numeric_limits<int>::max();

template <typename List>
void deleteAt(List& list, int index)
{
    delete list.takeAt(index);
}

// The channel selection's own trace form, which names the XML text:
// "<operation>(<xml>) - RGException: <text>", or "<operation>(<xml>) - exception" for
// anything else.
auto channelSelectionFailure(char const* operation, QString const& xml, int reportLine,
                             int otherLine)
{
    return [=, &xml](GuardedFailure const& failure) {
        QString const name = QString::fromLatin1(operation);
        if (failure.kind == GuardedFailure::Report) {
            trace().warning(QStringLiteral("%1(%2) - RGException: %3").arg(name, xml, failure.text),
                            reportLine);
        } else {
            trace().warning(QStringLiteral("%1(%2) - exception").arg(name, xml), otherLine);
        }
    };
}

} // namespace

QString const NerikResultModel::TypeAlphabet = QStringLiteral("Alphabet");
QString const NerikResultModel::TypeAllAlphabets = QStringLiteral("AllAlphabets");
QString const NerikResultModel::TypeAlphabetsDirectory = QStringLiteral("AlphabetsDirectory");
QString const NerikResultModel::TypeAntennaSettings = QStringLiteral("AntennaSettings");
QString const NerikResultModel::TypeAudioSettings = QStringLiteral("Audio_Settings");
QString const NerikResultModel::TypeAutoModeConfigSet = QStringLiteral("AutoModeConfigSet");
QString const NerikResultModel::TypeAvailableAlphabets = QStringLiteral("AvailableAlphabets");
QString const NerikResultModel::TypeChannelSelection = QStringLiteral("ChannelSelection");
QString const NerikResultModel::TypeDecoder = QStringLiteral("Decoder");
QString const NerikResultModel::TypeDemodulator = QStringLiteral("Demodulator");
QString const NerikResultModel::TypeDemodulatorSettings = QStringLiteral("Demodulator_Settings");
QString const NerikResultModel::TypeFFMSettings = QStringLiteral("FFM_Settings");
QString const NerikResultModel::TypeFileName = QStringLiteral("FileName");
QString const NerikResultModel::TypeRecordingDirectory = QStringLiteral("RecordingDirectory");
QString const NerikResultModel::TypeTunerSettings = QStringLiteral("Tuner_Settings");
QString const NerikResultModel::TypeUserData = QStringLiteral("UserData");
QString const NerikResultModel::DefaultAlphabetValue = QStringLiteral("None");
QString const NerikResultModel::DefaultDecoderValue = QStringLiteral("NONE");
constexpr int NerikResultModel::UserChannelID;
constexpr int NerikResultModel::MaxDataSize;

// --- Construction ---------------------------------------------------------------------------

NerikResultModel::NerikResultModel()
    : m_resultData(std::make_unique<NerikResultDataXml::NerikResultData>())
{
}

NerikResultModel::NerikResultModel(NerikResultModel const& other)
    : m_resultData(std::make_unique<NerikResultDataXml::NerikResultData>()),
      m_alphabetsDirectory(other.m_alphabetsDirectory), m_demodulator(other.m_demodulator),
      m_decoder(other.m_decoder), m_frequency(other.m_frequency),
      m_channelSelection(other.m_channelSelection), m_callback(other.m_callback)
{
}

NerikResultModel::~NerikResultModel() = default;

// --- Virtual operations ---------------------------------------------------------------------

void NerikResultModel::clear()
{
    closeCurrentTransmission();
    m_resultData->Clear();
    m_estimatedDataSize = 0;
}

void NerikResultModel::closeCurrentTransmission()
{
    if (m_currentTransmission == nullptr) {
        return;
    }
    Transmission* const closed = m_currentTransmission;
    m_currentTransmission = nullptr;
    m_settingsChangeTime = QDateTime();
    if (m_callback != nullptr) {
        m_callback->onTransmissionClosed(closed);
    }
}

bool NerikResultModel::setDemodulatorSettings(QString const& xml)
{
    if (xml.isEmpty()) {
        return true;
    }
    bool applied = false;
    guardedCall(trace(), QStringLiteral("setDemodulatorSettings"),
                {LineSetDemodulatorSettingsReport, LineSetDemodulatorSettingsDocument,
                 LineSetDemodulatorSettingsOther},
                [&] {
                    JobSpec::Demodulator_Settings settings;
                    if (!settings.SetXmlString(xml, 0)) {
                        return;
                    }
                    QString const mode =
                        JobSpec::Demodulator_Settings::ModeToName(settings.GetMode());
                    QStringList const decoders = settings.GetDecoder().GetValue();
                    QString const decoder =
                        decoders.size() == 1 ? decoders.front() : DefaultDecoderValue;
                    QString const alphabet = settings.GetAlphabet();

                    setDemodulator(mode);
                    // Several decoders cannot be told apart here: the stored one stays.
                    if (decoders.size() < 2) {
                        setDecoder(decoder);
                    }
                    bool changed = false;
                    setAlphabet(alphabet, changed);
                    applied = true;
                });
    return applied;
}

void NerikResultModel::setFFMSettings(QString const& xml)
{
    setFFMFrequency(xml);
}

void NerikResultModel::setFrequency(double hertz)
{
    // An FFM settings text without a frequency must not erase a known one.
    if (hertz == 0.0 || hertz == m_frequency) {
        return;
    }
    m_frequency = hertz;
    majorSettingsChanged();
}

bool NerikResultModel::setDemodulator(QString const& demodulator)
{
    if (demodulator != m_demodulator) {
        m_demodulator = demodulator;
        majorSettingsChanged();
    }
    return true;
}

bool NerikResultModel::setDecoder(QString const& decoder)
{
    if (decoder != m_decoder) {
        m_decoder = decoder;
        majorSettingsChanged();
    }
    return true;
}

bool NerikResultModel::setAlphabet(QString const&, bool&)
{
    return false;
}

bool NerikResultModel::setAlphabetsDirectory(QString const& directory)
{
    m_alphabetsDirectory = directory;
    return true;
}

double NerikResultModel::getFrequency() const
{
    return m_frequency;
}

QString NerikResultModel::getDemodulator() const
{
    return m_demodulator;
}

QString NerikResultModel::getDecoder() const
{
    return m_decoder;
}

QString NerikResultModel::getAlphabet() const
{
    return DefaultAlphabetValue;
}

QString NerikResultModel::getAlphabetsDirectory() const
{
    return m_alphabetsDirectory;
}

void NerikResultModel::setCurrentTransmission(Transmission* transmission)
{
    if (transmission == nullptr) {
        return;
    }
    closeCurrentTransmission();
    m_resultData->AddTransmission(transmission);
    m_currentTransmission = transmission;
}

void NerikResultModel::majorSettingsChanged()
{
    m_settingsChangeTime = Clock::currentDateTimeUtc();
}

void NerikResultModel::addCurrentInfo(QDateTime const&, bool) {}

// --- Settings -------------------------------------------------------------------------------

void NerikResultModel::setParameter(JobSpec::Settings const& settings)
{
    guardedCall(trace(), QStringLiteral("setParameter"),
                {LineSetParameterReport, LineSetParameterDocument, LineSetParameterOther}, [&] {
                    setFFMSettings(settings.GetFFM_Settings().GetXmlString());
                    setDemodulatorSettings(settings.GetDemodulator_Settings().GetXmlString());
                });
}

bool NerikResultModel::setFFMFrequency(QString const& xml)
{
    REPORTKIT::FFM_Settings settings;
    if (!settings.SetXmlString(xml, 0)) {
        return false;
    }
    setFrequency(settings.GetFrequency().GetValue());
    return true;
}

void NerikResultModel::setChannelSelection(QString const& xml)
{
    guardedCall(
        [&] {
            JobSpec::ChannelSelection selection;
            selection.SetXmlString(xml, 0);
            if (!selection.IsValueSet()) {
                m_channelSelection = QBitArray(); // null: every channel
                return;
            }
            // Empty but not null: from now on only the listed channels count.
            m_channelSelection = QBitArray(0);
            for (QString const& text : selection.GetValue()) {
                bool number = false;
                int const channel = text.toInt(&number, 10);
                if (!number || channel < 0 || channel > MaximumSelectableChannel) {
                    continue;
                }
                if (m_channelSelection.size() < channel + 1) {
                    m_channelSelection.resize(channel + 1);
                }
                m_channelSelection.setBit(channel);
            }
        },
        channelSelectionFailure("setChannelSelection", xml, LineSetChannelSelectionReport,
                                LineSetChannelSelectionOther));
}

QString NerikResultModel::getChannelSelection() const
{
    QString xml;
    if (m_channelSelection.isNull()) {
        return xml;
    }
    guardedCall(
        [&] {
            JobSpec::ChannelSelection selection;
            for (int channel = 0; channel < m_channelSelection.size(); ++channel) {
                if (m_channelSelection.testBit(channel)) {
                    selection.AppendValue(QString::number(channel));
                }
            }
            if (selection.IsValueSet()) {
                xml = selection.GetXmlString();
            }
        },
        channelSelectionFailure("getChannelSelection", xml, LineGetChannelSelectionReport,
                                LineGetChannelSelectionOther));
    return xml;
}

bool NerikResultModel::isChannelSelected(int channel) const
{
    if (channel == UserChannelID || m_channelSelection.isNull()) {
        return true;
    }
    if (channel < 0 || channel >= m_channelSelection.size()) {
        return false;
    }
    return m_channelSelection.testBit(channel);
}

// --- Transmissions --------------------------------------------------------------------------

NerikResultModel::Transmission* NerikResultModel::createTransmission(QDateTime const& time)
{
    auto* const transmission = new Transmission;
    transmission->SetStartTime(time);
    transmission->SetStopTime(time);
    m_resultData->AddTransmission(transmission);
    m_currentTransmission = transmission;
    return transmission;
}

NerikResultModel::Transmission* NerikResultModel::getTransmission(QDateTime const& time)
{
    QList<Transmission*> const& transmissions = m_resultData->GetTransmission();
    for (int i = transmissions.size() - 1; i >= 0; --i) {
        if (transmissions[i]->GetStartTime() == time) {
            m_currentTransmission = transmissions[i];
            return m_currentTransmission;
        }
    }
    return nullptr;
}

QDateTime NerikResultModel::getTransmissionTime(QDateTime const& time)
{
    if (m_currentTransmission == nullptr) {
        return time;
    }
    if (m_settingsChangeTime.isValid()) {
        qint64 const sinceChange = m_settingsChangeTime.msecsTo(time);
        if (sinceChange >= -SettingsChangeGraceMs && sinceChange <= -1) {
            return m_currentTransmission->GetStartTime();
        }
        closeCurrentTransmission();
        return time;
    }
    return m_currentTransmission->GetStartTime();
}

bool NerikResultModel::isNewTransmission(Transmission const& transmission) const
{
    return m_currentTransmission == nullptr ||
           m_currentTransmission->GetStartTime() != transmission.GetStartTime();
}

bool NerikResultModel::addTransmission(Transmission const& transmission)
{
    Transmission* target = m_currentTransmission;
    bool const isNew = isNewTransmission(transmission);
    if (isNew) {
        target = createTransmission(transmission.GetStartTime());
    }
    target->SetStopTime(transmission.GetStopTime());
    QDateTime latest = transmission.GetStopTime();
    for (Info const* info : transmission.GetInfos()) {
        addInfo(target, *info);
    }
    for (DataBlock const* block : transmission.GetDataBlock()) {
        addDataBlock(target, *block, latest);
    }
    for (PDUDataBlock const* pdu : transmission.GetPDUDataBlocks()) {
        addPDUDataBlock(target, *pdu, latest);
    }
    addCurrentInfo(latest, isNew);
    return isNew;
}

void NerikResultModel::extractTransmission(Transmission& out, int firstPduIndex) const
{
    if (firstPduIndex < 0 || m_currentTransmission == nullptr) {
        return;
    }
    out.SetStartTime(m_currentTransmission->GetStartTime());
    out.SetStopTime(m_currentTransmission->GetStopTime());
    QList<PDUDataBlock*> const& pdus = m_currentTransmission->GetPDUDataBlocks();
    for (int i = firstPduIndex; i < pdus.size(); ++i) {
        out.AddPDUDataBlock(new PDUDataBlock(*pdus[i]));
    }
}

NerikResultModel::Transmission* NerikResultModel::takeCurrentTransmission()
{
    Transmission* const taken = m_currentTransmission;
    m_currentTransmission = nullptr;
    m_settingsChangeTime = QDateTime();
    if (taken != nullptr) {
        QList<Transmission*>& transmissions = m_resultData->GetTransmission();
        int const index = transmissions.lastIndexOf(taken);
        if (index >= 0) {
            transmissions.removeAt(index);
        }
    }
    return taken;
}

void NerikResultModel::doIdleProcessing()
{
    if (m_settingsChangeTime.isValid() &&
        m_settingsChangeTime.msecsTo(Clock::currentDateTimeUtc()) >= IdleCloseDelayMs) {
        m_settingsChangeTime = QDateTime();
        closeCurrentTransmission();
    }
}

bool NerikResultModel::maxDataSizeExceeded()
{
    // Rendering the document is costly; the estimate keeps the check cheap while it is small.
    if (m_estimatedDataSize < MaxDataSize + 1) {
        return false;
    }
    guardedCall(trace(), QStringLiteral("maxDataSizeExceeded"),
                GuardLines::same(LineMaxDataSizeExceeded),
                [&] { m_estimatedDataSize = m_resultData->GetXmlString().toUtf8().size(); });
    // After a failure the estimate stands in for the size.
    return m_estimatedDataSize > MaxDataSize;
}

QByteArray NerikResultModel::getMessageData(Transmission const* transmission)
{
    QByteArray data;
    if (transmission == nullptr) {
        return data;
    }
    guardedCall(trace(), QStringLiteral("getMessageData"), GuardLines::same(LineGetMessageData),
                [&] { data = transmission->GetXmlString().toUtf8(); });
    return data;
}

int NerikResultModel::getNextID()
{
    return m_resultData->GetNextID();
}

// --- Text data blocks -----------------------------------------------------------------------

void NerikResultModel::addDataBlock(Transmission* transmission, DataBlock const& block,
                                    QDateTime& latest)
{
    if (transmission == nullptr || block.GetTimeStamp().isEmpty()) {
        return;
    }
    TimeStamp const& first = block.GetTimeStamp().front();
    DataBlock* const existing = getDataBlock(transmission, block.GetChannel());
    if (existing == nullptr) {
        auto* const copy = new DataBlock(block);
        copy->SetID(m_resultData->GetNextID());
        normalizeDataBlock(copy);
        transmission->AddDataBlock(copy);
    } else {
        int const existingStart =
            existing->GetTimeStamp().isEmpty() ? 0 : existing->GetTimeStamp().front().GetPosition();
        if (first.GetPosition() <= existingStart) {
            // A resend from the beginning replaces what the channel holds; the block keeps
            // the ID the document gave it.
            int const id = existing->GetID();
            *existing = block;
            existing->SetID(id);
            normalizeDataBlock(existing);
        } else {
            // A continuation: its positions already count from the start of the channel.
            existing->AppendData(block.GetContent());
            existing->AppendRawData(block.GetRawContent());
            // Plain appends: QVector grows geometrically, an exact reserve here would copy
            // the whole list on every block.
            QVector<TimeStamp>& stamps = existing->GetTimeStamp();
            for (TimeStamp const& stamp : block.GetTimeStamp()) {
                stamps.append(stamp);
            }
        }
    }
    if (latest < first.GetTime()) {
        latest = first.GetTime();
    }
}

NerikResultModel::DataBlock* NerikResultModel::findDataBlock(int channel,
                                                             QDateTime const& time) const
{
    QList<Transmission*> const& transmissions = m_resultData->GetTransmission();
    Transmission* chosen = nullptr;
    if (!time.isValid()) {
        chosen = transmissions.isEmpty() ? nullptr : transmissions.back();
    } else {
        for (int i = transmissions.size() - 1; i >= 0 && chosen == nullptr; --i) {
            if (!(transmissions[i]->GetStartTime() > time)) {
                chosen = transmissions[i];
            }
        }
    }
    return getDataBlock(chosen, channel);
}

NerikResultModel::DataBlock* NerikResultModel::getDataBlock(Transmission* transmission, int channel)
{
    if (transmission == nullptr) {
        return nullptr;
    }
    QList<DataBlock*> const& blocks = transmission->GetDataBlock();
    for (int i = blocks.size() - 1; i >= 0; --i) {
        if (blocks[i]->GetChannel() == channel) {
            return blocks[i];
        }
    }
    return nullptr;
}

void NerikResultModel::normalizeDataBlock(DataBlock* block)
{
    QVector<TimeStamp>& stamps = block->GetTimeStamp();
    if (stamps.isEmpty()) {
        return;
    }
    int const offset = stamps.front().GetPosition();
    if (offset < 1) {
        return;
    }
    for (TimeStamp& stamp : stamps) {
        stamp.SetPosition(stamp.GetPosition() - offset);
    }
    for (UserData* item : block->GetUserData()) {
        item->start -= offset;
        item->end -= offset;
    }
}

bool NerikResultModel::userDataInRange(UserData* userData, int start, int end)
{
    int const itemStart = userData->start;
    int const itemEnd = userData->end;
    return (itemStart >= start && itemStart < end) || (itemEnd > start && itemEnd <= end) ||
           (start >= itemStart && start < itemEnd) || (end > itemStart && end <= itemEnd);
}

void NerikResultModel::computeChange(DataBlock* block, UserData* userData, bool undo)
{
    // Copies: the item may be one of the block's own and be moved or removed below.
    int const start = userData->start;
    int const end = userData->end;
    QString const replacement = userData->text;
    QString const covered = userData->coveredText;
    int const delta =
        undo ? covered.size() - replacement.size() : replacement.size() - covered.size();

    QString content = block->GetContent();
    if (undo) {
        content.replace(start, replacement.size(), covered);
    } else {
        content.replace(start, covered.size(), replacement);
    }
    block->SetContent(content);

    for (TimeStamp& stamp : block->GetTimeStamp()) {
        if (stamp.GetPosition() > start) {
            stamp.SetPosition(stamp.GetPosition() + delta);
        }
    }

    QList<UserData*>& items = block->GetUserData();
    for (int i = items.size() - 1; i >= 0; --i) {
        UserData* const item = items[i];
        if (start > item->start && start < item->end) {
            // The edit begins inside the item: it grows or shrinks, but keeps one character.
            item->end += delta;
            if (item->end <= item->start) {
                item->end = item->start + 1;
            }
            item->coveredText = content.mid(item->start, item->end - item->start);
        } else if (!(item->start < end && item->start <= start)) {
            item->start += delta;
            item->end += delta;
        }
        if (item->start < 0 || item->end > content.size()) {
            deleteAt(items, i);
        }
    }
}

NerikResultModel::DataBlock* NerikResultModel::setUserChannel(DataBlock& block)
{
    if (block.GetTimeStamp().isEmpty()) {
        return nullptr;
    }
    QDateTime const firstTime = block.GetTimeStamp().front().GetTime();
    int const firstPosition = block.GetTimeStamp().front().GetPosition();
    int const channel = block.GetChannel();

    DataBlock* target = findDataBlock(channel, firstTime);
    if (target == nullptr) {
        target = findDataBlock(channel, QDateTime());
    }
    if (target == nullptr) {
        Transmission* transmission = m_currentTransmission;
        if (transmission == nullptr) {
            transmission = createTransmission(firstTime);
        }
        target = new DataBlock(channel, 0, 0);
        target->SetID(m_resultData->GetNextID());
        transmission->AddDataBlock(target);
    }

    // What the user typed at or after the new text's time is replaced by it.
    int cut = target->GetContent().size();
    QVector<TimeStamp>& targetStamps = target->GetTimeStamp();
    while (!targetStamps.isEmpty() && !(targetStamps.back().GetTime() < firstTime)) {
        cut = targetStamps.back().GetPosition();
        targetStamps.removeLast();
    }

    if (cut != firstPosition) {
        int const shift = cut - firstPosition;
        for (TimeStamp& stamp : block.GetTimeStamp()) {
            stamp.SetPosition(stamp.GetPosition() + shift);
        }
        for (UserData* item : block.GetUserData()) {
            // An unplaced item stays unplaced (and must not overflow).
            if (item->start != UnplacedPosition) {
                item->start += shift;
            }
            item->end += shift;
        }
    }

    QList<UserData*>& items = target->GetUserData();
    for (int i = items.size() - 1; i >= 0; --i) {
        UserData const* const item = items[i];
        bool const before = item->start < cut && item->end <= cut;
        bool const unplacedBefore = item->start == UnplacedPosition && item->end <= cut;
        if (!before && !unplacedBefore) {
            deleteAt(items, i);
        }
    }

    for (TimeStamp const& stamp : block.GetTimeStamp()) {
        targetStamps.append(stamp);
    }
    target->SetContent(target->GetContent().left(cut) + block.GetContent());
    return target;
}

bool NerikResultModel::setUserData(DataBlock& block)
{
    DataBlock* target = nullptr;
    if (block.GetChannel() == UserChannelID) {
        target = setUserChannel(block);
    } else {
        QDateTime const time =
            block.GetTimeStamp().isEmpty() ? QDateTime() : block.GetTimeStamp().front().GetTime();
        target = findDataBlock(block.GetChannel(), time);
    }
    if (target == nullptr) {
        return false;
    }

    QList<UserData*>& items = target->GetUserData();
    for (UserData const* added : block.GetUserData()) {
        // Reverting an edit may remove other items of the block, so the walk goes over a
        // snapshot and skips what has gone meanwhile.
        QList<UserData*> const snapshot = items;
        for (int i = snapshot.size() - 1; i >= 0; --i) {
            UserData* const item = snapshot[i];
            int const index = items.indexOf(item);
            if (index < 0 || item->type != added->type ||
                !userDataInRange(item, added->start, added->end)) {
                continue;
            }
            items.removeAt(index);
            if (item->type == UserData::ChangeType) {
                computeChange(target, item, true);
            }
            delete item;
        }
        if (added->text.isEmpty() && added->text2.isEmpty() && added->coveredText.isEmpty()) {
            continue; // a pure deletion
        }
        auto* const copy = new UserData(*added);
        items.append(copy);
        if (copy->type == UserData::ChangeType) {
            computeChange(target, copy, false);
        }
    }
    return true;
}

bool NerikResultModel::setUserData(PDUDataBlock& block)
{
    PDUDataBlock* const target = getPDUDataBlock(block.GetID());
    if (target == nullptr) {
        return false;
    }
    target->DeleteUserData();
    for (UserData const* item : block.GetUserData()) {
        target->AddUserData(new UserData(*item));
    }
    return true;
}

// --- PDU data blocks ------------------------------------------------------------------------

NerikResultModel::PDUDataBlock* NerikResultModel::getPDUDataBlock(int id) const
{
    QList<Transmission*> const& transmissions = m_resultData->GetTransmission();
    for (int i = transmissions.size() - 1; i >= 0; --i) {
        if (PDUDataBlock* const found = getPDUDataBlock(transmissions[i], id, true)) {
            return found;
        }
    }
    return nullptr;
}

namespace {

NerikResultDataXml::PDUDataBlock* findPdu(QList<NerikResultDataXml::PDUDataBlock*> const& blocks,
                                          int id)
{
    for (int i = blocks.size() - 1; i >= 0; --i) {
        NerikResultDataXml::PDUDataBlock* const block = blocks[i];
        if (block->GetID() == id) {
            return block;
        }
        if (auto* const found = findPdu(block->GetPDUDataBlocks(), id)) {
            return found;
        }
    }
    return nullptr;
}

// A transmission's top-level blocks and a block's children are searched and merged alike;
// Owner is either. IDs come from the document's counter and so are unique: a block among
// owner's own is found through their index, and only an ID that none of them has sends a
// recursive search through the children.
template <typename Owner>
NerikResultDataXml::PDUDataBlock* findChildPdu(Owner* owner, int id, bool recursive)
{
    if (owner == nullptr) {
        return nullptr;
    }
    if (auto* const own = owner->FindPDUDataBlock(id)) {
        return own;
    }
    return recursive ? findPdu(owner->GetPDUDataBlocks(), id) : nullptr;
}

// The block of pdu's ID among owner's blocks is updated and pdu's children merged into it;
// without one, owner receives a copy of pdu (children included).
template <typename Owner>
void mergePdu(NerikResultModel& model, Owner& owner, NerikResultDataXml::PDUDataBlock const& pdu)
{
    if (auto* const existing = findChildPdu(&owner, pdu.GetID(), false)) {
        model.updatePDUDataBlock(existing, pdu);
        for (NerikResultDataXml::PDUDataBlock const* child : pdu.GetPDUDataBlocks()) {
            model.addPDUDataBlock(existing, *child);
        }
    } else {
        owner.AddPDUDataBlock(new NerikResultDataXml::PDUDataBlock(pdu));
    }
}

} // namespace

NerikResultModel::PDUDataBlock* NerikResultModel::getPDUDataBlock(Transmission* transmission,
                                                                  int id, bool recursive)
{
    return findChildPdu(transmission, id, recursive);
}

NerikResultModel::PDUDataBlock* NerikResultModel::getPDUDataBlock(PDUDataBlock* parent, int id,
                                                                  bool recursive)
{
    return findChildPdu(parent, id, recursive);
}

void NerikResultModel::updatePDUDataBlock(PDUDataBlock* target, PDUDataBlock const& source)
{
    if (source.GetPlayload().IsValid()) {
        target->SetPayload(source.GetPlayload());
    }
    target->DeleteUserData();
    for (UserData const* item : source.GetUserData()) {
        target->AddUserData(new UserData(*item));
    }
}

void NerikResultModel::addPDUDataBlock(Transmission* transmission, PDUDataBlock const& pdu,
                                       QDateTime& latest)
{
    if (transmission == nullptr) {
        return;
    }
    mergePdu(*this, *transmission, pdu);
    if (latest < pdu.GetTimeStamp()) {
        latest = pdu.GetTimeStamp();
    }
}

void NerikResultModel::addPDUDataBlock(PDUDataBlock* parent, PDUDataBlock const& pdu)
{
    if (parent != nullptr) {
        mergePdu(*this, *parent, pdu);
    }
}

// --- Infos ----------------------------------------------------------------------------------

void NerikResultModel::addInfo(Transmission* transmission, Info const& info)
{
    if (transmission != nullptr && !hasInfoAt(transmission, info.GetTimestamp())) {
        transmission->AddInfo(new Info(info));
    }
}

bool NerikResultModel::hasInfoAt(Transmission const* transmission, QDateTime const& time)
{
    // From the newest: infos arrive in time order, so a repeated time is found at once.
    QList<Info*> const& infos = transmission->GetInfos();
    return std::any_of(infos.crbegin(), infos.crend(),
                       [&time](Info const* existing) { return existing->GetTimestamp() == time; });
}

// ---- AIS station reports -------------------------------------------------------------

int NerikResultModel::scanAISData(PDUDataBlock const* pdu, JobSpec::Station& station)
{
    if (!pdu || !pdu->GetName().startsWith(QLatin1String("AIS"))) {
        return -1;
    }
    QVector<NerikResultDataXml::Field> const& fields = pdu->GetFields();
    int mmsiIndex = -1;
    for (int i = 0; i < fields.size(); ++i) {
        if (fields[i].GetName() == QLatin1String("MMSI")) {
            mmsiIndex = i;
            break;
        }
    }
    if (mmsiIndex < 0) {
        return -1;
    }
    QString text = QStringLiteral("scanAISData: %1 MMSI=%2")
                       .arg(pdu->GetTimeStamp().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")),
                            fields[mmsiIndex].GetValue());
    int const mmsi = fields[mmsiIndex].GetValue().toInt(); // 0 when it is not a number
    station.SetStationID(mmsi);
    station.SetTimeStamp(pdu->GetTimeStamp());

    for (int i = mmsiIndex + 1; i < fields.size(); ++i) {
        NerikResultDataXml::Field const& field = fields[i];
        if (field.GetName() == QLatin1String("Call Sign")) {
            text += QStringLiteral(" CallSign=") + field.GetValue();
            station.SetName(field.GetValue());
        } else if (field.GetType() == QLatin1String("position")) {
            text += QStringLiteral(" position=") + field.GetValue();
            QStringList const tokens = scanAISPosition(field.GetValue());
            double value = 0.0;
            if (getAISPosition(tokens, QStringLiteral("N"), value, 90.0)) {
                station.SetLatitude(value);
            } else if (getAISPosition(tokens, QStringLiteral("S"), value, 90.0)) {
                station.SetLatitude(-value);
            }
            // Longitudes are held to the same 90 degrees as latitudes: a ship further than
            // 90 degrees east or west keeps its earlier longitude.
            if (getAISPosition(tokens, QStringLiteral("E"), value, 90.0)) {
                station.SetLongitude(value);
            } else if (getAISPosition(tokens, QStringLiteral("W"), value, 90.0)) {
                station.SetLongitude(-value);
            }
        }
    }
    // The station ID goes into the trace as one character, not as digits.
    text += QStringLiteral(" StationID=") +
            QString(QChar(ushort(station.GetStationID() & 0xFFFF))) +
            QStringLiteral(" StationName=") + station.GetName() + QStringLiteral(" latitude=") +
            QString::number(station.GetLatitude(), 'g', 6) + QStringLiteral(" longitude=") +
            QString::number(station.GetLongitude(), 'g', 6);
    trace().info(text, LineScanAISData);
    return mmsi;
}

} // namespace zelkodatastreamconverter
