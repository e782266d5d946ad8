// Output files: naming under the inter-process lock, size split, reopen, records, file-system
// faults, and unique names chosen by several processes at once.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSet>
#include <QTemporaryDir>
#include <QThread>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <massdatamanagement/zelkodatastreamconverter/textfile.h>
#include <massdatamanagement/zelkodatastreamconverter/xmlfile.h>
#include <memory>
#include <reportkit/rgexception.h>
#include <support/tracecapture.h>
#include <sys/mount.h>
#include <unistd.h>

// Readable failure output for Qt strings.
inline std::ostream& operator<<(std::ostream& os, QString const& text)
{
    return os << text.toStdString();
}
inline void PrintTo(QString const& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

using namespace zelkodatastreamconverter;

namespace {

QDateTime const LastSecondOfJanuary(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::LocalTime);

/// Keeps every record in the order it arrived.
struct RecordLog : FileInfoCallback
{
    struct Entry
    {
        QString kind;
        QString url;
        QString type;
        QString code;
        double frequency;
        QDateTime start;
        QDateTime stop;
        bool channelSet;
        int channel;
    };
    std::vector<Entry> entries;

    void fileInfo(REPORTKIT::IRGObject const& object) override
    {
        auto const* record = dynamic_cast<REPORTKIT::FileRecord const*>(&object);
        ASSERT_NE(record, nullptr);
        auto const& detail = record->GetMetadata().GetDetail();
        entries.push_back(
            {record->ElementName(), record->GetURL(), record->GetType(), detail.GetCode(),
             detail.GetFrequency().GetValue(), record->GetMetadata().GetStartTime(),
             record->GetMetadata().GetStopTime(), detail.IsChannelSet(), detail.GetChannel()});
    }
};

/// Throws from fileInfo, like a validating host would.
struct ThrowingCallback : FileInfoCallback
{
    bool reportKitException = true;
    void fileInfo(REPORTKIT::IRGObject const&) override
    {
        if (reportKitException) {
            throw REPORTKIT::RGException(QStringLiteral("Binary: bad metadata"));
        }
        throw 42;
    }
};

QByteArray readAll(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

QStringList fileNames(QString const& directory)
{
    return QDir(directory).entryList(QDir::Files, QDir::Name);
}

/// Points QDir::tempPath() (and with it the lock file) elsewhere for the lifetime of the object.
class TemporaryDirectoryOverride
{
public:
    explicit TemporaryDirectoryOverride(QString const& path) : m_previous(qgetenv("TMPDIR"))
    {
        m_hadPrevious = qEnvironmentVariableIsSet("TMPDIR");
        qputenv("TMPDIR", path.toLocal8Bit());
    }
    ~TemporaryDirectoryOverride()
    {
        if (m_hadPrevious) {
            qputenv("TMPDIR", m_previous);
        } else {
            qunsetenv("TMPDIR");
        }
    }

private:
    QByteArray m_previous;
    bool m_hadPrevious = false;
};

// ---------------------------------------------------------------------------------------------
// Names

struct NamingCase
{
    char const* name;
    std::function<std::unique_ptr<BinaryFile>(FileInfoCallback*)> make;
    QStringList expected;
};

TEST(OutputFileNaming, FilesOfOneSecondGetCountedSuffixes)
{
    NamingCase const cases[] = {
        {"default pattern",
         [](FileInfoCallback* cb) {
             return std::make_unique<BinaryFile>(QStringLiteral("Data"), QStringLiteral("BIN"),
                                                 1000, cb);
         },
         {"20240131_235959.txt", "20240131_235959_0.txt", "20240131_235959_1.txt",
          "20240201_000000.txt"}},
        {"text file",
         [](FileInfoCallback* cb) {
             return std::make_unique<TextFile>(QStringLiteral("TXT"), 1000, cb);
         },
         {"20240131_235959.txt", "20240131_235959_0.txt", "20240131_235959_1.txt",
          "20240201_000000.txt"}},
        {"result file",
         [](FileInfoCallback* cb) { return std::make_unique<XmlFile>(cb); },
         {"NerikResultData_20240131_235959.xml", "NerikResultData_20240131_235959_0.xml",
          "NerikResultData_20240131_235959_1.xml", "NerikResultData_20240201_000000.xml"}},
    };
    for (NamingCase const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        Clock::Override const clock(LastSecondOfJanuary);
        RecordLog log;
        std::unique_ptr<BinaryFile> file = c.make(&log);
        file->setDirectory(dir.path());
        QStringList made;
        for (int i = 0; i < 4; ++i) {
            if (i == 3) {
                Clock::advance(1000); // the next second needs no suffix
            }
            QFile* const opened = file->getFile();
            ASSERT_NE(opened, nullptr);
            made << QFileInfo(opened->fileName()).fileName();
            EXPECT_EQ(opened->fileName(), dir.filePath(made.last()));
            file->closeFile(false);
        }
        EXPECT_EQ(made, c.expected);
        EXPECT_EQ(fileNames(dir.path()).size(), 4);
    }
}

struct TakenCase
{
    char const* name;
    int taken;
    QString expectedName; // empty: no file
};

TEST(OutputFileNaming, HundredNamesAreTriedThenCreationGivesUp)
{
    TakenCase const cases[] = {
        {"none taken", 0, QStringLiteral("20240131_235959.txt")},
        {"plain name taken", 1, QStringLiteral("20240131_235959_0.txt")},
        {"99 taken leaves the last suffix", 99, QStringLiteral("20240131_235959_98.txt")},
        {"all 100 taken", 100, QString()},
    };
    for (TakenCase const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        for (int i = 0; i < c.taken; ++i) {
            QString const name = i == 0 ? QStringLiteral("20240131_235959.txt")
                                        : QStringLiteral("20240131_235959_%1.txt").arg(i - 1);
            QFile taken(dir.filePath(name));
            ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
            taken.write("taken");
        }
        Clock::Override const clock(LastSecondOfJanuary);
        zelkotest::TraceCapture capture(0x60);
        FileInfoList list;
        BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1000, &list);
        file.setDirectory(dir.path());
        file.saveToFile("payload");
        file.closeFile(false);
        if (c.expectedName.isEmpty()) {
            EXPECT_EQ(
                capture.messages(),
                QStringList{QStringLiteral("createFile: cannot create %1")
                                .arg(dir.filePath(QStringLiteral("20240131_235959_98.txt")))});
            EXPECT_TRUE(list.getResults().IsEmpty());
            EXPECT_EQ(readAll(dir.filePath(QStringLiteral("20240131_235959_98.txt"))), "taken");
            EXPECT_FALSE(file.isOpen());
        } else {
            EXPECT_EQ(capture.count(QStringLiteral("createFile: cannot create %1")
                                        .arg(dir.filePath(c.expectedName))),
                      0);
            EXPECT_EQ(readAll(dir.filePath(c.expectedName)), "payload");
            ASSERT_EQ(list.getResults().GetBinary().size(), 1u);
            EXPECT_EQ(list.getResults().GetBinary()[0].GetURL(), dir.filePath(c.expectedName));
        }
        EXPECT_EQ(fileNames(dir.path()).size(), c.expectedName.isEmpty() ? c.taken : c.taken + 1);
    }
}

struct FrequencyCase
{
    double hertz;
    char const* text;
};

TEST(OutputFileNaming, FrequencyText)
{
    FrequencyCase const cases[] = {
        {10000000.0, "10_000MHz"}, {1000000.0, "1000_000KHz"}, {1000001.0, "1_000MHz"},
        {12500.0, "12_500KHz"},    {0.0, "0_000KHz"},          {999.0, "0_999KHz"},
        {2182000.5, "2_182MHz"},   {-5000.0, "-5_000KHz"},     {1234567890.0, "1234_568MHz"},
    };
    for (FrequencyCase const& c : cases) {
        EXPECT_EQ(BinaryFile::getFrequencyString(c.hertz), QString::fromLatin1(c.text)) << c.hertz;
    }
}

// ---------------------------------------------------------------------------------------------
// Size limit

struct SplitCase
{
    char const* name;
    int maximum;
    bool countedByCaller; // write into getFile() and count with addFileSize()
    std::vector<int> writes;
    std::vector<int> completedSizes;
    int openSize; // -1: no file open at the end
};

TEST(OutputFileSplit, FileIsCompletedAfterTheWriteThatPassesTheLimit)
{
    SplitCase const cases[] = {
        {"600-byte writes over 1000", 1000, false, {600, 600, 600}, {1200}, 600},
        {"exactly the limit stays open", 1000, false, {1000}, {}, 1000},
        {"one past the limit completes", 1000, false, {1001}, {1001}, -1},
        {"limit then one byte", 1000, false, {1000, 1}, {1001}, -1},
        {"zero limit completes every write", 0, false, {1, 1}, {1, 1}, -1},
        {"empty write at zero limit keeps open", 0, false, {0}, {}, 0},
        {"counted by the caller", 1000, true, {600, 600, 600}, {1200}, 600},
        {"counted by the caller, one past", 1000, true, {1000, 1}, {1001}, -1},
    };
    for (SplitCase const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        Clock::Override const clock(LastSecondOfJanuary);
        RecordLog log;
        BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), c.maximum, &log);
        file.setDirectory(dir.path());
        char fill = 'a';
        for (int size : c.writes) {
            QByteArray const data(size, fill++);
            if (c.countedByCaller) {
                QFile* const target = file.getFile();
                ASSERT_NE(target, nullptr);
                target->write(data);
                file.addFileSize(size);
            } else {
                file.saveToFile(data);
            }
        }
        std::vector<int> completed;
        QStringList completedUrls;
        for (auto const& entry : log.entries) {
            if (entry.stop.isValid()) {
                completed.push_back(int(QFileInfo(entry.url).size()));
                completedUrls << entry.url;
            }
        }
        EXPECT_EQ(completed, c.completedSizes);
        if (c.openSize < 0) {
            EXPECT_FALSE(file.isOpen());
        } else {
            ASSERT_TRUE(file.isOpen());
            EXPECT_EQ(file.getCurrentSize(), c.openSize);
            EXPECT_EQ(QFileInfo(file.getOpenFile()->fileName()).size(), c.openSize);
            EXPECT_FALSE(completedUrls.contains(file.getOpenFile()->fileName()));
        }
        // Every file on disk was announced when it opened.
        QSet<QString> announced;
        for (auto const& entry : log.entries) {
            if (!entry.stop.isValid()) {
                announced.insert(entry.url);
            }
        }
        EXPECT_EQ(announced.size(), fileNames(dir.path()).size());
        if (c.completedSizes.size() == 1 && c.completedSizes[0] == 1200) {
            // The split never cuts a write: the first file holds the first two writes whole.
            EXPECT_EQ(readAll(completedUrls[0]), QByteArray(600, 'a') + QByteArray(600, 'b'));
        }
    }
}

