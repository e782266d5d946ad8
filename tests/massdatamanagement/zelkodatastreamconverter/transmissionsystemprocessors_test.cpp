// Transmission-system processors: every system's sample recording against its checked-in
// result document. Records cut short or overstating their sizes are scripted scenarios
// (transmissionscenario.cpp).

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemconverter.h>
#include <support/golden.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>

using zelkodatastreamconverter::Clock;

namespace {

QDateTime const ConversionTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime);
QString const SourceData = QStringLiteral(ZELKO_SOURCE_DIR "/data");

// Runs in the data directory, where the maritime identification digits file lies.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(QString const& path) : m_previous(QDir::currentPath())
    {
        QDir::setCurrent(path);
    }
    ~WorkingDirectory() { QDir::setCurrent(m_previous); }

private:
    QString m_previous;
};

// Converts a sample; the single result document, validated against the schema. A whole
// recording has no frame to refuse, not even at its end.
QByteArray convertSample(QString const& sample)
{
    zelkotest::TraceCapture const warnings(0x20);
    QTemporaryDir output;
    Clock::Override const clock(ConversionTime);
    WorkingDirectory const inData(SourceData);
    JobSpec::Settings settings;
    settings.SetValidate(false);
    zelkodatastreamconverter::TransmissionSystemConverter converter;
    converter.convertFile(SourceData + QStringLiteral("/samples/") + sample, output.path(),
                          settings, 0);
    EXPECT_EQ(warnings.messages().filter(QStringLiteral("invalid frame")), QStringList());
    QStringList const files =
        QDir(output.path()).entryList({QStringLiteral("NerikResultData_*.xml")}, QDir::Files);
    if (files.size() != 1) {
        ADD_FAILURE() << files.size() << " result documents for " << sample.toStdString();
        return QByteArray();
    }
    QString const path = QDir(output.path()).filePath(files.front());
    EXPECT_EQ(zelkotest::validateXmlFile(path, QStringLiteral("nerikresultdata.xsd")), QString())
        << sample.toStdString();
    return zelkotest::readFile(path);
}

class SampleDocument : public ::testing::TestWithParam<char const*>
{
};

// Regenerate with ZELKO_REGENERATE_GOLDEN=1 and review the diff.
TEST_P(SampleDocument, MatchesTheGoldenDocument)
{
    QString const name = QString::fromLatin1(GetParam());
    QByteArray const xml = convertSample(name + QStringLiteral(".zdr"));
    ASSERT_FALSE(xml.isEmpty());
    EXPECT_EQ(zelkotest::compareWithGolden(xml, QStringLiteral("transmissionsystem/") + name +
                                                    QStringLiteral(".xml")),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, SampleDocument,
                         ::testing::Values("pocsag-paging", "fms-zvei-evening", "ax25-session",
                                           "acars-multiblock", "pactor-exchange", "clover-exchange",
                                           "mpt1327-trunking", "f7w-subchannels", "text-and-atis"),
                         [](auto const& info) {
                             QString name = QString::fromLatin1(info.param);
                             return name.remove(QLatin1Char('-')).toStdString();
                         });

} // namespace
