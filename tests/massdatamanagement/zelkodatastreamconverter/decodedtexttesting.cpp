#include "decodedtexttesting.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextconverter.h>
#include <memory>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/transmission.h>

namespace decodedtexttest {

QString const WeatherText =
    QStringLiteral("RYRYRYRY CQ CQ DE DDK9\r\nSMDL01 EDZW 151000\r\n"
                   "AAXX 15101 10400 42960 80205 10042 20017 30112 40153 57010\r\n"
                   "10488 42975 70704 10046 20021 30139 40170 52008=\r\nNNNN\r\n");
QString const PressText =
    QStringLiteral("ZCZC 0412 URGENT\r\nHAMBURG, 15 MARCH (PRESS) - THE PORT REPORTED 1.234 "
                   "CONTAINERS (+3 PCT) IN WEEK 11.\r\nNNNN\r\n");
QString const NavtexText =
    QStringLiteral("ZCZC SA14\r\n151030 UTC MAR 24\r\nPINNEBERG NAVTEX\r\n"
                   "NAV WARN NR 112\r\nGERMAN BIGHT. WRECK POSITION 54-02.3N 007-51.6E.\r\n"
                   "SHIPS REQ TO PASS WITH CAUTION.\r\nNNNN\r\n");

namespace {

// Every test process reads its alphabets from the shipped set, through a configuration file
// of its own, before the first model is constructed.
class AlphabetsConfiguration : public ::testing::Environment
{
public:
    void SetUp() override
    {
        ASSERT_TRUE(m_directory.isValid());
        QString const path = m_directory.filePath(QStringLiteral("zelko.ini"));
        QByteArray const ini =
            "[JobManagement]\nMorseAlphabets=" ZELKO_SOURCE_DIR "/data/alphabets\n";
        ASSERT_TRUE(writeFile(path, ini));
        qputenv("ZELKO_CONFIG", QFile::encodeName(path));
    }

private:
    QTemporaryDir m_directory;
};

::testing::Environment* const configuration =
    ::testing::AddGlobalTestEnvironment(new AlphabetsConfiguration);

} // namespace

QByteArray textFrame(quint64 microseconds, std::vector<Entry> const& entries,
                     std::optional<qint32> claimedCount)
{
    return zelkorecording::RecordingWriter::frameBytes(
        DecodedTextType, decodedTextPayload(microseconds, entries, claimedCount));
}

std::vector<Entry> onChannel(qint32 channel, std::vector<quint16> const& codes)
{
    std::vector<Entry> entries;
    for (quint16 const code : codes) {
        entries.push_back({channel, code});
    }
    return entries;
}

JobSpec::Settings textSettings(QString const& decoder, QString const& alphabet)
{
    JobSpec::Settings settings;
    settings.SetValidate(false);
    if (!decoder.isEmpty()) {
        settings.GetDemodulator_Settings().GetDecoder().AppendValue(decoder);
    }
    settings.GetDemodulator_Settings().SetAlphabet(alphabet);
    return settings;
}

Conversion convert(QString const& inputPath, QString const& outputDirectory,
                   JobSpec::Settings const& settings)
{
    zelkodatastreamconverter::DecodedTextConverter converter;
    Conversion conversion;
    conversion.results = converter.convertFile(inputPath, outputDirectory, settings, 0);
    QDir const directory(outputDirectory);
    conversion.files = directory.entryList(QDir::Files, QDir::Name);
    // The lock file of the output directory is not a result.
    conversion.files.removeAll(QStringLiteral("zelkodatastreamlock.tmp"));
    if (conversion.files.size() == 1) {
        conversion.xml = readFile(directory.filePath(conversion.files.front()));
    }
    return conversion;
}

QString loadDocument(QByteArray const& xml, NerikResultDataXml::NerikResultData& document)
{
    return document.SetXmlString(QString::fromUtf8(xml)) ? QString() : document.GetErrorText();
}

QString contentOf(NerikResultDataXml::NerikResultData const& document, int channel)
{
    if (document.GetTransmission().isEmpty()) {
        return QStringLiteral("<no transmission>");
    }
    QString content = QStringLiteral("<no block of channel %1>").arg(channel);
    int found = 0;
    for (NerikResultDataXml::DataBlock const* block :
         document.GetTransmission().back()->GetDataBlock()) {
        if (block->GetChannel() == channel) {
            content = block->GetContent();
            ++found;
        }
    }
    return found > 1 ? QStringLiteral("<%1 blocks of channel %2>").arg(found).arg(channel)
                     : content;
}

bool writeFile(QString const& path, QByteArray const& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

QString samplePath(QString const& name)
{
    return QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/") + name;
}

} // namespace decodedtexttest