TEST(OutputFileSplit, OnlyTheSetterClampsTheLimit)
{
    struct
    {
        int given;
        int stored;
    } const cases[] = {{10, 1000},   {-5, 1000},   {999, 1000},
                       {1000, 1000}, {1001, 1001}, {0x7fffffff, 0x7fffffff}};
    for (auto const& c : cases) {
        BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 5, nullptr);
        file.setMaxFileSize(c.given);
        EXPECT_EQ(file.getMaxFileSize(), c.stored) << c.given;
        BinaryFile constructed(QStringLiteral("Data"), QStringLiteral("BIN"), c.given, nullptr);
        EXPECT_EQ(constructed.getMaxFileSize(), c.given);
    }
    EXPECT_EQ(XmlFile(nullptr).getMaxFileSize(), 0);
}

// ---------------------------------------------------------------------------------------------
// Records

TEST(OutputFileRecords, OpenAndCompletedRecordsOfEachKind)
{
    struct Case
    {
        char const* name;
        std::function<std::unique_ptr<BinaryFile>(FileInfoCallback*)> make;
        QString kind;
        QString type;
        QString code;
        bool informational;
        bool channelSet;
        int channel;
    } const cases[] = {
        {"binary file",
         [](FileInfoCallback* cb) {
             return std::make_unique<BinaryFile>(QStringLiteral("AudioData"), QStringLiteral("WAV"),
                                                 1 << 20, cb);
         },
         "Binary", "AudioData", "WAV", true, false, 0},
        {"text file",
         [](FileInfoCallback* cb) {
             return std::make_unique<TextFile>(QStringLiteral("SYM"), 1 << 20, cb);
         },
         "Binary", "Text", "SYM", false, false, 0},
        {"result file without channel",
         [](FileInfoCallback* cb) { return std::make_unique<XmlFile>(cb); }, "Text", "",
         "DecodedText", false, false, 0},
        {"result file on channel 0",
         [](FileInfoCallback* cb) {
             auto file = std::make_unique<XmlFile>(cb);
             file->setChannel(0);
             return file;
         },
         "Text", "", "DecodedText", false, true, 0},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        Clock::Override const clock(LastSecondOfJanuary);
        zelkotest::TraceCapture capture(0x60);
        RecordLog log;
        FileInfoList list;
        {
            std::unique_ptr<BinaryFile> file = c.make(&log);
            file->setDirectory(dir.path());
            file->closeFile(false); // nothing open: no record
            EXPECT_TRUE(log.entries.empty());
            file->setFrequency(10000000.0);
            ASSERT_NE(file->getFile(), nullptr);
            Clock::advance(5000);
            file->setDirectory(dir.path()); // completes the file
            EXPECT_FALSE(file->isOpen());
        }
        ASSERT_EQ(log.entries.size(), 2u);
        for (auto const& entry : log.entries) {
            EXPECT_EQ(entry.kind, c.kind);
            EXPECT_EQ(entry.type, c.type);
            EXPECT_EQ(entry.code, c.code);
            EXPECT_EQ(entry.frequency, 10000000.0);
            EXPECT_EQ(entry.start, LastSecondOfJanuary);
            EXPECT_EQ(entry.channelSet, c.channelSet);
            EXPECT_EQ(entry.channel, c.channel);
            EXPECT_EQ(entry.url, log.entries[0].url);
            EXPECT_TRUE(QFileInfo(entry.url).isAbsolute());
        }
        EXPECT_FALSE(log.entries[0].stop.isValid());
        EXPECT_EQ(log.entries[1].stop, LastSecondOfJanuary.addSecs(5));

        QStringList const expectedTraces =
            c.informational
                ? QStringList{QStringLiteral("BinaryFile::sendFileInfo(complete = 0): ") +
                                  log.entries[0].url,
                              QStringLiteral("BinaryFile::sendFileInfo(complete = 1): ") +
                                  log.entries[0].url}
                : QStringList();
        EXPECT_EQ(capture.messages(), expectedTraces);
        if (c.informational) {
            EXPECT_EQ(capture.lines()[0].sourceFile,
                      QStringLiteral("massdatamanagement/zelkodatastreamconverter/binaryfile"));
        }
    }
}

