#include "aisrecorderdata.h"

#include "moduletrace.h"
#include "nerikresultmodel.h"

#include <QSet>
#include <nerikresultdataxml/info.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

QString const AISRecorderData::FileCode = QStringLiteral("AISStation");
QString const AISRecorderData::StationItem = QStringLiteral("Station");

namespace {
ModuleTrace const& moduleTrace()
{
    static ModuleTrace const trace(QStringLiteral("aisrecorderdata"));
    return trace;
}
} // namespace

AISRecorderData::AISRecorderData(int mmsi, FileInfoCallback* callback, QString const& directory,
                                 double frequency)
    : m_mmsi(mmsi), m_file(callback)
{
    m_station.SetValidate(false);
    m_file.setFileCode(FileCode);
    // The MMSI is part of the literal name; %1 and %2 stay for the time text and suffix.
    m_file.setFileName(QStringLiteral("AISStation_") + QString::number(mmsi) +
                       QStringLiteral("_%1%2.xml"));
    m_file.setDirectory(directory);
    m_file.setFrequency(frequency);
}

void AISRecorderData::addBlock(int blockId, JobSpec::Station const& scanned, QDateTime const& now)
{
    m_blockIds.append(blockId);
    m_station.SetStationID(scanned.GetStationID());
    m_station.SetTimeStamp(scanned.GetTimeStamp());
    if (scanned.IsNameSet()) {
        m_station.SetName(scanned.GetName());
    }
    if (scanned.IsPositionSet()) {
        m_station.SetLatitude(scanned.GetLatitude());
        m_station.SetLongitude(scanned.GetLongitude());
    }
    if (m_file.getOpenFile()) {
        if (!m_file.hasPendingChanges()) {
            m_file.setPendingChanges(now.addSecs(PendingChangeDelay::NewData));
        }
    } else {
        m_file.setPendingChanges(now.addSecs(PendingChangeDelay::NoFileYet));
    }
    m_expiryTime = now.addSecs(SilenceSeconds);
}

bool AISRecorderData::saveFile(NerikResultModel const& source)
{
    NerikResultDataXml::NerikResultData document;
    auto* transmission = new NerikResultDataXml::Transmission();
    document.AddTransmission(transmission);
    QDateTime first;
    // A block ID that was filed twice (the same unit sent again in a later transmission)
    // names the same newest block; it is written once.
    QSet<int> written;
    for (int const id : m_blockIds) {
        if (written.contains(id)) {
            continue;
        }
        written.insert(id);
        if (NerikResultDataXml::PDUDataBlock const* block = source.getPDUDataBlock(id)) {
            transmission->AddPDUDataBlock(new NerikResultDataXml::PDUDataBlock(*block));
            if (!first.isValid() || block->GetTimeStamp() < first) {
                first = block->GetTimeStamp();
            }
        }
    }
    transmission->SetStartTime(first.isValid() ? first : m_station.GetTimeStamp());
    transmission->SetStopTime(m_station.GetTimeStamp());
    NerikResultDataXml::Info info(m_station.GetTimeStamp());
    info.SetItem(StationItem, m_station.GetXmlString());
    transmission->AddInfo(new NerikResultDataXml::Info(info));

    // The station file is replaced in one step. A save that fails (no file could be created,
    // the reason traced by the file) is not tried again before the station reports anew.
    bool const saved = m_file.writeDocument([&document](QFile& file) {
        bool const written = document.SaveFile(file);
        if (!written) {
            moduleTrace().warning(
                QStringLiteral("SaveFile: %1 %2").arg(file.fileName(), document.GetErrorText()),
                __LINE__);
        }
        return written;
    });
    m_file.resetPendingChanges();
    return saved;
}

void AISRecorderData::close(NerikResultModel const& source)
{
    if (m_file.hasPendingChanges()) {
        saveFile(source);
    }
    m_file.closeFile(false);
}

} // namespace zelkodatastreamconverter
