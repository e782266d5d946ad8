// Kills "zelko convert" at random moments while it writes into one directory again and
// again: every result document there must stay whole and valid, and no conversion may
// change a file that an earlier one wrote.

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <random>
#include <recordingwriter/payloadbuilder.h>
#include <recordingwriter/recordingwriter.h>
#include <support/schemavalidator.h>

namespace {

// About 1 MB of text on four channels: its document takes long enough to write that many
// kills land while it is being written.
void writeLargeTextRecording(QString const& path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    zelkorecording::RecordingWriter writer(&file);
    for (int frame = 0; frame < 250; ++frame) {
        constexpr int Entries = 1000;
        zelkorecording::PayloadBuilder payload;
        payload.uint64(1700000000000000ull + quint64(frame) * 1000000u).word(0).int32(Entries);
        for (int i = 0; i < Entries; ++i) {
            payload.int32(1 + i % 4).halfWords(quint16('A' + (frame + i) % 26), 0);
        }
        ASSERT_TRUE(
            writer.writeFrame(zelkodatastreamconverter::FrameType::DecodedText, payload.data()));
    }
}

QProcess* startConversion(QString const& recording, QString const& output, QObject* parent)
{
    auto* process = new QProcess(parent);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("ZELKO_TRACE_MASK"), QStringLiteral("0"));
    // A lock file of their own: hundreds of killed conversions must not keep the tests that
    // run beside them waiting for the system-wide one.
    env.insert(QStringLiteral("TMPDIR"), QFileInfo(output).absolutePath());
    process->setProcessEnvironment(env);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(QStringLiteral(ZELKO_TOOL),
                   {QStringLiteral("convert"), QStringLiteral("--quiet"), QStringLiteral("-o"),
                    output, recording});
    return process;
}

QByteArray digestOf(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
               ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1)
               : QByteArray();
}

int entriesIn(QDir const& directory)
{
    return int(QDir(directory.path(), QString(), QDir::NoSort, QDir::Files | QDir::Hidden).count());
}

// Waits until the directory holds more entries than before (the conversion has begun to
// write) or the process ends; true in the first case.
bool waitForNewEntry(QDir const& directory, int before, QProcess& process)
{
    while (entriesIn(directory) == before) {
        if (process.state() == QProcess::NotRunning || process.waitForFinished(0)) {
            return false;
        }
        QThread::usleep(200);
    }
    return true;
}

} // namespace

TEST(ZelkoConvertKilled, DocumentsStayWholeAndEarlierConversionsUntouched)
{
    QTemporaryDir dir;
    QString const recording = dir.filePath(QStringLiteral("large.zdr"));
    writeLargeTextRecording(recording);
    QDir const output(dir.filePath(QStringLiteral("out")));
    ASSERT_TRUE(QDir().mkpath(output.path()));
    QObject owner;

    // One whole conversion tells how long a run takes, and how long its writing takes: from
    // the first new entry in the directory to the end.
    QElapsedTimer timer;
    timer.start();
    int const entriesBefore = entriesIn(output);
    QProcess* const whole = startConversion(recording, output.path(), &owner);
    ASSERT_TRUE(waitForNewEntry(output, entriesBefore, *whole));
    qint64 const writingStarted = timer.nsecsElapsed() / 1000;
    ASSERT_TRUE(whole->waitForFinished(120000));
    ASSERT_EQ(whole->exitCode(), 0);
    qint64 const runMicroseconds = timer.nsecsElapsed() / 1000;
    qint64 const writingMicroseconds = runMicroseconds - writingStarted;

    // Every other kill comes at any moment of a run, the others soon after it began to write.
    int const kills = qEnvironmentVariableIsSet("ZELKO_UNDER_SANITIZER") ? 60 : 200;
    std::mt19937 random(20261122);
    std::uniform_int_distribution<qint64> anyMoment(0, runMicroseconds * 11 / 10);
    // The document itself is written in the first part of that span; the rest is the
    // process ending.
    std::uniform_int_distribution<qint64> whileWriting(0, writingMicroseconds / 4);
    QHash<QString, QByteArray> seen; // every document ever seen, with its first content
    for (int kill = 0; kill < kills; ++kill) {
        int const before = entriesIn(output);
        QProcess* const process = startConversion(recording, output.path(), &owner);
        ASSERT_TRUE(process->waitForStarted(10000));
        if (kill % 2 == 0) {
            QThread::usleep(static_cast<unsigned long>(anyMoment(random)));
        } else if (waitForNewEntry(output, before, *process)) {
            QThread::usleep(static_cast<unsigned long>(whileWriting(random)));
        }
        process->kill();
        ASSERT_TRUE(process->waitForFinished(30000));
        delete process;
        for (QString const& name : output.entryList({QStringLiteral("*.xml")}, QDir::Files)) {
            QString const path = output.filePath(name);
            QByteArray const digest = digestOf(path);
            auto const earlier = seen.constFind(name);
            if (earlier == seen.constEnd()) {
                seen.insert(name, digest);
                ASSERT_EQ(zelkotest::validateXmlFile(path, QStringLiteral("nerikresultdata.xsd")),
                          QString())
                    << "after kill " << kill << ": " << name.toStdString();
            } else {
                ASSERT_EQ(digest, *earlier)
                    << "rewritten by a later conversion: " << name.toStdString();
            }
        }
    }
    // The kills must have hit writes too, or the test proved nothing: a conversion killed
    // while writing leaves its staged document behind.
    QStringList const staged =
        output.entryList({QStringLiteral(".zelko-*.part")}, QDir::Files | QDir::Hidden);
    EXPECT_GT(staged.size(), 0);
    EXPECT_GT(seen.size(), 1);
    std::printf("%d kills: %d documents written whole, %d writes cut off\n", kills,
                int(seen.size()), int(staged.size()));
}
