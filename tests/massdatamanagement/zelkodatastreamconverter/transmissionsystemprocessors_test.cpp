// Transmission-system processors, also linked into the model's tests: every system's sample
// recording against its checked-in result document, and scripted scenarios. Each
// tests/data/transmissionsystem/scenarios/<name>.scenario runs against a fresh model, and the
// dump (every line, the model's answer to it, the transmission's XML at each "clear" and at
// the end) is compared with <name>.dump beside it. Regenerate the dumps with
// ZELKO_REGENERATE_GOLDEN=1 and review the diff. Script lines ('#' starts a comment):
//
//   <system> [name=X] [t=S] [poke=O:V] [cut=N] : <record words>
//       A frame of a system (a code, or ascii unicode atis fms zvei vdew pocsag ax25 mpt1327
//       acars pactor clover f7w ignored, or pdu) at S seconds after 2024-03-15 10:00 UTC (by
//       default a second after the previous frame). poke sets frame byte O to V, cut keeps N
//       bytes. Record words: a number (V*N: N of them), fF (a float), "text" (8-bit characters
//       zero-filled to whole words; "text"*N repeated; /W exactly W words).
//   frequency <hertz>                                     FrequencyToString
//   format <representation> <count> <bits> <words...>    FormatData, as value|type
//   clear                                                 ends the transmission
//   alphabets, alphabet [NAME], demodulator NAME          the shipped alphabets, the setters
//   user-data, translate               user data on the last block; decode again, show the XML

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
#include <nerikresultdataxml/transmission.h>
#include <nerikresultdataxml/userdata.h>
#include <nerikresultdataxml/utf8xmlwriter.h>
#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/transmissionsystemrecords.h>
#include <support/golden.h>
#include <support/schemavalidator.h>
#include <support/scopedworkingdirectory.h>
#include <support/tracecapture.h>

using zelkodatastreamconverter::Clock;
using zelkodatastreamconverter::TransmissionSystemModel;

namespace {

QDateTime const ConversionTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime);
QString const SourceData = QStringLiteral(ZELKO_SOURCE_DIR "/data");

