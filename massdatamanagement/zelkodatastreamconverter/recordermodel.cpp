#include "recordermodel.h"

#include "clock.h"
#include "guardedcall.h"

#include <algorithm>
#include <cstring>
#include <jobspec/antennasettings.h>
#include <jobspec/demodulatorsettings.h>
#include <jobspec/settings.h>
#include <jobspec/station.h>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/info.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>
#include <reportkit/tunersettings.h>
#include <utility>

namespace zelkodatastreamconverter {

QString const RecorderModel::AISMode = QStringLiteral("AIS");

namespace {

ModuleTrace const& moduleTrace()
{
    static ModuleTrace const trace(QStringLiteral("recordermodel"));
    return trace;
}

// Hosts know these messages by the line numbers they have always carried, so the numbers are
// fixed here rather than taken from this file.
enum TraceLine
{
    LineGuardedReport = 42,
    LineGuardedDocument = 44,
    LineGuardedOther = 46,
    LineParse = 58,
    LineStationExpired = 246,
    LineStationSaved = 258,
    LineSaveFile = 297,
    LineStationClosed = 306,
};
constexpr GuardLines GuardedStepLines = {LineGuardedReport, LineGuardedDocument, LineGuardedOther};

// Runs a settings step; what the libraries throw is traced as "<operation>: <text>".
template <typename Step>
void guarded(char const* operation, Step&& step)
{
    guardedCall(moduleTrace(), QString::fromLatin1(operation), GuardedStepLines,
                std::forward<Step>(step));
}

template <typename Settings>
bool parse(Settings& into, QString const& xml, char const* operation)
{
    Settings parsed;
    if (!parsed.SetXmlString(xml, 0)) {
        moduleTrace().warning(
            QStringLiteral("%1: %2").arg(QString::fromLatin1(operation), parsed.LastXmlError()),
            LineParse);
        return false;
    }
    into = parsed;
    return true;
}

} // namespace

size_t RecorderModel::MMSIHash::operator()(int mmsi) const
{
    unsigned char bytes[sizeof mmsi];
    std::memcpy(bytes, &mmsi, sizeof mmsi);
    quint64 hash = 14695981039346656037ull;
    for (unsigned char const byte : bytes) {
        hash ^= byte;
        hash *= 1099511628211ull;
    }
    return size_t(hash);
}

RecorderModel::RecorderModel(FileInfoCallback* callback)
    : m_xmlFile(callback), m_fileInfoCallback(callback)
{
}

RecorderModel::~RecorderModel() = default;

REPORTKIT::Tuner_Settings& RecorderModel::getTunerSettings()
{
    if (!m_tunerSettings) {
        m_tunerSettings = std::make_unique<REPORTKIT::Tuner_Settings>();
        m_tunerSettings->SetValidate(false);
    }
    return *m_tunerSettings;
}

JobSpec::Demodulator_Settings& RecorderModel::getDemodulatorSettings()
{
    if (!m_demodulatorSettings) {
        m_demodulatorSettings = std::make_unique<JobSpec::Demodulator_Settings>();
        m_demodulatorSettings->SetValidate(false);
    }
    return *m_demodulatorSettings;
}

void RecorderModel::setParameter(JobSpec::Settings const& settings)
{
    guarded("setParameter", [&] {
        setTunerSettings(settings.GetTuner_Settings().GetXmlString());
        setChannelSelection(settings.GetChannelSelection().GetXmlString());
    });
    NerikResultModel::setParameter(settings);
}

void RecorderModel::setDirectoryPath(QString const& path)
{
    m_xmlFile.setDirectory(path);
}

QString RecorderModel::getDirectoryPath() const
{
    return const_cast<XmlFile&>(m_xmlFile).getDirectory().path();
}

void RecorderModel::setFileCode(QString const& code)
{
    m_xmlFile.setFileCode(code);
}

QString RecorderModel::getFileCode() const
{
    return m_xmlFile.getFileCode();
}

QString RecorderModel::getFileName() const
{
    // A file counts as open while its file object exists: between writes the result files are
    // closed for reopening, and they are still the files of this recorder.
    QStringList names;
    if (m_xmlFile.isOpen()) {
        names << m_xmlFile.getOpenFile()->fileName();
    }
    for (AISRecorderData const* station : stationsByMMSI()) {
        if (station->getFile().isOpen()) {
            names << station->getFile().getOpenFile()->fileName();
        }
    }
    return names.join(QLatin1Char('\n'));
}

std::vector<AISRecorderData*> RecorderModel::stationsByMMSI() const
{
    std::vector<AISRecorderData*> stations;
    stations.reserve(m_stations.size());
    for (auto const& entry : m_stations) {
        stations.push_back(entry.second.get());
    }
    std::sort(stations.begin(), stations.end(),
              [](AISRecorderData const* a, AISRecorderData const* b) {
                  return a->getMMSI() < b->getMMSI();
              });
    return stations;
}

void RecorderModel::setCurrentTransmission(Transmission* transmission)
{
    NerikResultModel::setCurrentTransmission(transmission);
    if (transmission) {
        addCurrentInfo(transmission->GetStartTime(), true);
        m_xmlFile.setPendingChanges(PendingChangeDelay::NewTransmission);
    }
}

void RecorderModel::markChanged()
{
    if (m_xmlFile.getOpenFile()) {
        if (!m_xmlFile.hasPendingChanges()) {
            m_xmlFile.setPendingChanges(PendingChangeDelay::NewData);
        }
    } else {
        m_xmlFile.setPendingChanges(PendingChangeDelay::NoFileYet);
    }
}

bool RecorderModel::addTransmission(Transmission const& transmission, QStringList& stationXml)
{
    bool isNew = false;
    guarded("addTransmission", [&] {
        Transmission const* before = getCurrentTransmission();
        int const known = before ? before->GetPDUDataBlocks().size() : 0;
        isNew = NerikResultModel::addTransmission(transmission);
        Transmission* const current = getCurrentTransmission();
        if (!current || !m_aisMode) {
            markChanged();
            return;
        }
        QList<PDUDataBlock*> const& blocks = current->GetPDUDataBlocks();
        for (int i = isNew ? 0 : known; i < blocks.size(); ++i) {
            JobSpec::Station station;
            station.SetValidate(false);
            int const mmsi = scanAISData(blocks[i], station);
            if (mmsi < 0) {
                markChanged();
                continue;
            }
            stationXml << station.GetXmlString();
            addAISData(mmsi, station, blocks[i]->GetID());
        }
    });
    return isNew;
}

void RecorderModel::addAISData(int mmsi, JobSpec::Station const& station, int blockId)
{
    std::shared_ptr<AISRecorderData>& entry = m_stations[mmsi];
    if (!entry) {
        entry = std::make_shared<AISRecorderData>(mmsi, m_fileInfoCallback, getDirectoryPath(),
                                                  getFrequency());
    }
    entry->addBlock(blockId, station, Clock::currentDateTime());
}

std::shared_ptr<AISRecorderData> RecorderModel::getAISRecorderData(int mmsi) const
{
    auto const found = m_stations.find(mmsi);
    return found == m_stations.end() ? nullptr : found->second;
}

void RecorderModel::addCurrentInfo(QDateTime const& time, bool isNew)
{
    guarded("addCurrentInfo", [&] {
        // The settings' XML costs more than the rest of a frame: only for a new time.
        Transmission const* const current = getCurrentTransmission();
        if (current == nullptr || hasInfoAt(current, time)) {
            return;
        }
        Info info(time);
        info.SetItem(TypeTunerSettings, getTunerSettings().GetXmlString());
        info.SetItem(TypeDemodulatorSettings, getDemodulatorSettings().GetXmlString());
        addInfo(getCurrentTransmission(), info);
    });
}

void RecorderModel::saveExpiredPendingChanges(QDateTime const& now)
{
    if (m_xmlFile.hasExpiredPendingChanges(now)) {
        writeResultFile();
    }
    for (auto it = m_stations.begin(); it != m_stations.end();) {
        AISRecorderData& station = *it->second;
        if (station.getExpiryTime() < now) {
            moduleTrace().info(QStringLiteral("AISRecorderData::close %1").arg(station.getMMSI()),
                               LineStationExpired);
            station.close(*this);
            it = m_stations.erase(it);
            continue;
        }
        if (station.getFile().hasExpiredPendingChanges(now)) {
            station.saveFile(*this);
            // Traced after the write, so that the first write names the file it created.
            QFile const* const file = station.getFile().getOpenFile();
            moduleTrace().info(QStringLiteral("AISRecorderData::saveFile %1 file %2")
                                   .arg(station.getMMSI())
                                   .arg(file ? file->fileName() : QString()),
                               LineStationSaved);
        }
        ++it;
    }
    updateTransmissionSystemMode();
}

// Writes the whole document so that it replaces the previous one in one step (a conversion
// killed while saving leaves the previous complete document). A write that cannot happen (no
// file could be created) counts as a failed save: the changes are no longer pending, so a
// directory that refuses files is not tried again at every poll, only after the next change.
void RecorderModel::writeResultFile()
{
    m_xmlFile.writeDocument([this](QFile& file) { return saveFile(file); });
    m_xmlFile.resetPendingChanges();
}

void RecorderModel::saveFile()
{
    writeResultFile();
    for (AISRecorderData* station : stationsByMMSI()) {
        station->saveFile(*this);
    }
}

bool RecorderModel::saveFile(QFile& file)
{
    NerikResultDataXml::DataBlockFilter filter;
    if (!getChannelSelectionBits().isNull()) {
        filter = [this](DataBlock const& block) { return isChannelSelected(block.GetChannel()); };
    }
    NerikResultDataXml::NerikResultData* const document = getResultData();
    bool const saved = filter ? document->SaveFile(file, filter) : document->SaveFile(file);
    if (!saved) {
        moduleTrace().warning(
            QStringLiteral("SaveFile: %1 %2").arg(file.fileName(), document->GetErrorText()),
            LineSaveFile);
    }
    return saved;
}

void RecorderModel::closeStations()
{
    for (AISRecorderData* station : stationsByMMSI()) {
        moduleTrace().info(QStringLiteral("AISRecorderData::close %1").arg(station->getMMSI()),
                           LineStationClosed);
        station->close(*this);
    }
    m_stations.clear();
}

void RecorderModel::closeFile()
{
    if (!m_stations.empty()) {
        closeStations();
    }
    updateTransmissionSystemMode();
    if (m_xmlFile.hasPendingChanges()) {
        writeResultFile();
    }
    m_xmlFile.closeFile(false);
    clear();
}

void RecorderModel::setAntennaSettings(QString const& xml)
{
    guarded("setAntennaSettings", [&] {
        JobSpec::AntennaSettings antenna;
        if (parse(antenna, xml, "setAntennaSettings") &&
            !(getTunerSettings().GetAntennaSettings() == antenna)) {
            getTunerSettings().SetAntennaSettings(antenna);
        }
    });
}

void RecorderModel::setAudioSettings(QString const& xml)
{
    guarded("setAudioSettings", [&] {
        REPORTKIT::Audio_Settings audio;
        if (parse(audio, xml, "setAudioSettings")) {
            getTunerSettings().SetAudio_Settings(audio);
        }
    });
}

void RecorderModel::setTunerSettings(QString const& xml)
{
    guarded("setTunerSettings", [&] {
        REPORTKIT::Tuner_Settings tuner;
        if (parse(tuner, xml, "setTunerSettings")) {
            getTunerSettings() = tuner;
            getTunerSettings().SetValidate(false);
            setFrequency(tuner.GetFFM_Settings().GetFrequency().GetValue());
        }
    });
}

void RecorderModel::setFFMSettings(QString const& xml)
{
    guarded("setFFMSettings", [&] {
        REPORTKIT::FFM_Settings ffm;
        if (parse(ffm, xml, "setFFMSettings")) {
            getTunerSettings().SetFFM_Settings(ffm);
        }
        NerikResultModel::setFFMSettings(xml);
    });
}

bool RecorderModel::setDemodulatorSettings(QString const& xml)
{
    if (!xml.isEmpty()) {
        guarded("setDemodulatorSettings", [&] {
            JobSpec::Demodulator_Settings demodulator;
            if (parse(demodulator, xml, "setDemodulatorSettings")) {
                getDemodulatorSettings() = demodulator;
                getDemodulatorSettings().SetValidate(false);
                setTransmissionSystemMode(demodulator.GetTransmissionSystemMode());
            }
        });
    }
    return NerikResultModel::setDemodulatorSettings(xml);
}

void RecorderModel::setFrequency(double hertz)
{
    NerikResultModel::setFrequency(hertz);
    if (hertz != 0.0) {
        getTunerSettings().GetFFM_Settings().GetFrequency().SetValue(hertz);
        m_xmlFile.setFrequency(hertz);
    }
}

void RecorderModel::majorSettingsChanged()
{
    NerikResultModel::majorSettingsChanged();
}

void RecorderModel::setTransmissionSystemMode(QString const& mode)
{
    m_transmissionSystemMode = mode;
    updateTransmissionSystemMode();
}

void RecorderModel::updateTransmissionSystemMode()
{
    m_aisMode = m_transmissionSystemMode == AISMode || !m_stations.empty();
}

} // namespace zelkodatastreamconverter
