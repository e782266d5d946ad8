// The Elbe AIS sample through AISStationConverter: the result document and every station
// file against checked-in copies (regenerate with ZELKO_REGENERATE_GOLDEN=1), each valid
// against the schema, and the records that list them.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/aisstationconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/schemavalidator.h>

using namespace zelkodatastreamconverter;

namespace {

TEST(AISStationConverter, ElbeSampleGivesTheGoldenDocumentAndStationFiles)
{
    Clock::Override const clock(QDateTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime));
    QTemporaryDir out;
    JobSpec::Settings settings;
    settings.SetValidate(false);
    AISStationConverter converter;
    REPORTKIT::Results const results = converter.convertFile(
        QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/ais-elbe.zdr"), out.path(), settings, 0);

    QStringList listed;
    for (REPORTKIT::Text const& record : results.GetText()) {
        EXPECT_TRUE(record.GetMetadata().GetStopTime().isValid()) << record.GetURL().toStdString();
        listed << QFileInfo(record.GetURL()).fileName() + ' ' +
                      record.GetMetadata().GetDetail().GetCode();
    }
    // Stations in ascending MMSI order, then the result file.
    EXPECT_EQ(listed, QStringList({"AISStation_2111240_20260201_123045.xml AISStation",
                                   "AISStation_111211501_20260201_123045.xml AISStation",
                                   "AISStation_211234567_20260201_123045.xml AISStation",
                                   "AISStation_211998877_20260201_123045.xml AISStation",
                                   "AISStation_244650123_20260201_123045.xml AISStation",
                                   "AISStation_503000001_20260201_123045.xml AISStation",
                                   "AISStation_636019825_20260201_123045.xml AISStation",
                                   "AISStation_992111001_20260201_123045.xml AISStation",
                                   "NerikResultData_20260201_123045.xml TransmissionSystem"}));
    for (QString const& name : QDir(out.path()).entryList(QDir::Files, QDir::Name)) {
        QString const path = QDir(out.path()).filePath(name);
        EXPECT_EQ(zelkotest::validateXmlFile(path, QStringLiteral("nerikresultdata.xsd")),
                  QString());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(zelkotest::compareWithGolden(file.readAll(), QStringLiteral("ais/") + name),
                  QString());
    }
}

} // namespace
