// Output files: naming under the inter-process lock, size split, reopen, records, file-system
// faults, and unique names chosen by several processes at once.

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSet>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <massdatamanagement/zelkodatastreamconverter/textfile.h>
#include <massdatamanagement/zelkodatastreamconverter/xmlfile.h>
#include <memory>
#include <reportkit/rgexception.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/scopedenvironment.h>
#include <support/tracecapture.h>
#include <sys/mount.h>
#include <unistd.h>

using namespace zelkodatastreamconverter;

namespace {

QDateTime const LastSecondOfJanuary(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::LocalTime);
QString const Source = QStringLiteral("massdatamanagement/zelkodatastreamconverter/");

/// Keeps every record in the order it arrived.
struct RecordLog : FileInfoCallback
{
    struct Entry
    {
        QString kind, url, type, code;
        double frequency;
        QDateTime start, stop;
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
    std::vector<Entry> completed() const
    {
        std::vector<Entry> result;
        std::copy_if(entries.begin(), entries.end(), std::back_inserter(result),
                     [](Entry const& entry) { return entry.stop.isValid(); });
        return result;
    }
};

/// Throws from fileInfo, like a validating host would: an RGException or anything else.
struct ThrowingCallback : FileInfoCallback
{
    bool reportKit = true;
    void fileInfo(REPORTKIT::IRGObject const&) override
    {
        if (reportKit) {
            throw REPORTKIT::RGException(QStringLiteral("Binary: bad metadata"));
        }
        throw 42;
    }
};

enum class Kind
{
    Binary, // type "Data", code "BIN"
    Text,   // code "TXT"
    Result
};

std::unique_ptr<BinaryFile> makeFile(Kind kind, FileInfoCallback* callback, int maximum = 1000)
{
    switch (kind) {
    case Kind::Binary:
        return std::make_unique<BinaryFile>(QStringLiteral("Data"), QStringLiteral("BIN"), maximum,
                                            callback);
    case Kind::Text:
        return std::make_unique<TextFile>(QStringLiteral("TXT"), maximum, callback);
    case Kind::Result:
        break;
    }
    return std::make_unique<XmlFile>(callback);
}

QStringList fileNames(QString const& directory)
{
    return QDir(directory).entryList(QDir::Files, QDir::Name);
}

TEST(OutputFileNaming, HundredNamesAreTriedThenCreationGivesUp)
{
    struct Case
    {
        char const* name;
        int taken;
        QString expectedName; // empty: no file
    } const cases[] = {
        {"none taken", 0, "20240131_235959.txt"},
        {"plain name taken", 1, "20240131_235959_0.txt"},
        {"99 taken leaves the last suffix", 99, "20240131_235959_98.txt"},
        {"all 100 taken", 100, ""},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        for (int i = 0; i < c.taken; ++i) {
            QFile taken(dir.filePath(i == 0 ? QStringLiteral("20240131_235959.txt")
                                            : QStringLiteral("20240131_235959_%1.txt").arg(i - 1)));
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
        EXPECT_EQ(fileNames(dir.path()).size(), c.expectedName.isEmpty() ? c.taken : c.taken + 1);
        if (c.expectedName.isEmpty()) {
            QString const last = dir.filePath(QStringLiteral("20240131_235959_98.txt"));
            EXPECT_EQ(capture.messages(),
                      QStringList{QStringLiteral("createFile: cannot create %1").arg(last)});
            EXPECT_TRUE(list.getResults().IsEmpty());
            EXPECT_EQ(zelkotest::readFile(last), "taken");
            EXPECT_FALSE(file.isOpen());
        } else {
            EXPECT_TRUE(capture.messages().filter(QStringLiteral("cannot create")).isEmpty());
            EXPECT_EQ(zelkotest::readFile(dir.filePath(c.expectedName)), "payload");
            ASSERT_EQ(list.getResults().GetBinary().size(), 1u);
            EXPECT_EQ(list.getResults().GetBinary()[0].GetURL(), dir.filePath(c.expectedName));
        }
    }
}

TEST(OutputFileNaming, FrequencyText)
{
    std::pair<double, char const*> const cases[] = {
        {10000000.0, "10_000MHz"}, {1000000.0, "1000_000KHz"}, {1000001.0, "1_000MHz"},
        {12500.0, "12_500KHz"},    {0.0, "0_000KHz"},          {999.0, "0_999KHz"},
        {2182000.5, "2_182MHz"},   {-5000.0, "-5_000KHz"},     {1234567890.0, "1234_568MHz"},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(BinaryFile::getFrequencyString(c.first), QString(c.second)) << c.first;
    }
}

TEST(OutputFileSplit, FileIsCompletedAfterTheWriteThatPassesTheLimit)
{
    // countedByCaller: written into getFile() and counted with addFileSize(); openSize -1: no
    // file open at the end.
    // clang-format off
    struct Case { char const* name; int maximum; bool countedByCaller; std::vector<int> writes;
                  std::vector<int> completedSizes; int openSize; } const cases[] = {
        {"600-byte writes over 1000", 1000, false, {600, 600, 600}, {1200}, 600},
        {"exactly the limit stays open", 1000, false, {1000}, {}, 1000},
        {"one past the limit completes", 1000, false, {1001}, {1001}, -1},
        {"limit then one byte", 1000, false, {1000, 1}, {1001}, -1},
        {"zero limit completes every write", 0, false, {1, 1}, {1, 1}, -1},
        {"empty write at zero limit keeps open", 0, false, {0}, {}, 0},
        {"counted by the caller", 1000, true, {600, 600, 600}, {1200}, 600},
        {"counted by the caller, one past", 1000, true, {1000, 1}, {1001}, -1},
    };
    // clang-format on
    for (auto const& c : cases) {
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
                ASSERT_NE(file.getFile(), nullptr);
                file.getFile()->write(data);
                file.addFileSize(size);
            } else {
                file.saveToFile(data);
            }
        }
        std::vector<int> completed;
        for (auto const& entry : log.completed()) {
            completed.push_back(int(QFileInfo(entry.url).size()));
            EXPECT_FALSE(file.isOpen() && file.getOpenFile()->fileName() == entry.url);
        }
        EXPECT_EQ(completed, c.completedSizes);
        EXPECT_EQ(file.isOpen(), c.openSize >= 0);
        if (file.isOpen()) {
            EXPECT_EQ(file.getCurrentSize(), c.openSize);
            EXPECT_EQ(QFileInfo(file.getOpenFile()->fileName()).size(), c.openSize);
        }
        // Every file on disk was announced when it opened.
        EXPECT_EQ(log.entries.size() - completed.size(), size_t(fileNames(dir.path()).size()));
        if (completed == std::vector<int>{1200}) {
            // The split never cuts a write: the first file holds the first two writes whole.
            EXPECT_EQ(zelkotest::readFile(log.completed()[0].url),
                      QByteArray(600, 'a') + QByteArray(600, 'b'));
        }
    }
}

TEST(OutputFileSplit, OnlyTheSetterClampsTheLimit)
{
    for (auto const& [set, expected] : {std::pair{-5, 1000}, {999, 1000}, {1001, 1001}}) {
        BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 5, nullptr);
        file.setMaxFileSize(set);
        EXPECT_EQ(file.getMaxFileSize(), expected) << set;
        EXPECT_EQ(makeFile(Kind::Binary, nullptr, set)->getMaxFileSize(), set);
    }
    EXPECT_EQ(XmlFile(nullptr).getMaxFileSize(), 0);
}

