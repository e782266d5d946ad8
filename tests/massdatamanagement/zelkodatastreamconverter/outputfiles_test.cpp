// Output files: scripted scenarios of naming, size split, reopen, records, copies, result
// documents and pending changes; the lock held elsewhere, a full file system, and unique
// names chosen by several processes at once.

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

// ---- Scripted scenarios ---------------------------------------------------------------------
// Each tests/data/outputfiles/<name>.scenario drives output files, an operation a line ('#'
// starts a comment). The dump beside it (<name>.dump) holds every line with what it caused:
// traces, records, the open file and its size, the answer; at the end the files with their
// contents. Paths read <dir>, process ids <pid>. Regenerate the dumps with
// ZELKO_REGENERATE_GOLDEN=1 and review the diff. Operations (see step()): binary|text
// [maximum], result (new objects); callback log|rg|other (later objects' callbacks record or
// throw); dir [unusable]; taken N (the first N names of the second exist); write "text"|N,
// count N (written by the caller, addFileSize), stream "text"; close, keep (for reopening);
// advance S, at S (seconds from the start); frequency, channel, max, name; copy, assign (the
// object replaced by a copy, or assigned over one with a file open); unopenable (the open
// file's name becomes a directory); link NAME (dangling); block-staging (every staged name of
// the process taken); document "text", fail "text" (writeDocument); pending S, pending-until
// S, reset-pending, poll; frequency-text F.

QDateTime const Start = LastSecondOfJanuary;

class FileScenario : public FileInfoCallback
{
public:
    QByteArray run(QString const& script)
    {
        Clock::Override const clock(Start);
        zelkotest::TraceCapture traces(0x60);
        for (QString line : script.split(QLatin1Char('\n'))) {
            line = line.section(QLatin1Char('#'), 0, 0).trimmed();
            if (line.isEmpty()) {
                continue;
            }
            print(line);
            QString const answer =
                step(line.section(QLatin1Char(' '), 0, 0), line.section(QLatin1Char(' '), 1));
            for (auto const& trace : traces.lines()) {
                print(QStringLiteral("  trace %1: %2")
                          .arg(trace.sourceFile.section(QLatin1Char('/'), -1), trace.message));
            }
            traces.clear();
            if (!answer.isEmpty()) {
                print(QStringLiteral("  = ") + answer);
            }
            if (m_file && m_file->isOpen()) {
                print(QStringLiteral("  open %1, size %2, %3 bytes on disk")
                          .arg(m_file->getOpenFile()->fileName())
                          .arg(m_file->getCurrentSize())
                          .arg(QFileInfo(m_file->getOpenFile()->fileName()).size()));
            }
        }
        m_file.reset();
        print(QStringLiteral("files:"));
        for (QFileInfo const& file : QDir(m_dir.path())
                                         .entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                            QDir::System | QDir::NoDotAndDotDot,
                                                        QDir::Name)) {
            if (file.fileName().startsWith(QLatin1String(".zelko-")) && file.isDir()) {
                continue; // block-staging's own
            }
            print(QStringLiteral("  %1%2: %3")
                      .arg(file.fileName(),
                           file.isSymLink() ? QStringLiteral(" (link)") : QString(),
                           file.isDir() ? QStringLiteral("(directory)")
                                        : runs(zelkotest::readFile(file.filePath()))));
        }
        return m_out;
    }

    void fileInfo(REPORTKIT::IRGObject const& object) override
    {
        if (m_callback != QLatin1String("log")) {
            if (m_callback == QLatin1String("rg")) {
                throw REPORTKIT::RGException(QStringLiteral("Binary: bad metadata"));
            }
            throw 42;
        }
        auto const& record = dynamic_cast<REPORTKIT::FileRecord const&>(object);
        auto const& metadata = record.GetMetadata();
        auto const& detail = metadata.GetDetail();
        auto const seconds = [](QDateTime const& time) {
            return time.isValid() ? QString::number(Start.secsTo(time)) : QStringLiteral("-");
        };
        print(QStringLiteral("  record %1 type=%2 code=%3 frequency=%4 start=%5 "
                             "stop=%6 channel=%7 %8")
                  .arg(record.ElementName(), record.GetType(), detail.GetCode())
                  .arg(detail.GetFrequency().GetValue())
                  .arg(seconds(metadata.GetStartTime()), seconds(metadata.GetStopTime()),
                       detail.IsChannelSet() ? QString::number(detail.GetChannel())
                                             : QStringLiteral("-"),
                       record.GetURL()));
    }