TEST(OutputFileRecords, ExceptionsOfTheCallbackAreTracedPerModule)
{
    struct Case
    {
        char const* name;
        std::function<std::unique_ptr<BinaryFile>(FileInfoCallback*)> make;
        char const* module;
    } const cases[] = {
        {"binary file",
         [](FileInfoCallback* cb) {
             return std::make_unique<BinaryFile>(QStringLiteral("Data"), QStringLiteral("BIN"),
                                                 1000, cb);
         },
         "binaryfile"},
        {"text file",
         [](FileInfoCallback* cb) {
             return std::make_unique<TextFile>(QStringLiteral("TXT"), 1000, cb);
         },
         "textfile"},
        {"result file", [](FileInfoCallback* cb) { return std::make_unique<XmlFile>(cb); },
         "xmlfile"},
    };
    for (auto const& c : cases) {
        for (bool reportKit : {true, false}) {
            SCOPED_TRACE(std::string(c.name) + (reportKit ? " RGException" : " other"));
            QTemporaryDir dir;
            ThrowingCallback callback;
            callback.reportKitException = reportKit;
            zelkotest::TraceCapture capture(0x20);
            std::unique_ptr<BinaryFile> file = c.make(&callback);
            file->setDirectory(dir.path());
            QFile* const opened = file->getFile();
            ASSERT_NE(opened, nullptr); // the file does not suffer from a failed report
            EXPECT_TRUE(opened->isOpen());
            file->closeFile(false);
            QString const expected = reportKit
                                         ? QStringLiteral("sendFileInfo: Binary: bad metadata")
                                         : QStringLiteral("sendFileInfo: unknown exception");
            EXPECT_EQ(capture.messages(), (QStringList{expected, expected}));
            for (auto const& line : capture.lines()) {
                EXPECT_EQ(line.sourceFile,
                          QStringLiteral("massdatamanagement/zelkodatastreamconverter/") +
                              QLatin1String(c.module));
            }
            EXPECT_EQ(fileNames(dir.path()).size(), 1);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Reopen

TEST(OutputFileReopen, KeptFileStartsOverEmpty)
{
    struct Case
    {
        char const* name;
        bool textStream;
    } const cases[] = {{"binary file", false}, {"text file", true}};
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        Clock::Override const clock(LastSecondOfJanuary);
        RecordLog log;
        TextFile file(QStringLiteral("TXT"), 1 << 20, &log);
        file.setDirectory(dir.path());
        auto write = [&](QByteArray const& text) {
            if (c.textStream) {
                QTextStream* const stream = file.getTextStream();
                ASSERT_NE(stream, nullptr);
                *stream << text;
            } else {
                file.saveToFile(text);
            }
        };
        write("first\n");
        QString const path = file.getOpenFile()->fileName();
        file.closeFile(true);
        EXPECT_TRUE(file.isOpen());
        EXPECT_FALSE(file.getOpenFile()->isOpen());
        EXPECT_EQ(readAll(path), "first\n"); // the stream was flushed on close
        EXPECT_EQ(file.getCurrentSize(), 0);
        write("second\n");
        EXPECT_EQ(file.getOpenFile()->fileName(), path);
        file.closeFile(false);
        EXPECT_EQ(readAll(path), "second\n");
        ASSERT_EQ(log.entries.size(), 2u); // reopening sends no record
        EXPECT_EQ(fileNames(dir.path()).size(), 1);
    }
}

TEST(OutputFileReopen, FileThatWillNotReopenIsReplacedByANewOne)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    zelkotest::TraceCapture capture(0x20);
    FileInfoList list;
    BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1 << 20, &list);
    file.setDirectory(dir.path());
    file.saveToFile("first");
    QString const path = file.getOpenFile()->fileName();
    file.closeFile(true);
    // Something else takes the name: a directory cannot be opened for writing.
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir().mkdir(path));
    file.saveToFile("second");
    ASSERT_TRUE(file.isOpen());
    QString const replacement = dir.filePath(QStringLiteral("20240131_235959_0.txt"));
    EXPECT_EQ(file.getOpenFile()->fileName(), replacement);
    EXPECT_EQ(capture.messages(),
              QStringList{QStringLiteral("getFile: cannot reopen %1").arg(path)});
    file.closeFile(false);
    EXPECT_EQ(readAll(replacement), "second");
}

