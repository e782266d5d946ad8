#pragma once

#include <QStringList>
#include <massdatamanagement/zelkodatastreamconverter/aisrecorderdata.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <massdatamanagement/zelkodatastreamconverter/xmlfile.h>
#include <memory>
#include <unordered_map>
#include <vector>

namespace JobSpec {
class Demodulator_Settings;
}
namespace REPORTKIT {
class Tuner_Settings;
}

namespace zelkodatastreamconverter {

/// The result model that owns the result XML file of a conversion.
///
/// A converter hands it the output directory and the job settings, and at the end of the
/// recording the data model's current transmission; closeFile() then writes the document
/// and completes the file, which reports itself to the FileInfoCallback.
///
/// The document is not written at every change: changes mark the file with a delay (10 s
/// after a new transmission, 30 s after new data, at once while no file exists), and the
/// owner polls saveExpiredPendingChanges(). Data blocks of channels outside the job's channel
/// selection are left out of the written file (the model keeps them).
///
/// In the transmission-system mode "AIS" every ship station (MMSI) also gets a result file
/// of its own (AISRecorderData), closed when the station has been silent for 180 s.
class RecorderModel : public NerikResultModel
{
public:
    /// The transmission-system mode that turns the station files on.
    static QString const AISMode; // "AIS"

    explicit RecorderModel(FileInfoCallback* callback);
    /// Call closeFile() first: only it writes and completes the files.
    ~RecorderModel() override;

    /// Job settings: tuner (antenna, audio, FFM), demodulator and channel selection.
    void setParameter(JobSpec::Settings const& settings);

    void setDirectoryPath(QString const& path);
    QString getDirectoryPath() const;
    void setFileCode(QString const& code);
    QString getFileCode() const;
    /// The names (paths) of the recorder's files, one per line: the result file while it
    /// has a file object (open, or closed between writes), then the station files in
    /// ascending MMSI order. Empty when there is none.
    QString getFileName() const;

    void setCurrentTransmission(Transmission* transmission) override;
    /// Merges a whole transmission; in AIS mode the XML of every station scanned from its new
    /// PDU blocks is appended to stationXml. Returns whether the transmission was new.
    bool addTransmission(Transmission const& transmission, QStringList& stationXml);
    void addCurrentInfo(QDateTime const& time, bool isNew) override;

    void saveExpiredPendingChanges(QDateTime const& now);
    void saveFile();
    void closeFile();
    /// Marks the result file as changed: it is written 30 s after the first change since the
    /// last write, at once when it has no file yet, and always by closeFile(). In AIS mode
    /// station reports do not mark it; a converter that wants the result file beside the
    /// station files marks it itself.
    void markChanged();

    void setAntennaSettings(QString const& xml);
    void setAudioSettings(QString const& xml);
    void setTunerSettings(QString const& xml);
    void setFFMSettings(QString const& xml) override;
    bool setDemodulatorSettings(QString const& xml) override;
    void setFrequency(double hertz) override;
    void majorSettingsChanged() override;

    REPORTKIT::Tuner_Settings& getTunerSettings();
    JobSpec::Demodulator_Settings& getDemodulatorSettings();
    bool isAISMode() const { return m_aisMode; }
    XmlFile const& getXmlFile() const { return m_xmlFile; }
    /// The open station entries by MMSI.
    std::shared_ptr<AISRecorderData> getAISRecorderData(int mmsi) const;
    int getAISStationCount() const { return int(m_stations.size()); }

private:
    // FNV-1a over the four bytes of the MMSI.
    struct MMSIHash
    {
        size_t operator()(int mmsi) const;
    };

    void setTransmissionSystemMode(QString const& mode);
    void updateTransmissionSystemMode();
    void addAISData(int mmsi, JobSpec::Station const& station, int blockId);
    bool saveFile(QFile& file);
    void writeResultFile();
    void closeStations();
    // The station entries in ascending MMSI order, so that files are listed, written and
    // reported in the same order in every run.
    std::vector<AISRecorderData*> stationsByMMSI() const;

    std::unique_ptr<REPORTKIT::Tuner_Settings> m_tunerSettings;
    std::unique_ptr<JobSpec::Demodulator_Settings> m_demodulatorSettings;
    XmlFile m_xmlFile;
    bool m_aisMode = false;
    QString m_transmissionSystemMode;
    std::unordered_map<int, std::shared_ptr<AISRecorderData>, MMSIHash> m_stations;
    FileInfoCallback* m_fileInfoCallback; // for the station files
};

} // namespace zelkodatastreamconverter
