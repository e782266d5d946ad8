#pragma once

#include <QDateTime>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>

namespace zelkodatastreamconverter {

/// The delays, in seconds, that the recorder and its station files give their changes
/// (XmlFile::setPendingChanges). Writing the whole document costs time, so changes wait:
/// a new transmission is written soon, a stream of new data at most every half minute. A
/// file that does not exist yet is due at once (any negative delay would do), so that it
/// appears in the results without waiting.
struct PendingChangeDelay
{
    static constexpr int NewTransmission = 10;
    static constexpr int NewData = 30;
    static constexpr int NoFileYet = -60;
};

/// The result-document file of one channel, named "NerikResultData_<yyyyMMdd_hhmmss><suffix>.xml".
///
/// The owner writes the whole document into getFile() each time and never counts its size:
/// the limit is 0, so counting would complete the file at once and result files are never
/// split. Each open truncates, so every write replaces the file.
///
/// Pending changes: the first change after a write fixes the due time; later changes neither
/// postpone nor advance it, so a stream of small changes cannot hold the file back for ever.
/// The owner polls hasExpiredPendingChanges(now), writes, then calls resetPendingChanges().
///
/// writeDocument() is the safe way to write: the document goes to a staged file beside the
/// result file and then takes its place in one step, so that at every moment (a crash, a kill,
/// a full disk included) the file holds either the previous complete document or the new one,
/// and a new file's name appears only with its whole first document. A process killed while
/// writing leaves its staged file, ".zelko-<pid>-<n>.part", behind; result files never end in
/// ".part". Where the directory takes no staged file, the document is written in place
/// through getFile() instead.
///
/// Reports REPORTKIT::Text records (no type; the channel when one is set).
///
/// Messages (module "xmlfile", warning bit):
///   "writeDocument: cannot replace %1: %2"   the staged document could not take the file's place
class XmlFile : public BinaryFile
{
public:
    explicit XmlFile(FileInfoCallback* callback);
    /// Copies settings, channel and pending state; the copy has no file.
    XmlFile(XmlFile const& other) = default;
    XmlFile& operator=(XmlFile const& other) = default;
    ~XmlFile() override;

    /// Writes a whole document through write(file) into a staged file, then puts it in place
    /// of the result file (creating the result file on the first write, named and reported as
    /// getFile() would). Leaves the file closed for the next write, like closeFile(true).
    /// False when write() fails or the document could not be put in place; the result file
    /// then keeps its previous content.
    bool writeDocument(std::function<bool(QFile&)> const& write);

    void setChannel(int channel);
    int getChannel() const { return m_channel; }
    bool isChannelSet() const { return m_channelSet; }

    /// Marks changes pending, due delaySeconds from now (negative: due at once). No effect
    /// while changes are already pending.
    void setPendingChanges(int delaySeconds);
    /// The same with an explicit due time.
    void setPendingChanges(QDateTime const& due);
    bool hasPendingChanges() const { return m_pendingChanges; }
    /// True when changes are pending and now is not earlier than the due time.
    bool hasExpiredPendingChanges(QDateTime const& now) const;
    /// Clears the flag after a write; the due time stays until the next setPendingChanges().
    void resetPendingChanges() { m_pendingChanges = false; }
    QDateTime const& getDueTime() const { return m_dueTime; }

protected:
    /// Opens write-only, truncating, in text mode.
    bool openFile(QFile* file) override;
    void sendFileInfo(bool complete) override;

private:
    QDateTime m_dueTime;
    bool m_pendingChanges = false;
    bool m_channelSet = false;
    qint32 m_channel = 0;
};

} // namespace zelkodatastreamconverter
