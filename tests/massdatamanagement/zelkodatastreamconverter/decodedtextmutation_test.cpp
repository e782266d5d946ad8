// Damaged text recordings: the samples with bytes flipped, inserted, deleted and cut off,
// from a fixed seed. Every conversion ends, and what it writes is a well-formed document that
// the results list. An input that ever breaks a conversion is kept in
// tests/data/decodedtext/regressions under a name that says what broke, and converted again
// here.

#include "decodedtexttesting.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <random>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>

using namespace decodedtexttest;

namespace {

QString const RegressionDirectory =
    QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/decodedtext/regressions");
// Where the input under test is kept while it is converted: after a crash it is still there,
// ready to be copied into the regression directory.
QString const LastInputPath =
    QStringLiteral(ZELKO_BINARY_DIR "/decodedtext-mutation-last-input.zdr");

QByteArray mutate(QByteArray bytes, std::mt19937& random)
{
    auto below = [&random](int bound) {
        return bound <= 0 ? 0 : int(std::uniform_int_distribution<int>(0, bound - 1)(random));
    };
    int const changes = 1 + below(4);
    for (int i = 0; i < changes && !bytes.isEmpty(); ++i) {
        int const at = below(bytes.size());
        switch (below(6)) {
        case 0: // flip bits of one byte
            bytes[at] = char(bytes[at] ^ char(1 + below(255)));
            break;
        case 1: // insert a few random bytes
            for (int n = 1 + below(8); n > 0; --n) {
                bytes.insert(at, char(below(256)));
            }
            break;
        case 2: // delete a run
            bytes.remove(at, 1 + below(16));
            break;
        case 3: // cut the recording off
            bytes.truncate(at);
            break;
        case 4: { // a big count or a channel word: 32 bits of random value
            quint32 const value = quint32(random());
            bytes.replace(at & ~3, 4, QByteArray(reinterpret_cast<char const*>(&value), 4));
            break;
        }
        default: // repeat a slice, as a link that resends
            bytes.insert(at, bytes.mid(below(bytes.size()), 1 + below(64)));
            break;
        }
    }
    return bytes;
}

/// Converts input into an empty directory and checks what was written: an empty string when
/// all is well, else what is wrong.
QString convertAndCheck(QString const& input, QString const& out, bool validate)
{
    Conversion const result =
        convert(input, out, textSettings(QStringLiteral("RTTY"), QStringLiteral("International")));
    if (int(result.results.GetText().size()) != result.files.size()) {
        return QStringLiteral("%1 records for %2 files")
            .arg(result.results.GetText().size())
            .arg(result.files.size());
    }
    for (QString const& name : result.files) {
        QString const path = QDir(out).filePath(name);
        QByteArray const xml = readFile(path);
        QXmlStreamReader reader(xml);
        while (!reader.atEnd()) {
            reader.readNext();
        }
        if (reader.hasError()) {
            return QStringLiteral("%1 is not well-formed: %2").arg(name, reader.errorString());
        }
        if (validate) {
            QString const problem =
                zelkotest::validateXmlFile(path, QStringLiteral("nerikresultdata.xsd"));
            if (!problem.isEmpty()) {
                return problem;
            }
        }
    }
    for (REPORTKIT::Text const& record : result.results.GetText()) {
        if (!record.GetMetadata().GetStopTime().isValid() || !QFileInfo::exists(record.GetURL())) {
            return QStringLiteral("record of %1 without stop time or file").arg(record.GetURL());
        }
    }
    return QString();
}

TEST(DecodedTextMutation, DamagedSamplesConvertWithoutHarm)
{
    zelkodatastreamconverter::Clock::Override const clock(
        QDateTime(QDate(2026, 2, 1), QTime(3, 4, 5), Qt::LocalTime));
    zelkotest::TraceCapture const quiet(0x20); // damaged input is reported; keep the log short
    QTemporaryDir directory;
    ASSERT_TRUE(directory.isValid());
    std::mt19937 random(20260201u);
    int written = 0;
    // ZELKO_MUTATION_ROUNDS asks for a longer hunt; the default keeps the suite quick.
    int const RoundsPerSample = qEnvironmentVariableIsSet("ZELKO_MUTATION_ROUNDS")
                                    ? qEnvironmentVariableIntValue("ZELKO_MUTATION_ROUNDS")
                                    : 150;
    for (char const* sample : {"teleprinter-two-channels.zdr", "navtex-ccir476.zdr"}) {
        QByteArray const original = readFile(samplePath(QString::fromLatin1(sample)));
        ASSERT_FALSE(original.isEmpty()) << sample;
        for (int round = 0; round < RoundsPerSample; ++round) {
            QByteArray const damaged = mutate(original, random);
            ASSERT_TRUE(writeFile(LastInputPath, damaged));
            QString const out = directory.filePath(QStringLiteral("%1-%2").arg(sample).arg(round));
            ASSERT_TRUE(QDir().mkpath(out));
            QString const problem = convertAndCheck(LastInputPath, out, round % 30 == 0);
            ASSERT_EQ(problem, QString())
                << sample << " round " << round << ", input kept in " << LastInputPath;
            written += QDir(out).entryList({QStringLiteral("*.xml")}, QDir::Files).size();
            QDir(out).removeRecursively();
        }
    }
    QFile::remove(LastInputPath);
    // Most damage leaves frames to convert: the check above has looked at documents.
    EXPECT_GT(written, RoundsPerSample);
}

TEST(DecodedTextMutation, RegressionInputs)
{
    zelkodatastreamconverter::Clock::Override const clock(
        QDateTime(QDate(2026, 2, 1), QTime(3, 4, 5), Qt::LocalTime));
    zelkotest::TraceCapture const quiet(0x20);
    QStringList const inputs =
        QDir(RegressionDirectory).entryList({QStringLiteral("*.zdr")}, QDir::Files, QDir::Name);
    if (inputs.isEmpty()) {
        GTEST_SKIP() << "no damaged recording has broken a conversion yet";
    }
    QTemporaryDir directory;
    ASSERT_TRUE(directory.isValid());
    for (QString const& name : inputs) {
        QString const out = directory.filePath(name);
        ASSERT_TRUE(QDir().mkpath(out));
        EXPECT_EQ(convertAndCheck(QDir(RegressionDirectory).filePath(name), out, true), QString())
            << name;
    }
}

} // namespace
