#include "binaryfile.h"

#include "clock.h"
#include "fileinfocallback.h"
#include "moduletrace.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLockFile>
#include <atomic>
#include <cerrno>
#include <reportkit/binary.h>
#include <reportkit/rgexception.h>
#include <unistd.h>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const& trace()
{
    static ModuleTrace const instance(QStringLiteral("binaryfile"));
    return instance;
}

QString const DefaultFileNamePattern = QStringLiteral("%1%2.txt");
QString const TimeTextFormat = QStringLiteral("yyyyMMdd_hhmmss");
QString const LockFilePattern = QStringLiteral("%1/zelkodatastreamlock.tmp");
constexpr int LockTimeoutMs = 1000;
// The plain name and the suffixes _0 to _98.
constexpr int MaximumNameCandidates = 100;
constexpr int MinimumMaxFileSize = 1000;

} // namespace

BinaryFile::BinaryFile(QString const& fileType, QString const& fileCode, int maximumSize,
                       FileInfoCallback* callback)
    : m_callback(callback), m_fileType(fileType), m_fileCode(fileCode),
      m_fileNamePattern(DefaultFileNamePattern), m_maximumSize(maximumSize)
{
}

BinaryFile::BinaryFile(BinaryFile const& other)
    : m_callback(other.m_callback), m_directory(other.m_directory), m_fileType(other.m_fileType),
      m_fileCode(other.m_fileCode), m_startTime(other.m_startTime), m_timeText(other.m_timeText),
      m_fileNamePattern(other.m_fileNamePattern), m_frequency(other.m_frequency),
      m_maximumSize(other.m_maximumSize)
{
}

BinaryFile& BinaryFile::operator=(BinaryFile const& other)
{
    if (this != &other) {
        // The file of this object is dropped like in the destructor: not completed.
        m_file.reset();
        m_currentSize = 0;
        m_callback = other.m_callback;
        m_directory = other.m_directory;
        m_fileType = other.m_fileType;
        m_fileCode = other.m_fileCode;
        m_startTime = other.m_startTime;
        m_timeText = other.m_timeText;
        m_fileNamePattern = other.m_fileNamePattern;
        m_frequency = other.m_frequency;
        m_maximumSize = other.m_maximumSize;
    }
    return *this;
}

BinaryFile::~BinaryFile() = default;

void BinaryFile::setFileName(QString const& pattern)
{
    m_fileNamePattern = pattern;
}

void BinaryFile::setDirectory(QString const& path)
{
    closeFile(false);
    m_directory.setPath(path);
}

void BinaryFile::setMaxFileSize(int size)
{
    m_maximumSize = qMax(size, MinimumMaxFileSize);
}

QFile* BinaryFile::getFile()
{
    if (m_file) {
        if (m_file->isOpen()) {
            return m_file.get();
        }
        if (openFile(m_file.get())) {
            return m_file.get();
        }
        trace().warning(QStringLiteral("getFile: cannot reopen %1").arg(m_file->fileName()),
                        __LINE__);
    }
    createFile();
    return m_file.get();
}

namespace {

// A name is taken by anything it already names, a symbolic link included: opening a dangling
// link would create its target, which may lie outside the output directory.
bool nameTaken(QString const& candidate)
{
    QFileInfo const info(candidate);
    return info.exists() || info.isSymLink();
}

} // namespace

void BinaryFile::createFile()
{
    // A previous file object (one that would not reopen) is replaced in any case, so that a
    // failed creation never leaves a closed file behind for the next write.
    m_file.reset();
    claimFreeName([this](QString const& candidate) {
        if (nameTaken(candidate)) {
            return NameClaim::Taken;
        }
        auto file = std::make_unique<QFile>(candidate);
        if (!openFile(file.get())) {
            trace().warning(QStringLiteral("createFile: cannot open %1").arg(candidate), __LINE__);
            return NameClaim::Failed;
        }
        m_file = std::move(file);
        return NameClaim::Claimed;
    });
}

bool BinaryFile::createFileFrom(QString const& stagedPath)
{
    m_file.reset();
    claimFreeName([this, &stagedPath](QString const& candidate) {
        if (nameTaken(candidate)) {
            return NameClaim::Taken;
        }
        // A hard link never replaces a file: a name another process took a moment ago
        // fails with EEXIST, and the next name is tried.
        if (::link(QFile::encodeName(stagedPath).constData(),
                   QFile::encodeName(candidate).constData()) != 0) {
            if (errno == EEXIST) {
                return NameClaim::Taken;
            }
            trace().warning(QStringLiteral("createFile: cannot open %1").arg(candidate), __LINE__);
            return NameClaim::Failed;
        }
        m_file = std::make_unique<QFile>(candidate);
        return NameClaim::Claimed;
    });
    return m_file != nullptr;
}