TEST(OutputFileRecords, OpenAndCompletedRecordsOfEachKind)
{
    // channel -1: none set.
    // clang-format off
    struct Case { char const* name; Kind kind; QString element; QString type; QString code;
                  bool informational; int channel; } const cases[] = {
        {"binary file", Kind::Binary, "Binary", "Data", "BIN", true, -1},
        {"text file", Kind::Text, "Binary", "Text", "TXT", false, -1},
        {"result file without channel", Kind::Result, "Text", "", "DecodedText", false, -1},
        {"result file on channel 0", Kind::Result, "Text", "", "DecodedText", false, 0},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        Clock::Override const clock(LastSecondOfJanuary);
        zelkotest::TraceCapture capture(0x60);
        RecordLog log;
        {
            std::unique_ptr<BinaryFile> file = makeFile(c.kind, &log);
            if (c.channel >= 0) {
                static_cast<XmlFile&>(*file).setChannel(c.channel);
            }
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
            EXPECT_EQ(entry.kind, c.element);
            EXPECT_EQ(entry.type, c.type);
            EXPECT_EQ(entry.code, c.code);
            EXPECT_EQ(entry.frequency, 10000000.0);
            EXPECT_EQ(entry.start, LastSecondOfJanuary);
            EXPECT_EQ(entry.channelSet, c.channel >= 0);
            EXPECT_EQ(entry.channel, qMax(c.channel, 0));
            EXPECT_EQ(entry.url, log.entries[0].url);
            EXPECT_TRUE(QFileInfo(entry.url).isAbsolute());
        }
        EXPECT_FALSE(log.entries[0].stop.isValid());
        EXPECT_EQ(log.entries[1].stop, LastSecondOfJanuary.addSecs(5));

        QString const info = QStringLiteral("BinaryFile::sendFileInfo(complete = %1): ");
        QStringList const expected{info.arg(0) + log.entries[0].url,
                                   info.arg(1) + log.entries[0].url};
        EXPECT_EQ(capture.messages(), c.informational ? expected : QStringList());
        for (auto const& line : capture.lines()) {
            EXPECT_EQ(line.sourceFile, Source + QStringLiteral("binaryfile"));
        }
    }
}

