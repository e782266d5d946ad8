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

    // Stations in ascending MMSI order, then the result file; each complete.
    QByteArray listing;
    for (REPORTKIT::Text const& record : results.GetText()) {
        listing += QStringLiteral("%1 %2 %3\n")
                       .arg(QFileInfo(record.GetURL()).fileName(),
                            record.GetMetadata().GetDetail().GetCode(),
                            record.GetMetadata().GetStopTime().toString(Qt::ISODate))
                       .toUtf8();
    }
    EXPECT_EQ(zelkotest::compareWithGolden(listing, "ais/records.txt"), QString());
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