private:
    QString step(QString const& op, QString const& argument)
    {
        int const number = argument.section(QLatin1Char(' '), 0, 0).toInt();
        QByteArray const text = argument.startsWith(QLatin1Char('"'))
                                    ? argument.mid(1).chopped(1).toUtf8()
                                    : QByteArray(number, char('a' + m_writes % 26));
        if (op == QLatin1String("binary") || op == QLatin1String("text") ||
            op == QLatin1String("result")) {
            m_kind = op;
            m_file = make(argument.isEmpty() ? 1000 : number);
            return QStringLiteral("maximum %1").arg(m_file->getMaxFileSize());
        }
        if (op == QLatin1String("callback")) {
            m_callback = argument;
        } else if (op == QLatin1String("dir")) {
            QString const plain = m_dir.filePath(QStringLiteral("plain"));
            if (!argument.isEmpty()) {
                QFile(plain).open(QIODevice::WriteOnly);
            }
            m_file->setDirectory(argument.isEmpty() ? m_dir.path()
                                                    : plain + QStringLiteral("/out"));
        } else if (op == QLatin1String("taken")) {
            for (int i = 0; i < number; ++i) {
                QFile taken(m_dir.filePath(
                    QStringLiteral("20240131_235959%1.txt")
                        .arg(i == 0 ? QString() : QStringLiteral("_%1").arg(i - 1))));
                if (taken.open(QIODevice::NewOnly)) {
                    taken.write("taken");
                }
            }
        } else if (op == QLatin1String("write")) {
            ++m_writes;
            m_file->saveToFile(text);
        } else if (op == QLatin1String("count")) {
            ++m_writes;
            m_file->getFile()->write(text);
            m_file->addFileSize(number);
        } else if (op == QLatin1String("stream")) {
            *static_cast<TextFile&>(*m_file).getTextStream() << text;
        } else if (op == QLatin1String("close") || op == QLatin1String("keep")) {
            m_file->closeFile(op == QLatin1String("keep"));
        } else if (op == QLatin1String("advance")) {
            Clock::advance(1000 * number);
        } else if (op == QLatin1String("at")) {
            Clock::setFixedTime(Start.addSecs(number));
        } else if (op == QLatin1String("frequency")) {
            m_file->setFrequency(argument.toDouble());
        } else if (op == QLatin1String("channel")) {
            static_cast<XmlFile&>(*m_file).setChannel(number);
        } else if (op == QLatin1String("max")) {
            m_file->setMaxFileSize(number);
            return QStringLiteral("maximum %1").arg(m_file->getMaxFileSize());
        } else if (op == QLatin1String("name")) {
            m_file->setFileName(argument);
        } else if (op == QLatin1String("copy") || op == QLatin1String("assign")) {
            replace(op == QLatin1String("assign"));
        } else if (op == QLatin1String("unopenable")) {
            QString const path = m_file->getOpenFile()->fileName();
            QFile::remove(path);
            QDir().mkdir(path);
        } else if (op == QLatin1String("link")) {
            QFile::link(m_dir.filePath(QStringLiteral("nowhere")), m_dir.filePath(argument));
        } else if (op == QLatin1String("block-staging")) {
            for (int n = 0; n < 100; ++n) {
                QDir(m_dir.path())
                    .mkdir(QStringLiteral(".zelko-%1-%2.part")
                               .arg(QCoreApplication::applicationPid())
                               .arg(n));
            }
        } else if (op == QLatin1String("document") || op == QLatin1String("fail")) {
            bool const succeed = op == QLatin1String("document");
            bool const written = static_cast<XmlFile&>(*m_file).writeDocument([&](QFile& target) {
                // Staged files are numbered per process: the dump counts from the scenario's first.
                QString const name = QFileInfo(target.fileName()).fileName();
                int const staged = name.section(QLatin1Char('-'), 2).section('.', 0, 0).toInt();
                if (!name.startsWith(QLatin1String(".zelko-"))) {
                    print(QStringLiteral("  written in place"));
                } else {
                    m_firstStaged = m_firstStaged < 0 ? staged : m_firstStaged;
                    print(QStringLiteral("  staged file %1").arg(staged - m_firstStaged));
                }
                return target.write(text) == text.size() && succeed;
            });
            return written ? QStringLiteral("written") : QStringLiteral("not written");
        } else {
            return pending(op, argument);
        }
        return QString();
    }

    QString pending(QString const& op, QString const& argument)
    {
        int const number = argument.toInt();
        auto& file = static_cast<XmlFile&>(*m_file);
        if (op == QLatin1String("pending")) {
            file.setPendingChanges(number);
        } else if (op == QLatin1String("pending-until")) {
            file.setPendingChanges(Start.addSecs(number));
        } else if (op == QLatin1String("reset-pending")) {
            file.resetPendingChanges();
        } else if (op == QLatin1String("frequency-text")) {
            return BinaryFile::getFrequencyString(argument.toDouble());
        } else if (op != QLatin1String("poll")) {
            return QStringLiteral("unknown operation");
        }
        QDateTime const now = Clock::currentDateTime();
        return QStringLiteral("pending %1, expired %2, a millisecond before the due time %3")
            .arg(file.hasPendingChanges())
            .arg(file.hasExpiredPendingChanges(now))
            .arg(file.hasExpiredPendingChanges(file.getDueTime().addMSecs(-1)));
    }

    std::unique_ptr<BinaryFile> make(int maximum)
    {
        if (m_kind == QLatin1String("binary")) {
            return std::make_unique<BinaryFile>(QStringLiteral("Data"), QStringLiteral("BIN"),
                                                maximum, this);
        }
        if (m_kind == QLatin1String("text")) {
            return std::make_unique<TextFile>(QStringLiteral("TXT"), maximum, this);
        }
        return std::make_unique<XmlFile>(this);
    }

    // A copy, or an object of other settings with a file open that is assigned over.
    void replace(bool assign)
    {
        std::unique_ptr<BinaryFile> over;
        if (assign) {
            over = make(1000);
            over->setFileType(QStringLiteral("Other"));
            over->setDirectory(m_dir.path());
            over->saveToFile("dropped");
        }
        std::unique_ptr<BinaryFile> copy =
            m_kind == QLatin1String("text")     ? copyOf<TextFile>(std::move(over))
            : m_kind == QLatin1String("result") ? copyOf<XmlFile>(std::move(over))
                                                : copyOf<BinaryFile>(std::move(over));
        m_file->closeFile(false);
        m_file = std::move(copy);
    }
    template <typename File>
    std::unique_ptr<BinaryFile> copyOf(std::unique_ptr<BinaryFile> over) const
    {
        if (!over) {
            return std::make_unique<File>(static_cast<File&>(*m_file));
        }
        static_cast<File&>(*over) = static_cast<File&>(*m_file);
        return over;
    }

    // Long runs of one character as "a*600".
    static QString runs(QByteArray const& bytes)
    {
        QString text;
        for (int i = 0, end = 0; i < bytes.size(); i = end) {
            for (end = i; end < bytes.size() && bytes[end] == bytes[i]; ++end) {
            }
            text += end - i < 8 ? QString::fromLatin1(bytes.mid(i, end - i))
                                : QStringLiteral("%1*%2").arg(QLatin1Char(bytes[i])).arg(end - i);
        }
        return text;
    }

    QString clean(QString text) const
    {
        return text.replace(m_dir.path(), QStringLiteral("<dir>"))
            .replace(QString::number(QCoreApplication::applicationPid()), QStringLiteral("<pid>"));
    }
    void print(QString const& line) { m_out += clean(line).toUtf8() + '\n'; }

    QTemporaryDir m_dir;
    std::unique_ptr<BinaryFile> m_file;
    QString m_kind;
    QString m_callback = QStringLiteral("log");
    QByteArray m_out;
    int m_writes = 0;
    int m_firstStaged = -1;
};