TEST(OutputFileRecords, ExceptionsOfTheCallbackAreTracedPerModule)
{
    std::pair<Kind, char const*> const cases[] = {
        {Kind::Binary, "binaryfile"}, {Kind::Text, "textfile"}, {Kind::Result, "xmlfile"}};
    for (auto const& c : cases) {
        for (bool reportKit : {true, false}) {
            SCOPED_TRACE(std::string(c.second) + (reportKit ? " RGException" : " other"));
            QTemporaryDir dir;
            ThrowingCallback callback;
            callback.reportKit = reportKit;
            zelkotest::TraceCapture capture(0x20);
            std::unique_ptr<BinaryFile> file = makeFile(c.first, &callback);
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
                EXPECT_EQ(line.sourceFile, Source + QLatin1String(c.second));
            }
            EXPECT_EQ(fileNames(dir.path()).size(), 1);
        }
    }
}

// A copy, constructed or assigned, takes over every setting but no file: it makes a file of
// its own, and the file of an object assigned over is dropped without being completed.
TEST(OutputFileCopy, ACopyTakesTheSettingsButNotTheFile)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    RecordLog log;
    BinaryFile original(QStringLiteral("Data"), QStringLiteral("BIN"), 5000, &log);
    original.setDirectory(dir.path());
    original.setFileName(QStringLiteral("copy_%1%2.bin"));
    original.setFrequency(2182000.0);
    original.saveToFile("original");
    BinaryFile copy(original);
    RecordLog otherLog;
    BinaryFile assigned(QStringLiteral("Other"), QStringLiteral("OTH"), 1000, &otherLog);
    assigned.setDirectory(dir.path());
    assigned.saveToFile("dropped");
    assigned = original;
    for (BinaryFile* file : {&copy, &assigned}) {
        EXPECT_FALSE(file->isOpen());
        EXPECT_EQ(file->getMaxFileSize(), 5000);
        file->saveToFile("copy");
        file->closeFile(false);
    }
    original.closeFile(false);
    EXPECT_EQ(fileNames(dir.path()),
              (QStringList{"20240131_235959.txt", "copy_20240131_235959.bin",
                           "copy_20240131_235959_0.bin", "copy_20240131_235959_1.bin"}));
    EXPECT_EQ(zelkotest::readFile(dir.filePath(QStringLiteral("copy_20240131_235959.bin"))),
              "original");
    EXPECT_EQ(otherLog.entries.size(), 1u); // announced, never completed
    ASSERT_EQ(log.entries.size(), 6u);
    for (auto const& entry : log.entries) {
        EXPECT_EQ(entry.type, QStringLiteral("Data"));
        EXPECT_EQ(entry.code, QStringLiteral("BIN"));
        EXPECT_EQ(entry.frequency, 2182000.0);
    }
}