// ---------------------------------------------------------------------------------------------
// Pending changes of result files

TEST(XmlFilePendingChanges, FirstChangeFixesTheDueTime)
{
    enum Op
    {
        Set,
        SetAt,
        Reset,
        Poll
    };
    struct Step
    {
        int second; // clock offset from 12:00:00
        Op op;
        int value; // delay, due offset, or expected poll result
    };
    struct Case
    {
        char const* name;
        std::vector<Step> steps;
    } const cases[] = {
        {"later change neither postpones nor advances",
         {{0, Set, 30}, {5, Set, 10}, {29, Poll, 0}, {30, Poll, 1}, {31, Poll, 1}}},
        {"negative delay when idle is due at once", {{0, Set, -60}, {0, Poll, 1}}},
        {"negative delay while pending changes nothing",
         {{0, Set, 30}, {1, Set, -60}, {1, Poll, 0}, {29, Poll, 0}, {30, Poll, 1}}},
        {"zero delay is due at once", {{0, Set, 0}, {0, Poll, 1}}},
        {"reset ends the pending state",
         {{0, Set, 10},
          {10, Poll, 1},
          {10, Reset, 0},
          {11, Poll, 0},
          {12, Set, 5},
          {16, Poll, 0},
          {17, Poll, 1}}},
        {"explicit due time, first call wins",
         {{0, SetAt, 20}, {1, SetAt, 2}, {1, Set, -60}, {19, Poll, 0}, {20, Poll, 1}}},
        {"nothing pending never expires", {{0, Poll, 0}, {100000, Poll, 0}}},
    };
    QDateTime const noon(QDate(2024, 1, 31), QTime(12, 0, 0), Qt::UTC);
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        XmlFile file(nullptr);
        for (Step const& step : c.steps) {
            Clock::Override const clock(noon.addSecs(step.second));
            switch (step.op) {
            case Set:
                file.setPendingChanges(step.value);
                EXPECT_TRUE(file.hasPendingChanges());
                break;
            case SetAt:
                file.setPendingChanges(noon.addSecs(step.value));
                break;
            case Reset:
                file.resetPendingChanges();
                EXPECT_FALSE(file.hasPendingChanges());
                break;
            case Poll:
                EXPECT_EQ(file.hasExpiredPendingChanges(noon.addSecs(step.second)), step.value != 0)
                    << "at second " << step.second;
                // A millisecond before the due time is still early.
                if (step.value != 0 && file.getDueTime() == noon.addSecs(step.second)) {
                    EXPECT_FALSE(
                        file.hasExpiredPendingChanges(noon.addSecs(step.second).addMSecs(-1)));
                }
                break;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------
// File-system faults

TEST(OutputFileFaults, UnwritableDirectoryDropsWritesUntilAUsableOneIsSet)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    // A path below a regular file cannot hold files, not even for root.
    QString const plainFile = dir.filePath(QStringLiteral("plain"));
    {
        QFile file(plainFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QString const unusable = plainFile + QStringLiteral("/out");
    zelkotest::TraceCapture capture(0x20);
    FileInfoList list;
    BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1000, &list);
    file.setDirectory(unusable);
    file.saveToFile("lost");
    file.saveToFile("lost again");
    EXPECT_FALSE(file.isOpen());
    QString const candidate = unusable + QStringLiteral("/20240131_235959.txt");
    QStringList const oneAttempt{QStringLiteral("createFile: cannot open %1").arg(candidate),
                                 QStringLiteral("createFile: cannot create %1").arg(candidate)};
    EXPECT_EQ(capture.messages(), oneAttempt + oneAttempt);
    EXPECT_TRUE(list.getResults().IsEmpty());

    file.setDirectory(dir.path());
    file.saveToFile("kept");
    file.closeFile(false);
    ASSERT_EQ(list.getResults().GetBinary().size(), 1u);
    EXPECT_EQ(readAll(list.getResults().GetBinary()[0].GetURL()), "kept");
}

TEST(OutputFileFaults, FileIsCreatedEvenWithoutTheLock)
{
    struct Case
    {
        char const* name;
        bool holdLock; // else: a directory stands where the lock file belongs
    } const cases[] = {{"lock path taken by a directory", false}, {"lock held elsewhere", true}};
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        QTemporaryDir privateTemp; // keeps other tests' lock out of this
        QString const tempPath = privateTemp.path();
        if (!c.holdLock) {
            ASSERT_TRUE(QDir(tempPath).mkdir(QStringLiteral("zelkodatastreamlock.tmp")));
        }
        TemporaryDirectoryOverride const temp(tempPath);
        QString const lockPath = QDir::tempPath() + QStringLiteral("/zelkodatastreamlock.tmp");
        QLockFile other(lockPath);
        if (c.holdLock) {
            ASSERT_TRUE(other.tryLock(0));
        }
        zelkotest::TraceCapture capture(0x20);
        FileInfoList list;
        BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1000, &list);
        file.setDirectory(dir.path());
        QElapsedTimer timer;
        timer.start();
        file.saveToFile("written");
        qint64 const waited = timer.elapsed();
        EXPECT_GE(waited, 900); // the full second was waited for
        EXPECT_LT(waited, 5000);
        EXPECT_EQ(capture.messages(),
                  QStringList{QStringLiteral("createFile: cannot etablish lock %1").arg(lockPath)});
        file.closeFile(false);
        ASSERT_EQ(list.getResults().GetBinary().size(), 1u);
        EXPECT_EQ(readAll(list.getResults().GetBinary()[0].GetURL()), "written");
    }
}

/// A tiny tmpfs, mounted for the test; skipped where mounting is not permitted.
class TinyFileSystem
{
public:
    TinyFileSystem(QString const& path, QByteArray const& options) : m_path(path)
    {
        m_mounted =
            ::mount("tmpfs", path.toLocal8Bit().constData(), "tmpfs", 0, options.constData()) == 0;
    }
    ~TinyFileSystem()
    {
        if (m_mounted) {
            ::umount(m_path.toLocal8Bit().constData());
        }
    }
    bool mounted() const { return m_mounted; }

private:
    QString m_path;
    bool m_mounted = false;
};

TEST(OutputFileFaults, FullFileSystemKeepsEveryRecordAndWhatWasWritten)
{
    struct Case
    {
        char const* name;
        QByteArray options;
        QString message; // start of the message that the fault produces
    } const cases[] = {
        {"data space exhausted", "size=8k,nr_inodes=64",
         QStringLiteral("saveToFile: cannot write ")},
        {"inodes exhausted", "size=1m,nr_inodes=4", QStringLiteral("createFile: cannot open ")},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        TinyFileSystem const tiny(dir.path(), c.options);
        if (!tiny.mounted()) {
            GTEST_SKIP() << "mounting a tmpfs is not permitted here";
        }
        Clock::Override const clock(LastSecondOfJanuary);
        zelkotest::TraceCapture capture(0x20);
        FileInfoList list;
        {
            BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1000, &list);
            file.setDirectory(dir.path());
            for (int i = 0; i < 40; ++i) {
                file.saveToFile(QByteArray(600, char('a' + i % 26)));
            }
            file.closeFile(false);
        }
        int faults = 0;
        for (QString const& message : capture.messages()) {
            faults += message.startsWith(c.message) ? 1 : 0;
        }
        EXPECT_GT(faults, 0) << capture.messages().join(QLatin1Char('\n')).toStdString();

        // Every file that exists is listed once, completed; nothing listed is missing.
        QStringList const onDisk = fileNames(dir.path());
        auto const& binary = list.getResults().GetBinary();
        QSet<QString> listed;
        for (auto const& record : binary) {
            EXPECT_TRUE(record.GetMetadata().GetStopTime().isValid()) << record.GetURL();
            listed.insert(QFileInfo(record.GetURL()).fileName());
        }
        EXPECT_EQ(int(binary.size()), onDisk.size());
        EXPECT_EQ(listed, QSet<QString>(onDisk.begin(), onDisk.end()));
        // Files completed before the fault hold both of their writes.
        ASSERT_FALSE(binary.empty());
        EXPECT_EQ(readAll(binary.front().GetURL()), QByteArray(600, 'a') + QByteArray(600, 'b'));
    }
}