// Converts a sample; the single result document, validated against the schema. A whole
// recording has no frame to refuse, not even at its end.
QByteArray convertSample(QString const& sample)
{
    zelkotest::TraceCapture const warnings(0x20);
    QTemporaryDir output;
    Clock::Override const clock(ConversionTime);
    zelkotest::ScopedWorkingDirectory const inData(SourceData); // ATIS reads the MID file
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

// The names of the files matching pattern in tests/data/<directory>, without the extension.
std::vector<std::string> dataNames(QString const& directory, QString const& pattern)
{
    std::vector<std::string> names;
    for (QString const& file :
         QDir(QStringLiteral(ZELKO_GOLDEN_DIR "/") + directory).entryList({pattern}, QDir::Files)) {
        names.push_back(file.section(QLatin1Char('.'), 0, 0).toStdString());
    }
    return names;
}

std::string rowName(::testing::TestParamInfo<std::string> const& info)
{
    return QString::fromStdString(info.param).remove(QLatin1Char('-')).toStdString();
}

using SampleDocument = ::testing::TestWithParam<std::string>;

TEST_P(SampleDocument, MatchesTheGoldenDocument)
{
    QString const name = QString::fromStdString(GetParam());
    QByteArray const xml = convertSample(name + QStringLiteral(".zdr"));
    ASSERT_FALSE(xml.isEmpty());
    EXPECT_EQ(zelkotest::compareWithGolden(xml, QStringLiteral("transmissionsystem/") + name +
                                                    QStringLiteral(".xml")),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, SampleDocument,
                         ::testing::ValuesIn(dataNames(QStringLiteral("transmissionsystem"),
                                                       QStringLiteral("*.xml"))),
                         rowName);

QString const Directory = QStringLiteral("transmissionsystem/scenarios/");

// The test's own system 7 of the decoding library (pdu.scenario): a unit with a wrong checksum
// whose ID has no name or labels, with a text, a missing field, a translated value, a nested
// unit with a payload and a flag; and a unit without content.
struct TestSystem : CPDU_Converter
{
    std::vector<CPDU*> decodeFrame(QByteArray const&) override
    {
        quint64 const time = 1700000000123456ull;
        auto nested = std::make_unique<CPDU>(0x98, time + 5000000, PDU_CHECKSUM_OK);
        nested->addField(CPDU_FieldContainer::payload("ABC", 24));
        std::vector<std::unique_ptr<CPDU>> subs;
        subs.push_back(std::move(nested));
        auto unit = new CPDU(0x99, time, PDU_CHECKSUM_WRONG);
        unit->addField(CPDU_FieldContainer::stringValue("H\xA0I"));
        unit->addField(nullptr); // a field the decoder left out
        unit->addField(CPDU_FieldContainer::translatedValue(1));
        unit->addField(CPDU_FieldContainer::expandable(std::move(subs)));
        unit->addField(CPDU_FieldContainer::boolValue(true));
        return {unit, new CPDU(0x97, time)};
    }
};
[[maybe_unused]] bool const TestSystemRegistered =
    (CPDU_Converter_Factory::getInstance()->addConverter(7, std::make_unique<TestSystem>()), true);

QByteArray word(quint32 value)
{
    return QByteArray(reinterpret_cast<char const*>(&value), 4);
}

// A record token as bytes; see the list above.
QByteArray recordBytes(QString const& token)
{
    static QRegularExpression const text(QStringLiteral("^\"(.*)\"(?:\\*(\\d+))?(?:/(\\d+))?$"));
    auto const match = text.match(token);
    QStringList const repeated = token.split(QLatin1Char('*'));
    if (token.startsWith(QLatin1Char('f'))) {
        float const value = token.mid(1).toFloat();
        quint32 bits;
        std::memcpy(&bits, &value, 4);
        return word(bits);
    }
    if (!match.hasMatch()) {
        return word(quint32(repeated[0].toULongLong(nullptr, 0)))
            .repeated(repeated.size() > 1 ? repeated[1].toInt() : 1);
    }
    QByteArray const bytes = match.captured(1).toLatin1().repeated(
        match.captured(2).isEmpty() ? 1 : match.captured(2).toInt());
    int const words =
        match.captured(3).isEmpty() ? (bytes.size() + 3) / 4 : match.captured(3).toInt();
    return bytes.leftJustified(4 * words, '\0', true);
}

quint32 systemCode(QString const& name)
{
    static QStringList const names =
        QStringLiteral("ascii unicode atis fms zvei vdew pocsag ax25 mpt1327 acars pactor clover "
                       "f7w ignored 14 15 pdu")
            .split(QLatin1Char(' '));
    int const index = names.indexOf(name);
    return index >= 0 ? quint32(index) : name.toUInt(nullptr, 0);
}

class Scenario
{
public:
    QByteArray run(QString const& script)
    {
        for (QString line : script.split(QLatin1Char('\n'))) {
            line = line.section(QLatin1Char('#'), 0, 0).simplified();
            if (!line.isEmpty()) {
                m_out += line.toUtf8() + '\n';
                QString const answer = step(line.split(QLatin1Char(' ')));
                m_out += "  = " + answer.toUtf8().replace('\n', "\\n").replace('\r', "\\r") + '\n';
            }
        }
        writeTransmission();
        return m_out;
    }

private:
    void writeTransmission()
    {
        if (m_model.getCurrentTransmission() != nullptr) {
            QByteArray xml;
            {
                NerikResultDataXml::Utf8XmlWriter writer(xml);
                writer.setAutoFormatting(true);
                m_model.getCurrentTransmission()->WriteXml(writer);
            }
            m_out += xml + '\n';
        } else {
            m_out += "no transmission\n";
        }
    }

    QString step(QStringList const& words)
    {
        QString const& op = words.front();
        if (op == QLatin1String("frequency")) {
            quint64 const hertz = words.value(1).toULongLong();
            QString const text = TransmissionSystemModel::FrequencyToString(hertz);
            bool const narrow = hertz <= 0xFFFFFFFFu;
            return narrow && TransmissionSystemModel::FrequencyToString(unsigned(hertz)) != text
                       ? QStringLiteral("32-bit and 64-bit texts differ")
                       : text;
        }
        if (op == QLatin1String("format")) {
            std::vector<unsigned> data;
            for (int i = 4; i < words.size(); ++i) {
                data.push_back(unsigned(words[i].toULongLong(nullptr, 0)));
            }
            QString value = QStringLiteral("<untouched>");
            QString type = value;
            TransmissionSystemModel::FormatData(ePDU_DATAREPRESENTATION(words[1].toUInt()),
                                                words[2].toUInt(), words[3].toUInt(),
                                                data.empty() ? nullptr : data.data(), value, type);
            return value + QLatin1Char('|') + type;
        }
        if (op == QLatin1String("clear")) {
            writeTransmission();
            m_model.clear();
            return QStringLiteral("cleared");
        }
        return op.startsWith(QLatin1String("alphabet")) || op == QLatin1String("demodulator") ||
                       op == QLatin1String("translate") || op == QLatin1String("user-data")
                   ? alphabet(op, words.value(1))
                   : frame(words);
    }

    QString alphabet(QString const& op, QString const& name)
    {
        bool done = true;
        bool changed = false;
        if (op == QLatin1String("alphabets")) {
            done =
                m_model.setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
        } else if (op == QLatin1String("alphabet")) {
            done = m_model.setAlphabet(name, changed);
        } else if (op == QLatin1String("demodulator")) {
            done = m_model.setDemodulator(name);
        } else if (op == QLatin1String("user-data")) {
            m_model.getCurrentTransmission()->GetPDUDataBlocks().back()->AddUserData(
                new NerikResultDataXml::UserData);
        } else {
            m_model.translateCurrentTransmission();
            writeTransmission();
        }
        return QStringLiteral("%1, changed %2, alphabet %3 of %4")
            .arg(done)
            .arg(changed)
            .arg(m_model.getAlphabet(), m_model.getAvailableAlphabets().join(QLatin1Char(',')));
    }

    QString frame(QStringList const& words)
    {
        QByteArray name;
        QByteArray record;
        QList<QStringList> pokes;
        int cut = -1;
        int const colon = words.indexOf(QStringLiteral(":"));
        m_time += 1000000;
        for (int i = 1; i < colon; ++i) {
            QString const value = words[i].section(QLatin1Char('='), 1);
            if (words[i].startsWith(QLatin1String("name="))) {
                name = value.toLatin1();
            } else if (words[i].startsWith(QLatin1String("t="))) {
                m_time = 1710496800000000ull + quint64(value.toDouble() * 1e6);
            } else if (words[i].startsWith(QLatin1String("poke="))) {
                pokes << value.split(QLatin1Char(':'));
            } else {
                cut = value.toInt();
            }
        }
        for (int i = colon + 1; i < words.size(); ++i) {
            record += recordBytes(words[i]);
        }
        QByteArray bytes = zelkorecording::RecordingWriter::frameBytes(
            368,
            zelkorecording::transmissionSystemPayload(
                zelkorecording::TransmissionSystem(systemCode(words[0])), m_time, name, record));
        for (QStringList const& poke : pokes) {
            bytes[poke[0].toInt()] = char(poke[1].toInt(nullptr, 0));
        }
        if (cut >= 0) {
            bytes.truncate(cut);
        }
        if (!m_model.processData(bytes)) {
            return QStringLiteral("refused");
        }
        return QStringLiteral("code %1, time %2, offset %3%4")
            .arg(m_model.getTransmissionType())
            .arg(m_model.getTransmissionTime())
            .arg(m_model.getPDUOffset())
            .arg(m_model.getEndConnection() ? QStringLiteral(", ends the connection") : QString());
    }

    TransmissionSystemModel m_model;
    quint64 m_time = 1710496800000000ull;
    QByteArray m_out;
};

using TransmissionScenario = ::testing::TestWithParam<std::string>;

TEST_P(TransmissionScenario, MatchesItsDump)
{
    QString const path = Directory + QString::fromStdString(GetParam());
    QByteArray const script = zelkotest::readFile(QStringLiteral(ZELKO_GOLDEN_DIR "/") + path +
                                                  QStringLiteral(".scenario"));
    ASSERT_FALSE(script.isEmpty());
    QByteArray const dump = Scenario().run(QString::fromUtf8(script));
    EXPECT_EQ(zelkotest::compareWithGolden(dump, path + QStringLiteral(".dump")), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, TransmissionScenario,
                         ::testing::ValuesIn(dataNames(Directory, QStringLiteral("*.scenario"))),
                         rowName);

} // namespace