TEST(OutputFileReopen, KeptFileStartsOverEmpty)
{
    for (bool textStream : {false, true}) {
        SCOPED_TRACE(textStream ? "through the text stream" : "saveToFile");
        QTemporaryDir dir;
        Clock::Override const clock(LastSecondOfJanuary);
        RecordLog log;
        TextFile file(QStringLiteral("TXT"), 1 << 20, &log);
        file.setDirectory(dir.path());
        auto write = [&](QByteArray const& text) {
            if (textStream) {
                ASSERT_NE(file.getTextStream(), nullptr);
                *file.getTextStream() << text;
            } else {
                file.saveToFile(text);
            }
        };
        write("first\n");
        QString const path = file.getOpenFile()->fileName();
        file.closeFile(true);
        EXPECT_TRUE(file.isOpen());
        EXPECT_FALSE(file.getOpenFile()->isOpen());
        EXPECT_EQ(zelkotest::readFile(path), "first\n"); // the stream was flushed on close
        EXPECT_EQ(file.getCurrentSize(), 0);
        write("second\n");
        EXPECT_EQ(file.getOpenFile()->fileName(), path);
        file.closeFile(false);
        EXPECT_EQ(zelkotest::readFile(path), "second\n");
        EXPECT_EQ(log.entries.size(), 2u); // reopening sends no record
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
    EXPECT_EQ(zelkotest::readFile(replacement), "second");
}

TEST(XmlFilePendingChanges, FirstChangeFixesTheDueTime)
{
    // Steps at a second after noon: S delay (setPendingChanges(int)), A due (the same with a due
    // time), R (reset), P expected (poll: 1 expired, 0 not).
    // clang-format off
    struct Step { int second; char op; int value; };
    struct Case { char const* name; std::vector<Step> steps; } const cases[] = {
        {"later change neither postpones nor advances",
         {{0, 'S', 30}, {5, 'S', 10}, {29, 'P', 0}, {30, 'P', 1}, {31, 'P', 1}}},
        {"negative delay when idle is due at once", {{0, 'S', -60}, {0, 'P', 1}}},
        {"negative delay while pending changes nothing",
         {{0, 'S', 30}, {1, 'S', -60}, {1, 'P', 0}, {29, 'P', 0}, {30, 'P', 1}}},
        {"zero delay is due at once", {{0, 'S', 0}, {0, 'P', 1}}},
        {"reset ends the pending state",
         {{0, 'S', 10}, {10, 'P', 1}, {10, 'R', 0}, {11, 'P', 0}, {12, 'S', 5}, {16, 'P', 0}, {17, 'P', 1}}},
        {"explicit due time, first call wins",
         {{0, 'A', 20}, {1, 'A', 2}, {1, 'S', -60}, {19, 'P', 0}, {20, 'P', 1}}},
        {"nothing pending never expires", {{0, 'P', 0}, {100000, 'P', 0}}},
    };
    // clang-format on
    QDateTime const noon(QDate(2024, 1, 31), QTime(12, 0, 0), Qt::UTC);
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        XmlFile file(nullptr);
        for (Step const& step : c.steps) {
            QDateTime const now = noon.addSecs(step.second);
            Clock::Override const clock(now);
            if (step.op == 'S') {
                file.setPendingChanges(step.value);
                EXPECT_TRUE(file.hasPendingChanges());
            } else if (step.op == 'A') {
                file.setPendingChanges(noon.addSecs(step.value));
            } else if (step.op == 'R') {
                file.resetPendingChanges();
                EXPECT_FALSE(file.hasPendingChanges());
            } else {
                EXPECT_EQ(file.hasExpiredPendingChanges(now), step.value != 0) << step.second;
                // A millisecond before the due time is still early.
                EXPECT_FALSE(file.hasExpiredPendingChanges(file.getDueTime().addMSecs(-1)));
            }
        }
    }
}

