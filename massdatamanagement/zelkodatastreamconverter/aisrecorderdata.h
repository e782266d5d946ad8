#pragma once

#include <QDateTime>
#include <QVector>
#include <jobspec/station.h>
#include <massdatamanagement/zelkodatastreamconverter/xmlfile.h>

namespace zelkodatastreamconverter {

class NerikResultModel;

/// What the recorder keeps of one AIS ship station (MMSI): the station as last reported
/// (ID, time, name, position), the IDs of its PDU data blocks in the recorder's document, a
/// result file of its own and the time after which a silent station is closed.
///
/// The station file is a result document (file code "AISStation", named
/// "AISStation_<MMSI>_<yyyyMMdd_hhmmss><suffix>.xml") with one transmission that holds copies
/// of the station's PDU data blocks and an Info record whose item "Station" is the station's
/// XML text. It is rewritten whole whenever its pending changes are due.
class AISRecorderData
{
public:
    static QString const FileCode;    // "AISStation"
    static QString const StationItem; // "Station"
    static constexpr int SilenceSeconds = 180;

    AISRecorderData(int mmsi, FileInfoCallback* callback, QString const& directory,
                    double frequency);

    int getMMSI() const { return m_mmsi; }
    JobSpec::Station const& getStation() const { return m_station; }
    QVector<int> const& getBlockIDs() const { return m_blockIds; }
    XmlFile& getFile() { return m_file; }
    XmlFile const& getFile() const { return m_file; }
    QDateTime const& getExpiryTime() const { return m_expiryTime; }

    /// Files a PDU data block of the station: takes the scanned station's ID and time, its
    /// name when set and its position when both coordinates are set, marks the file for
    /// writing and moves the expiry time 180 s past now (local time).
    void addBlock(int blockId, JobSpec::Station const& scanned, QDateTime const& now);

    /// Writes the station file from the blocks found in source; the file stays on disk,
    /// closed for reopening. False when the file could not be written.
    bool saveFile(NerikResultModel const& source);
    /// Writes what is pending and completes the file (reported to the callback).
    void close(NerikResultModel const& source);

private:
    int m_mmsi;
    JobSpec::Station m_station;
    QVector<int> m_blockIds;
    XmlFile m_file;
    QDateTime m_expiryTime;
};

} // namespace zelkodatastreamconverter