std::vector<std::string> scenarioNames()
{
    std::vector<std::string> names;
    for (QString const& file : QDir(QStringLiteral(ZELKO_GOLDEN_DIR "/outputfiles"))
                                   .entryList({QStringLiteral("*.scenario")}, QDir::Files)) {
        names.push_back(file.chopped(9).toStdString());
    }
    return names;
}

using OutputFileScenario = ::testing::TestWithParam<std::string>;

TEST_P(OutputFileScenario, MatchesItsDump)
{
    QString const path = QStringLiteral("outputfiles/") + QString::fromStdString(GetParam());
    QByteArray const script = zelkotest::readFile(QStringLiteral(ZELKO_GOLDEN_DIR "/") + path +
                                                  QStringLiteral(".scenario"));
    ASSERT_FALSE(script.isEmpty());
    QByteArray const dump = FileScenario().run(QString::fromUtf8(script));
    EXPECT_EQ(zelkotest::compareWithGolden(dump, path + QStringLiteral(".dump")), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, OutputFileScenario, ::testing::ValuesIn(scenarioNames()),
                         [](auto const& info) {
                             QString name = QString::fromStdString(info.param);
                             return name.remove(QLatin1Char('-')).toStdString();
                         });

QStringList fileNames(QString const& directory)
{
    return QDir(directory).entryList(QDir::Files, QDir::Name);
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