// A document whose writing fails (a full disk, a writer error) leaves the previous document
// as it was, and a first document that fails makes no file at all; no staged file stays.
TEST(XmlFileDocument, FailedWriteKeepsThePreviousDocument)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    RecordLog log;
    XmlFile file(&log);
    file.setDirectory(dir.path());
    auto writer = [](QByteArray const& text, bool result) {
        return [text, result](QFile& staged) { return staged.write(text) > 0 && result; };
    };
    EXPECT_FALSE(file.writeDocument(writer("cut", false)));
    EXPECT_FALSE(file.isOpen());
    EXPECT_TRUE(log.entries.empty());
    ASSERT_TRUE(file.writeDocument(writer("first", true)));
    QString const path = file.getOpenFile()->fileName();
    EXPECT_TRUE(file.writeDocument(writer("second", true)));
    EXPECT_FALSE(file.writeDocument(writer("cut", false)));
    EXPECT_EQ(zelkotest::readFile(path), "second");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QFileInfo(path).fileName()});
    EXPECT_EQ(log.entries.size(), 1u); // reported once, when the name appeared
}

// The name of a new document is taken by a link that never replaces a file: a name that looks
// free but is taken (here by a dangling symbolic link) passes to the next suffix.
TEST(XmlFileDocument, NameTakenUnseenGoesToTheNextSuffix)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    QString const plain = dir.filePath(QStringLiteral("NerikResultData_20240131_235959.xml"));
    ASSERT_TRUE(QFile::link(dir.filePath(QStringLiteral("nowhere")), plain));
    XmlFile file(nullptr);
    file.setDirectory(dir.path());
    ASSERT_TRUE(file.writeDocument([](QFile& staged) { return staged.write("doc") == 3; }));
    EXPECT_EQ(QFileInfo(file.getOpenFile()->fileName()).fileName(),
              QStringLiteral("NerikResultData_20240131_235959_0.xml"));
    EXPECT_TRUE(QFileInfo(plain).isSymLink());
}

// Where the directory takes no staged file (here every staged name this process will use is
// taken), the document is written in place through the result file.
TEST(XmlFileDocument, WithoutAStagedFileTheDocumentIsWrittenInPlace)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    for (int n = 0; n < 100; ++n) {
        ASSERT_TRUE(QDir(dir.path())
                        .mkdir(QStringLiteral(".zelko-%1-%2.part")
                                   .arg(QCoreApplication::applicationPid())
                                   .arg(n)));
    }
    XmlFile file(nullptr);
    file.setDirectory(dir.path());
    EXPECT_TRUE(file.writeDocument([](QFile& target) { return target.write("first") == 5; }));
    QString const path = file.getOpenFile()->fileName();
    EXPECT_EQ(zelkotest::readFile(path), "first");
    EXPECT_FALSE(file.writeDocument([](QFile&) { return false; }));
    EXPECT_TRUE(file.isOpen());
}

TEST(OutputFileFaults, UnwritableDirectoryDropsWritesUntilAUsableOneIsSet)
{
    QTemporaryDir dir;
    Clock::Override const clock(LastSecondOfJanuary);
    // A path below a regular file cannot hold files, not even for root.
    QString const plainFile = dir.filePath(QStringLiteral("plain"));
    ASSERT_TRUE(QFile(plainFile).open(QIODevice::WriteOnly));
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
    EXPECT_EQ(zelkotest::readFile(list.getResults().GetBinary()[0].GetURL()), "kept");
}

// The lock is held by another process that does not let go: after a second's wait the file
// is created all the same.
TEST(OutputFileFaults, FileIsCreatedEvenWithoutTheLock)
{
    QTemporaryDir dir;
    QTemporaryDir privateTemp; // keeps other tests' lock out of this
    zelkotest::ScopedEnvironment const temp("TMPDIR", privateTemp.path());
    QLockFile other(privateTemp.filePath(QStringLiteral("zelkodatastreamlock.tmp")));
    ASSERT_TRUE(other.tryLock(0));
    zelkotest::TraceCapture capture(0x20);
    FileInfoList list;
    BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"), 1000, &list);
    file.setDirectory(dir.path());
    QElapsedTimer timer;
    timer.start();
    file.saveToFile("written");
    EXPECT_GE(timer.elapsed(), 900); // the full second was waited for
    EXPECT_LT(timer.elapsed(), 5000);
    EXPECT_EQ(capture.messages(),
              QStringList{QStringLiteral("createFile: cannot etablish lock %1")
                              .arg(QDir::tempPath() + "/zelkodatastreamlock.tmp")});
    file.closeFile(false);
    ASSERT_EQ(list.getResults().GetBinary().size(), 1u);
    EXPECT_EQ(zelkotest::readFile(list.getResults().GetBinary()[0].GetURL()), "written");
}