// ---------------------------------------------------------------------------------------------
// Several processes choosing names in one directory at once.
//
// The test binary starts copies of itself with ZELKO_OUTPUTFILES_CHILD set; such a copy does
// the child's work before main() and exits. Every child fixes the clock at the same second, so
// all of them compete for the same hundred names; half of each child's files are made in a
// second second. Each file holds its maker's tag, so a name handed to two processes would
// show as a file with the wrong content.

constexpr int ChildCount = 4;
constexpr int FilesPerChild = 50;
qint64 const SecondA = LastSecondOfJanuary.toMSecsSinceEpoch();

int runChildIfAsked()
{
    QByteArray const directory = qgetenv("ZELKO_OUTPUTFILES_CHILD");
    if (directory.isEmpty()) {
        return 0;
    }
    qint64 const startAt = qgetenv("ZELKO_OUTPUTFILES_START").toLongLong();
    while (QDateTime::currentMSecsSinceEpoch() < startAt) {
        QThread::usleep(200);
    }
    Clock::setFixedTime(QDateTime::fromMSecsSinceEpoch(SecondA, Qt::UTC));
    // Traces are collected in memory: writing them to stderr as they come would serialise
    // the children and hide races.
    zelkotest::TraceCapture capture(0x20);
    FileInfoList list;
    BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1 << 20, &list);
    file.setDirectory(QString::fromLocal8Bit(directory));
    for (int i = 0; i < FilesPerChild; ++i) {
        if (i == FilesPerChild / 2) {
            Clock::setFixedTime(QDateTime::fromMSecsSinceEpoch(SecondA + 1000, Qt::UTC));
        }
        file.saveToFile(QStringLiteral("%1:%2").arg(::getpid()).arg(i).toUtf8());
        file.closeFile(false);
    }
    for (auto const& record : list.getResults().GetBinary()) {
        std::printf("%d\t%d\t%s\n", int(::getpid()),
                    record.GetMetadata().GetStopTime().isValid() ? 1 : 0,
                    record.GetURL().toLocal8Bit().constData());
    }
    for (QString const& message : capture.messages()) {
        std::printf("trace\t%s\n", message.toLocal8Bit().constData());
    }
    std::fflush(stdout);
    std::_Exit(0);
}