void BinaryFile::claimFreeName(std::function<NameClaim(QString const&)> const& claim)
{
    m_startTime = Clock::currentDateTime();
    m_timeText = m_startTime.toString(TimeTextFormat);

    QString const lockPath = LockFilePattern.arg(QDir::tempPath());
    QLockFile lock(lockPath);
    if (!lock.tryLock(LockTimeoutMs)) {
        trace().warning(QStringLiteral("createFile: cannot etablish lock %1").arg(lockPath),
                        __LINE__);
    }

    QString candidate;
    NameClaim result = NameClaim::Taken;
    for (int counter = -1; result == NameClaim::Taken && counter < MaximumNameCandidates - 1;
         ++counter) {
        QString const suffix = counter < 0 ? QString() : QStringLiteral("_%1").arg(counter);
        candidate = m_directory.absoluteFilePath(m_fileNamePattern.arg(m_timeText, suffix));
        result = claim(candidate);
    }
    lock.unlock();

    if (result == NameClaim::Claimed) {
        sendFileInfo(false);
    } else {
        trace().warning(QStringLiteral("createFile: cannot create %1").arg(candidate), __LINE__);
    }
}

bool BinaryFile::openFile(QFile* file)
{
    return file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
}

void BinaryFile::saveToFile(QByteArray const& data)
{
    QFile* const file = getFile();
    if (file == nullptr) {
        return;
    }
    qint64 const written = file->write(data);
    if (written != data.size()) {
        trace().warning(QStringLiteral("saveToFile: cannot write %1: %2")
                            .arg(file->fileName(), file->errorString()),
                        __LINE__);
    }
    addFileSize(data.size());
}

void BinaryFile::addFileSize(int count)
{
    qint64 const size = qint64(m_currentSize) + count;
    if (size > m_maximumSize) {
        closeFile(false);
        return;
    }
    m_currentSize = static_cast<qint32>(size);
}

void BinaryFile::closeFile(bool keepForReopen)
{
    if (!m_file) {
        return;
    }
    if (m_file->isOpen()) {
        m_file->close();
    }
    if (!keepForReopen) {
        sendFileInfo(true);
        m_file.reset();
    }
    m_currentSize = 0;
}

QString BinaryFile::stagedFilePath(QDir const& directory)
{
    static std::atomic<unsigned> counter{0};
    return directory.absoluteFilePath(QStringLiteral(".zelko-%1-%2.part")
                                          .arg(QCoreApplication::applicationPid())
                                          .arg(counter.fetch_add(1)));
}

bool BinaryFile::flushToDisk(QFile& file)
{
    return file.flush() && ::fdatasync(file.handle()) == 0;
}

void BinaryFile::fillRecord(REPORTKIT::FileRecord& record, bool complete) const
{
    record.SetValidate(false);
    record.SetURL(m_file ? m_file->fileName() : QString());
    record.GetMetadata().SetStartTime(m_startTime);
    record.GetMetadata().SetStopTime(complete ? Clock::currentDateTime() : QDateTime());
    record.GetMetadata().GetDetail().GetFrequency().SetValue(m_frequency);
    record.GetMetadata().GetDetail().SetCode(m_fileCode);
}

bool BinaryFile::deliverRecord(REPORTKIT::FileRecord& record, bool complete,
                               ModuleTrace const& moduleTrace, bool announce) const
{
    try {
        fillRecord(record, complete);
        if (announce) {
            trace().info(QStringLiteral("BinaryFile::sendFileInfo(complete = %1): %2")
                             .arg(complete ? 1 : 0)
                             .arg(record.GetURL()),
                         __LINE__);
        }
        if (m_callback != nullptr) {
            m_callback->fileInfo(record);
        }
        return true;
    } catch (REPORTKIT::RGException const& exception) {
        moduleTrace.warning(QStringLiteral("sendFileInfo: ") + exception.GetMessage(), __LINE__);
    } catch (...) {
        moduleTrace.warning(QStringLiteral("sendFileInfo: unknown exception"), __LINE__);
    }
    return false;
}

void BinaryFile::sendFileInfo(bool complete)
{
    REPORTKIT::Binary record;
    record.SetType(m_fileType);
    deliverRecord(record, complete, trace(), true);
}

QString BinaryFile::getFrequencyString(double hertz)
{
    double const kilohertz = hertz / 1000.0;
    QString text;
    if (kilohertz > 1000.0) {
        text = QString::number(kilohertz / 1000.0, 'f', 3) + QStringLiteral("MHz");
    } else {
        text = QString::number(kilohertz, 'f', 3) + QStringLiteral("KHz");
    }
    return text.replace(QLatin1Char('.'), QLatin1Char('_'));
}

} // namespace zelkodatastreamconverter
