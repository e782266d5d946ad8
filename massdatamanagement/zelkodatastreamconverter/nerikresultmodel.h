#pragma once

#include <QBitArray>
#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <memory>

namespace NerikResultDataXml {
class DataBlock;
class Info;
class NerikResultData;
class PDUDataBlock;
class Transmission;
class UserData;
} // namespace NerikResultDataXml

namespace JobSpec {
class Settings;
class Station;
} // namespace JobSpec

namespace zelkodatastreamconverter {

class NerikResultCallback;

/// The in-memory result document that a converter fills while it reads a data stream, and
/// the base of every result model (decoded text, transmission systems, image data, recorder).
///
/// The model owns one NerikResultDataXml::NerikResultData and points at the transmission
/// being filled (the current transmission). Data are merged into the document without
/// duplicating what is there already:
/// - a transmission is identified by its start time;
/// - inside it, a text data block by its channel (the last block of a channel is the live
///   one), a PDU data block by its ID (PDU blocks nest);
/// - every block the model creates takes its ID from the document's counter (getNextID()).
/// Lists of the document are searched from the last element to the first: the newest wins.
///
/// Settings: setParameter() hands the job's FFM and demodulator settings to the virtual
/// setters. A change of frequency, demodulator or decoder calls majorSettingsChanged(), which
/// notes the time (Clock::currentDateTimeUtc()); data stamped in the minute before that time
/// still join the open transmission, anything else starts a new one (getTransmissionTime()),
/// and doIdleProcessing() ends the open transmission one second after the change at the
/// latest.
///
/// Channels: isChannelSelected() answers for the job's channel selection; UserChannelID (the
/// channel of text typed by the user) is always selected.
///
/// No exception leaves the model: what the document and settings libraries throw is traced
/// (module "nerikresultmodel", warning bit) and turned into a false result or no action.
///
/// Derived models override the virtual operations below; their order is part of the
/// interface. A copy starts with an empty document of its own and takes over the settings
/// (alphabets directory, demodulator, decoder, frequency, channel selection) and the callback.
class NerikResultModel
{
public:
    using Transmission = NerikResultDataXml::Transmission;
    using DataBlock = NerikResultDataXml::DataBlock;
    using PDUDataBlock = NerikResultDataXml::PDUDataBlock;
    using UserData = NerikResultDataXml::UserData;
    using Info = NerikResultDataXml::Info;

    // Names under which the host application identifies parameter types.
    static QString const TypeAlphabet;            // "Alphabet"
    static QString const TypeAllAlphabets;        // "AllAlphabets"
    static QString const TypeAlphabetsDirectory;  // "AlphabetsDirectory"
    static QString const TypeAntennaSettings;     // "AntennaSettings"
    static QString const TypeAudioSettings;       // "Audio_Settings"
    static QString const TypeAutoModeConfigSet;   // "AutoModeConfigSet"
    static QString const TypeAvailableAlphabets;  // "AvailableAlphabets"
    static QString const TypeChannelSelection;    // "ChannelSelection"
    static QString const TypeDecoder;             // "Decoder"
    static QString const TypeDemodulator;         // "Demodulator"
    static QString const TypeDemodulatorSettings; // "Demodulator_Settings"
    static QString const TypeFFMSettings;         // "FFM_Settings"
    static QString const TypeFileName;            // "FileName"
    static QString const TypeRecordingDirectory;  // "RecordingDirectory"
    static QString const TypeTunerSettings;       // "Tuner_Settings"
    static QString const TypeUserData;            // "UserData"
    /// The alphabet when none is set ("None"); note the case differs from the decoder's.
    static QString const DefaultAlphabetValue;
    /// The decoder when the settings name none or several ("NONE").
    static QString const DefaultDecoderValue;
    /// The channel of text typed by the user; always selected.
    static constexpr int UserChannelID = 1000;

    /// Estimate (bytes of the document's UTF-8 XML) above which maxDataSizeExceeded() counts
    /// exactly, and the size that counts as exceeded.
    static constexpr int MaxDataSize = 1024000;

    NerikResultModel();
    NerikResultModel(NerikResultModel const& other);
    NerikResultModel& operator=(NerikResultModel const&) = delete;
    /// Deletes the document and every transmission still in it.
    virtual ~NerikResultModel();

    // --- Virtual operations, in interface order ---------------------------------------------

