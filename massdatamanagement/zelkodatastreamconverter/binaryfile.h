#pragma once

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QString>
#include <functional>
#include <memory>

namespace REPORTKIT {
class FileRecord;
}

namespace zelkodatastreamconverter {

class FileInfoCallback;
class ModuleTrace;

/// Base of every file the library produces.
///
/// Owns one output file at a time in an output directory. The file is created on the first
/// getFile()/saveToFile() and named from the time of its creation: the pattern's %1 receives
/// the local start time as "yyyyMMdd_hhmmss", %2 a uniqueness suffix ("" or "_0" ... "_98").
/// The check for a free name and the creation of the file happen under the inter-process lock
/// file "zelkodatastreamlock.tmp" in the system temporary directory, so processes writing to
/// one directory in the same second never pick the same name.
///
/// When the bytes counted for the current file pass the maximum size, the file is completed
/// and the next write starts a new one; a single write is never cut.
///
/// The callback is told about every file twice: when it opens (null stop time) and when it is
/// completed by closeFile(false) or setDirectory(). The destructor neither completes nor
/// reports; the owner calls closeFile(false) first if the file is to appear completed.
///
/// A copy takes over the settings (directory, type, code, pattern, frequency, limit,
/// callback) but no file: two objects never share one file handle.
///
/// Messages (module "binaryfile", warning bit unless noted):
///   "createFile: cannot etablish lock %1"   lock not taken within 1000 ms; created anyway
///   "createFile: cannot open %1"            the chosen file will not open
///   "createFile: cannot create %1"          no file (open failed or all 100 names taken)
///   "getFile: cannot reopen %1"             a file kept for reopening will not open again
///   "saveToFile: cannot write %1: %2"       the file refused (part of) a write, e.g. disk full
///   "sendFileInfo: <message>" / "sendFileInfo: unknown exception"   record not sent
///   "BinaryFile::sendFileInfo(complete = %1): %2"   every record sent (informational bit)
class BinaryFile
{
public:
    BinaryFile(QString const& fileType, QString const& fileCode, int maximumSize,
               FileInfoCallback* callback);
    BinaryFile(BinaryFile const& other);
    BinaryFile& operator=(BinaryFile const& other);
    virtual ~BinaryFile();

    /// Replaces the file-name pattern (default "%1%2.txt"); used for the next file created.
    virtual void setFileName(QString const& pattern);
    /// Closes the current file, if any. With keepForReopen the file object stays and the next
    /// getFile() reopens it, truncating it; otherwise the file is completed, reported and
    /// forgotten. Resets the counted size in both cases.
    virtual void closeFile(bool keepForReopen);

    /// Completes the current file (closeFile(false)), then sets the output directory.
    void setDirectory(QString const& path);
    void setFileCode(QString const& code) { m_fileCode = code; }
    void setFileType(QString const& type) { m_fileType = type; }
    void setFrequency(double hertz) { m_frequency = hertz; }
    /// The split limit in bytes, never below 1000 (the constructor takes any value as given).
    void setMaxFileSize(int size);

    QDir& getDirectory() { return m_directory; }
    QString const& getFileCode() const { return m_fileCode; }
    QString const& getFileType() const { return m_fileType; }
    QString const& getFileName() const { return m_fileNamePattern; }
    double getFrequency() const { return m_frequency; }
    int getMaxFileSize() const { return m_maximumSize; }
    int getCurrentSize() const { return m_currentSize; }
    QDateTime const& getStartTime() const { return m_startTime; }
    /// The file object as it is (open, closed for reopening) or null.
    QFile* getOpenFile() const { return m_file.get(); }
    /// True while a file object exists, open or not.
    bool isOpen() const { return m_file != nullptr; }

    /// The file to write to: the open file, the kept file reopened, or a newly created one.
    /// Null when none could be created.
    QFile* getFile();
    /// Writes data to the file and counts it; dropped when no file can be had.
    void saveToFile(QByteArray const& data);
    /// Counts bytes that a subclass wrote itself, splitting like saveToFile().
    void addFileSize(int count);

    /// Frequency text for names and texts: "10_000MHz" above 1 MHz, else "1000_000KHz".
    static QString getFrequencyString(double hertz);

protected:
    virtual void createFile();
    /// Creates the next file as createFile() does, but by giving the complete staged file
    /// (in the same directory) the chosen name, so that the name never shows a partial file.
    /// The staged name stays; the caller removes it. False when no file could be created.
    bool createFileFrom(QString const& stagedPath);
    /// Opens write-only, truncating, unbuffered.
    virtual bool openFile(QFile* file);
    /// A hidden name in directory for a file staged before createFileFrom() or a rename,
    /// unique per process and call so that concurrent writers never share one:
    /// ".zelko-<pid>-<n>.part".
    static QString stagedFilePath(QDir const& directory);
    /// Flushes and syncs the file's data: before a rename makes it a result, the data must be
    /// on the disk, or after a power failure the name would point at an empty file.
    static bool flushToDisk(QFile& file);
    /// Sends the REPORTKIT::Binary record of the current file to the callback.
    virtual void sendFileInfo(bool complete);

    /// Fills the fields every produced-file record shares: validation off, URL, start time,
    /// stop time (now when complete, else null), detail frequency and code.
    virtual void fillRecord(REPORTKIT::FileRecord& record, bool complete) const;
    /// Fills record, hands it to the callback and traces what the report library throws
    /// ("sendFileInfo: ..." through moduleTrace). announce adds the informational trace of the
    /// record. Returns whether the record was delivered.
    bool deliverRecord(REPORTKIT::FileRecord& record, bool complete, ModuleTrace const& moduleTrace,
                       bool announce = false) const;
    FileInfoCallback* getCallback() const { return m_callback; }

private:
    enum class NameClaim
    {
        Claimed, ///< the name is this object's file now
        Taken,   ///< the name exists: try the next one
        Failed   ///< the file system refused: give up
    };
    /// Sets the start time, then, under the inter-process lock, offers the plain name and the
    /// suffixed ones to claim() until one is claimed or claim() fails; reports the new file.
    void claimFreeName(std::function<NameClaim(QString const&)> const& claim);

    FileInfoCallback* m_callback;
    QDir m_directory;
    QString m_fileType;
    QString m_fileCode;
    QDateTime m_startTime;
    QString m_timeText;
    QString m_fileNamePattern;
    double m_frequency = 0.0;
    std::unique_ptr<QFile> m_file;
    qint32 m_currentSize = 0;
    qint32 m_maximumSize;
};

} // namespace zelkodatastreamconverter