[[maybe_unused]] int const childStatus = runChildIfAsked();

TEST(OutputFileProcesses, ConcurrentProcessesNeverShareAName)
{
    QTemporaryDir dir;
    QTemporaryDir sharedTemp; // the lock file of these processes only
    QString const self = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
    ASSERT_FALSE(self.isEmpty());
    qputenv("ZELKO_OUTPUTFILES_CHILD", dir.path().toLocal8Bit());
    qputenv("ZELKO_OUTPUTFILES_START",
            QByteArray::number(QDateTime::currentMSecsSinceEpoch() + 400));
    TemporaryDirectoryOverride const temp(sharedTemp.path());
    std::vector<FILE*> children;
    for (int i = 0; i < ChildCount; ++i) {
        children.push_back(::popen(("exec '" + self + "'").toLocal8Bit().constData(), "r"));
        ASSERT_NE(children.back(), nullptr);
    }
    qunsetenv("ZELKO_OUTPUTFILES_CHILD");
    qunsetenv("ZELKO_OUTPUTFILES_START");

    std::map<QString, QString> makerOf; // file name -> pid
    int records = 0;
    for (FILE* child : children) {
        char line[4096];
        while (std::fgets(line, sizeof line, child) != nullptr) {
            QStringList const fields =
                QString::fromLocal8Bit(line).trimmed().split(QLatin1Char('\t'));
            EXPECT_NE(fields[0], QStringLiteral("trace")) << line;
            ASSERT_EQ(fields.size(), 3) << line;
            EXPECT_EQ(fields[1], QStringLiteral("1")) << "record not completed: " << line;
            QString const name = QFileInfo(fields[2]).fileName();
            EXPECT_EQ(makerOf.count(name), 0u) << "listed twice: " << name.toStdString();
            makerOf[name] = fields[0];
            ++records;
        }
        EXPECT_EQ(::pclose(child), 0);
    }
    EXPECT_EQ(records, ChildCount * FilesPerChild);

    // Two seconds, a hundred names each: every name is used exactly once.
    QStringList expected;
    for (QString const& time :
         {QStringLiteral("20240131_235959"), QStringLiteral("20240201_000000")}) {
        expected << time + QStringLiteral(".txt");
        for (int i = 0; i < 99; ++i) {
            expected << QStringLiteral("%1_%2.txt").arg(time).arg(i);
        }
    }
    expected.sort();
    QStringList listed;
    for (auto const& entry : makerOf) {
        listed << entry.first;
    }
    listed.sort();
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(fileNames(dir.path()), expected);

    for (auto const& entry : makerOf) {
        QByteArray const content = readAll(dir.filePath(entry.first));
        EXPECT_TRUE(content.startsWith(entry.second.toLatin1() + ':'))
            << entry.first.toStdString() << " holds " << content.constData() << ", listed by "
            << entry.second.toStdString();
    }
}

} // namespace