TEST(OutputFileFaults, FullFileSystemKeepsEveryRecordAndWhatWasWritten)
{
    // A tiny tmpfs, mounted for the test; skipped where mounting is not permitted. message:
    // the start of the message that the fault produces.
    struct Case
    {
        char const* name;
        char const* options;
        QString message;
    } const cases[] = {
        {"data space exhausted", "size=8k,nr_inodes=64", "saveToFile: cannot write "},
        {"inodes exhausted", "size=1m,nr_inodes=4", "createFile: cannot open "},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir dir;
        QByteArray const mountPoint = dir.path().toLocal8Bit();
        if (::mount("tmpfs", mountPoint.constData(), "tmpfs", 0, c.options) != 0) {
            GTEST_SKIP() << "mounting a tmpfs is not permitted here";
        }
        struct Unmount
        {
            QByteArray path;
            ~Unmount() { ::umount(path.constData()); }
        } const unmount{mountPoint};
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
        QStringList const messages = capture.messages();
        EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [&](QString const& m) {
            return m.startsWith(c.message);
        })) << qPrintable(messages.join(QLatin1Char('\n')));

        // Every file that exists is listed once, completed; nothing listed is missing.
        QStringList const onDisk = fileNames(dir.path());
        auto const& binary = list.getResults().GetBinary();
        QSet<QString> listed;
        for (auto const& record : binary) {
            EXPECT_TRUE(record.GetMetadata().GetStopTime().isValid())
                << qPrintable(record.GetURL());
            listed.insert(QFileInfo(record.GetURL()).fileName());
        }
        EXPECT_EQ(int(binary.size()), onDisk.size());
        EXPECT_EQ(listed, QSet<QString>(onDisk.begin(), onDisk.end()));
        // Files completed before the fault hold both of their writes.
        ASSERT_FALSE(binary.empty());
        EXPECT_EQ(zelkotest::readFile(binary.front().GetURL()),
                  QByteArray(600, 'a') + QByteArray(600, 'b'));
    }
}

// ---- Several processes choosing names in one directory at once -----------------------------
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
    zelkotest::ScopedEnvironment const temp("TMPDIR", sharedTemp.path());
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
            // Under load a child may wait out the lock; it then creates its file anyway, and
            // the names must still be distinct.
            if (fields[0] == QLatin1String("trace")) {
                EXPECT_TRUE(
                    fields.value(1).startsWith(QLatin1String("createFile: cannot etablish lock")))
                    << line;
                continue;
            }
            ASSERT_EQ(fields.size(), 3) << line;
            EXPECT_EQ(fields[1], QStringLiteral("1")) << "record not completed: " << line;
            QString const name = QFileInfo(fields[2]).fileName();
            EXPECT_EQ(makerOf.count(name), 0u) << "listed twice: " << qPrintable(name);
            makerOf[name] = fields[0];
            ++records;
        }
        EXPECT_EQ(::pclose(child), 0);
    }
    EXPECT_EQ(records, ChildCount * FilesPerChild);

    // Two seconds, a hundred names each: every name is used exactly once.
    QStringList expected;
    for (QString const time : {"20240131_235959", "20240201_000000"}) {
        expected << time + QStringLiteral(".txt");
        for (int i = 0; i < 99; ++i) {
            expected << QStringLiteral("%1_%2.txt").arg(time).arg(i);
        }
    }
    expected.sort();
    EXPECT_EQ(fileNames(dir.path()), expected);
    for (QString const& name : expected) {
        ASSERT_EQ(makerOf.count(name), 1u) << qPrintable(name);
        QByteArray const content = zelkotest::readFile(dir.filePath(name));
        EXPECT_TRUE(content.startsWith(makerOf[name].toLatin1() + ':'))
            << qPrintable(name) << " holds " << content.constData() << ", listed by "
            << qPrintable(makerOf[name]);
    }
}

} // namespace