    /// Closes the current transmission (the callback sees it), clears the document and the
    /// size estimate.
    virtual void clear();
    /// Lets go of the current transmission: it stays in the document, the pending settings
    /// change is dropped, and the callback (if any) is told.
    virtual void closeCurrentTransmission();
    /// Takes mode, decoder and alphabet from a Demodulator_Settings XML text. An empty text
    /// changes nothing and answers true; an invalid one answers false.
    virtual bool setDemodulatorSettings(QString const& xml);
    /// Takes the frequency from an FFM_Settings XML text (setFFMFrequency()).
    virtual void setFFMSettings(QString const& xml);
    /// A new non-zero frequency is stored and is a major settings change; 0 and the stored
    /// value are ignored.
    virtual void setFrequency(double hertz);
    /// A new value is stored and is a major settings change. Always true.
    virtual bool setDemodulator(QString const& demodulator);
    virtual bool setDecoder(QString const& decoder);
    /// Base: false, nothing done (models with alphabets override it).
    virtual bool setAlphabet(QString const& alphabet, bool& changed);
    /// Base: stores the directory, true.
    virtual bool setAlphabetsDirectory(QString const& directory);
    virtual double getFrequency() const;
    virtual QString getDemodulator() const;
    virtual QString getDecoder() const;
    /// Base: DefaultAlphabetValue.
    virtual QString getAlphabet() const;
    virtual QString getAlphabetsDirectory() const;
    /// Closes the current transmission, then appends transmission (the document takes
    /// ownership) and makes it current. Null is ignored.
    virtual void setCurrentTransmission(Transmission* transmission);
    /// Notes now (UTC) as the time of a major settings change.
    virtual void majorSettingsChanged();
    /// Base: nothing. Derived models add the info record of their current settings here.
    virtual void addCurrentInfo(QDateTime const& time, bool isNew);

    // --- Settings -----------------------------------------------------------------------------

    /// Hands the job's FFM settings, then its demodulator settings, as XML texts to the
    /// virtual setters.
    void setParameter(JobSpec::Settings const& settings);
    /// Reads the frequency of an FFM_Settings XML text into setFrequency(); false when the
    /// text is not valid FFM settings.
    bool setFFMFrequency(QString const& xml);

    /// Selects the channels listed in a ChannelSelection XML text (0 to 255; other and
    /// non-numeric values are skipped). A text without values selects every channel.
    void setChannelSelection(QString const& xml);
    /// The selection as ChannelSelection XML text; empty when every channel is selected or
    /// none is.
    QString getChannelSelection() const;
    bool isChannelSelected(int channel) const;
    QBitArray const& getChannelSelectionBits() const { return m_channelSelection; }

    void setCallback(NerikResultCallback* callback) { m_callback = callback; }
    NerikResultCallback* getCallback() const { return m_callback; }
    Transmission* getCurrentTransmission() const { return m_currentTransmission; }
    NerikResultDataXml::NerikResultData* getResultData() const { return m_resultData.get(); }
    /// Running estimate of the document's UTF-8 XML size; derived models add to it.
    int& getEstimateDataSize() { return m_estimatedDataSize; }
    /// When the last major settings change happened; null when none is pending.
    QDateTime const& getSettingsChangeTime() const { return m_settingsChangeTime; }

    // --- Transmissions ------------------------------------------------------------------------

    /// A new transmission starting and stopping at time, appended and made current.
    Transmission* createTransmission(QDateTime const& time);
    /// The newest transmission starting at time, made current; null (current unchanged)
    /// when there is none.
    Transmission* getTransmission(QDateTime const& time);
    /// The start time of the transmission that data stamped time belong to. Without a
    /// pending settings change everything joins the current transmission. With one, data
    /// stamped in the minute before the change (1 to 60000 ms before it) still join it;
    /// other data close it and start a new transmission at time.
    QDateTime getTransmissionTime(QDateTime const& time);
    /// True when there is no current transmission or it starts at another time.
    bool isNewTransmission(Transmission const& transmission) const;
    /// Merges a whole transmission (infos, text blocks, PDU blocks) into the current one when
    /// it starts at the same time, else into a new one; true when a new one was made.
    bool addTransmission(Transmission const& transmission);
    /// Copies start and stop time and the top-level PDU blocks from index firstPduIndex on
    /// of the current transmission into out. Nothing for a negative index or no current
    /// transmission.
    void extractTransmission(Transmission& out, int firstPduIndex) const;
    /// Hands the current transmission to the caller (removed from the document, not
    /// closed, no callback); drops a pending settings change in any case.
    Transmission* takeCurrentTransmission();
    /// For the owner to call now and then: one second after a major settings change the
    /// current transmission is closed.
    void doIdleProcessing();
    /// Whether the document has grown past MaxDataSize bytes of UTF-8 XML. Counts exactly
    /// only once the estimate has passed the threshold.
    bool maxDataSizeExceeded();
    /// The UTF-8 XML text of a transmission; empty for null.
    static QByteArray getMessageData(Transmission const* transmission);
    /// The document's next block ID (each call a new one).
    int getNextID();

    // --- Text data blocks ---------------------------------------------------------------------

    /// Merges a text block into transmission: a new channel gets a normalised copy with a new
    /// ID; a block whose first position is not past the channel's first position is a resend
    /// and replaces the channel's block; otherwise its text, raw text and time stamps are
    /// appended. latest becomes the block's first time when that is later.
    void addDataBlock(Transmission* transmission, DataBlock const& block, QDateTime& latest);
    /// The newest block of channel in the newest transmission that starts at or before time
    /// (the last transmission for an invalid time).
    DataBlock* findDataBlock(int channel, QDateTime const& time) const;
    /// The newest block of channel in transmission, or null.
    static DataBlock* getDataBlock(Transmission* transmission, int channel);
    /// Makes the block's positions count from its first time stamp.
    void normalizeDataBlock(DataBlock* block);
    /// Applies (undo false) or reverts (undo true) an edit item on the block's content and
    /// moves the positions of time stamps and user data behind it; items that no longer fit
    /// the content are removed and destroyed (userData itself may be one of them).
    void computeChange(DataBlock* block, UserData* userData, bool undo);
    /// Puts user annotations into the document: on the user channel the typed text first
    /// (setUserChannel()), otherwise onto the channel's block. Items of the same type that
    /// overlap a new one are removed (edits reverted first); a new item with all three texts
    /// empty only deletes. False when the block to annotate does not exist.
    bool setUserData(DataBlock& block);
    /// Replaces the user data of the document's PDU block with block's ID; false when there
    /// is none.
    bool setUserData(PDUDataBlock& block);
    /// Whether the item's range and [start, end) overlap.
    static bool userDataInRange(UserData* userData, int start, int end);

    // --- PDU data blocks ----------------------------------------------------------------------

    /// Merges a PDU block into the top level of transmission: the block of the same ID is
    /// updated and pdu's children merged into it, else a copy is appended. latest becomes
    /// pdu's time stamp when that is later.
    void addPDUDataBlock(Transmission* transmission, PDUDataBlock const& pdu, QDateTime& latest);
    /// The same merge among parent's children.
    void addPDUDataBlock(PDUDataBlock* parent, PDUDataBlock const& pdu);
    /// The newest PDU block with id anywhere in the document (depth first), or null.
    PDUDataBlock* getPDUDataBlock(int id) const;
    static PDUDataBlock* getPDUDataBlock(Transmission* transmission, int id, bool recursive);
    static PDUDataBlock* getPDUDataBlock(PDUDataBlock* parent, int id, bool recursive);
    /// Takes source's payload when it holds something, and always its user data.
    void updatePDUDataBlock(PDUDataBlock* target, PDUDataBlock const& source);

    /// Adds a copy of info unless transmission has an info of the same time stamp.
    void addInfo(Transmission* transmission, Info const& info);
    /// Whether the transmission holds an info record of that time stamp.
    static bool hasInfoAt(Transmission const* transmission, QDateTime const& time);

    /// Reads an AIS station report: a PDU block whose name begins with "AIS" and that has a
    /// field "MMSI". Fills station's ID and time, its name from a later "Call Sign" field and
    /// its position from later fields of type "position" ("N 53°32'10.5'' E 9°58'0''").
    /// Returns the MMSI (0 when the field is no number), or -1 for any other block. Traced at
    /// the informational bit. The position texts are read by the library's internal
    /// aisposition.h.
    int scanAISData(PDUDataBlock const* pdu, JobSpec::Station& station);

private:
    DataBlock* setUserChannel(DataBlock& block);

    std::unique_ptr<NerikResultDataXml::NerikResultData> m_resultData;
    Transmission* m_currentTransmission = nullptr;
    QString m_alphabetsDirectory;
    QString m_demodulator;
    QString m_decoder;
    double m_frequency = 0.0;
    QBitArray m_channelSelection;
    int m_estimatedDataSize = 0;
    NerikResultCallback* m_callback = nullptr;
    QDateTime m_settingsChangeTime;
};

} // namespace zelkodatastreamconverter
