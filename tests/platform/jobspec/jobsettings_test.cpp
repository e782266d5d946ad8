#include <QFile>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <jobspec/station.h>
#include <memory>
#include <ostream>
#include <reportkit/rgexception.h>
#include <support/qstringprinter.h>
#include <support/schemavalidator.h>
#include <support/textrows.h>

using namespace JobSpec;

namespace {

QString const schema = QStringLiteral("jobsettings.xsd");
QString const example = QStringLiteral(ZELKO_SOURCE_DIR "/data/jobsettings-example.xml");

Settings fullSettings()
{
    Settings settings;
    settings.SetName(QStringLiteral("Night <watch> & \"more\""));
    REPORTKIT::Tuner_Settings& tuner = settings.GetTuner_Settings();
    tuner.SetDevice(QStringLiteral("EB500"));
    tuner.SetAttenuation(10.5);
    AntennaSettings antenna;
    antenna.SetName(QStringLiteral("HE600"));
    antenna.SetType(QStringLiteral("Active rod"));
    antenna.SetPort(2);
    settings.SetAntennaSettings(antenna);
    settings.GetAudio_Settings().SetMode(QStringLiteral("USB"));
    settings.GetAudio_Settings().SetSampleRate(48000);
    settings.GetAudio_Settings().SetSquelch(-3.25);
    settings.GetFFM_Settings().SetFrequency(12579000.5);
    settings.GetFFM_Settings().SetBandwidth(2400);
    Demodulator_Settings& demodulator = settings.GetDemodulator_Settings();
    demodulator.SetMode(Demodulator_Settings::USB);
    demodulator.SetBandwidth(2700);
    demodulator.SetAlphabet(QStringLiteral("International"));
    demodulator.SetTransmissionSystemMode(QStringLiteral("AIS"));
    demodulator.GetDecoder().AppendValue(QStringLiteral("ITA2"));
    demodulator.GetDecoder().AppendValue(QStringLiteral(" SITOR "));
    // Channel texts stay as given, in order, blanks, duplicates and empty ones included.
    for (char const* text : {"3", " 3", "3", "", "-1", "x"}) {
        settings.GetChannelSelection().AppendValue(QString::fromLatin1(text));
    }
    return settings;
}

template <typename T>
void expectRoundTrip(T const& original, char const* name)
{
    T read;
    ASSERT_TRUE(read.SetXmlString(original.GetXmlString(), 0))
        << name << ": " << read.LastXmlError().toStdString();
    EXPECT_TRUE(read == original) << name;
    EXPECT_TRUE(read.LastXmlError().isEmpty()) << name;
    EXPECT_EQ(zelkotest::validateXmlText(original.GetXmlString(), schema), QString()) << name;
}

} // namespace

TEST(JobSettings, EveryTypeRoundTripsAndValidates)
{
    Settings const settings = fullSettings();
    expectRoundTrip(settings, "full settings");
    expectRoundTrip(Settings(), "empty settings");
    // The tuner's parts read on their own in the tuner settings' tests.
    expectRoundTrip(settings.GetDemodulator_Settings(), "demodulator");
    expectRoundTrip(settings.GetDemodulator_Settings().GetDecoder(), "decoder");
    expectRoundTrip(settings.GetChannelSelection(), "channel selection");
    expectRoundTrip(ChannelSelection(), "empty channel selection");

    Station station;
    station.SetStationID(211234567);
    station.SetTimeStamp(QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59, 123), Qt::UTC));
    expectRoundTrip(station, "station without name and position");
    station.SetName(QString());
    station.SetLatitude(-90.0);
    expectRoundTrip(station, "station with empty name and only a latitude");
    station.SetLongitude(180.0);
    station.SetName(QStringLiteral("DABC"));
    expectRoundTrip(station, "station with everything");
}

TEST(JobSettings, ExampleFileValidatesAndReads)
{
    EXPECT_EQ(zelkotest::validateXmlFile(example, schema), QString());
    Settings settings;
    ASSERT_TRUE(settings.LoadFile(example)) << settings.LastXmlError().toStdString();
    EXPECT_EQ(settings.GetDemodulator_Settings().GetMode(), Demodulator_Settings::FM);
    EXPECT_EQ(settings.GetChannelSelection().GetValue(),
              (QStringList{QStringLiteral("0"), QStringLiteral("3")}));
}

TEST(JobSettings, FileFarLargerThanSettingsIsRefusedUnread)
{
    QTemporaryDir directory;
    QString const path = directory.filePath(QStringLiteral("huge.xml"));
    ASSERT_TRUE(fullSettings().SaveFile(path));
    QFile file(path);
    ASSERT_TRUE(file.resize(100 * 1024 * 1024)); // sparse: costs no disk
    Settings settings = fullSettings();
    EXPECT_FALSE(settings.LoadFile(path));
    EXPECT_EQ(settings.LastXmlError(),
              path + QStringLiteral(": larger than 1048576 bytes, not a job settings file"));
    EXPECT_TRUE(settings == fullSettings());
    ASSERT_TRUE(file.resize(1024 * 1024)); // exactly the limit: read (and refused as XML)
    settings.LoadFile(path);
    EXPECT_FALSE(settings.LastXmlError().contains(QStringLiteral("larger than")));
}

// Each part alone makes two settings differ.
TEST(JobSettings, EqualityLooksAtEveryPart)
{
    std::vector<std::function<void(Settings&)>> const changes = {
        [](Settings& s) { s.SetName(QStringLiteral("day")); },
        [](Settings& s) { s.GetTuner_Settings().SetDevice(QStringLiteral("EB200")); },
        [](Settings& s) { s.GetDemodulator_Settings().SetAlphabet(QStringLiteral("ASCII")); },
        [](Settings& s) { s.GetChannelSelection().AppendValue(QStringLiteral("9")); }};
    for (auto const& change : changes) {
        Settings changed = fullSettings();
        change(changed);
        EXPECT_FALSE(changed == fullSettings());
    }
}

TEST(JobSettings, FileSaveAndLoadAndMissingFile)
{
    QTemporaryDir directory;
    QString const path = directory.filePath(QStringLiteral("job.xml"));
    QString error;
    ASSERT_TRUE(fullSettings().SaveFile(path, &error));
    EXPECT_EQ(error, QString()) << "a successful save leaves the error alone";
    EXPECT_EQ(zelkotest::validateXmlFile(path, schema), QString());
    Settings settings;
    ASSERT_TRUE(settings.LoadFile(path));
    EXPECT_TRUE(settings == fullSettings());

    EXPECT_FALSE(settings.LoadFile(directory.filePath(QStringLiteral("missing.xml"))));
    EXPECT_TRUE(settings.LastXmlError().startsWith(
        directory.filePath(QStringLiteral("missing.xml: cannot open: "))));
    EXPECT_TRUE(settings == fullSettings()) << "a failed load keeps the settings";
    QString const doubled = directory.filePath(QStringLiteral("doubled.xml"));
    ASSERT_TRUE(fullSettings().SaveFile(doubled));
    {
        QFile file(doubled);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("<JobSettings/>");
    }
    EXPECT_FALSE(settings.LoadFile(doubled)) << "text after the root element";
    EXPECT_FALSE(
        Settings().SaveFile(directory.filePath(QStringLiteral("no/such/dir/job.xml")), &error));
    EXPECT_TRUE(error.contains(QLatin1String("cannot write"))) << error.toStdString();
}

/// The full settings' part that the text's root element names.
std::unique_ptr<REPORTKIT::XmlElementObject> partFor(QString const& xml)
{
    Settings const full = fullSettings();
    if (xml.startsWith(QLatin1String("<FFM_Settings"))) {
        return std::make_unique<REPORTKIT::FFM_Settings>(full.GetFFM_Settings());
    }
    if (xml.startsWith(QLatin1String("<Demodulator_Settings"))) {
        return std::make_unique<Demodulator_Settings>(full.GetDemodulator_Settings());
    }
    if (xml.startsWith(QLatin1String("<Station"))) {
        return std::make_unique<Station>();
    }
    return std::make_unique<Settings>(full);
}

using BadText = testing::TestWithParam<zelkotest::TextRow>;

// Empty, truncated and doubled texts go through the reader that the results' tests check.
TEST_P(BadText, IsRefusedWithPositionAndLeavesObjectUnchanged)
{
    QString const& xml = GetParam().input;
    auto object = partFor(xml);
    QString const before = object->GetXmlString();
    EXPECT_FALSE(object->SetXmlString(xml, 0));
    EXPECT_EQ(object->LastXmlError(), GetParam().expected);
    EXPECT_EQ(object->GetXmlString(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BadText,
    testing::ValuesIn(zelkotest::readTextRows(QStringLiteral("jobspec/refused.rows"))),
    zelkotest::TextRowName());

TEST(JobSettings, OnlyOptionsZeroAreRead)
{
    Settings settings;
    EXPECT_FALSE(settings.SetXmlString(QStringLiteral("<JobSettings/>"), 1));
    EXPECT_EQ(settings.LastXmlError(), QStringLiteral("unsupported options 1"));
}

TEST(JobSettings, LenientReadingSkipsWhatItDoesNotKnow)
{
    QString const xml = QStringLiteral(
        "<JobSettings future='1'><Extra><Deep/></Extra>"
        "<Demodulator_Settings mode='CW' future='2'><Decoder><Value>MORSE</Value><Note/></Decoder>"
        "</Demodulator_Settings></JobSettings>");
    Settings strict;
    EXPECT_FALSE(strict.SetXmlString(xml, 0));
    Settings lenient;
    lenient.SetValidate(false);
    ASSERT_TRUE(lenient.SetXmlString(xml, 0)) << lenient.LastXmlError().toStdString();
    EXPECT_EQ(lenient.GetDemodulator_Settings().GetMode(), Demodulator_Settings::CW);
    EXPECT_EQ(lenient.GetDemodulator_Settings().GetDecoder().GetValue(),
              QStringList{QStringLiteral("MORSE")});
}

TEST(DemodulatorSettings, ModeNamesBothWaysAndOutOfRange)
{
    for (int mode = 0; mode < Demodulator_Settings::ModeCount; ++mode) {
        bool ok = false;
        EXPECT_EQ(Demodulator_Settings::NameToMode(Demodulator_Settings::ModeToName(mode), &ok),
                  mode);
        EXPECT_TRUE(ok);
    }
    for (int mode : {-1, int(Demodulator_Settings::ModeCount)}) {
        EXPECT_EQ(Demodulator_Settings::ModeToName(mode), QStringLiteral("UNKNOWN")) << mode;
    }
    bool ok = true;
    EXPECT_EQ(Demodulator_Settings::NameToMode(QStringLiteral("Usb"), &ok),
              Demodulator_Settings::Unknown);
    EXPECT_FALSE(ok);
}

TEST(Station, PositionLimitsAndFlags)
{
    struct Case
    {
        double latitude;
        double longitude;
        bool accepted;
    };
    Case const cases[] = {{0, 0, true},          {90, 180, true},         {-90, -180, true},
                          {90.000001, 0, false}, {0, -180.000001, false}, {qQNaN(), 0, false}};
    for (Case const& c : cases) {
        Station station;
        bool thrown = false;
        try {
            station.SetLatitude(c.latitude);
            station.SetLongitude(c.longitude);
        } catch (REPORTKIT::RGException const&) {
            thrown = true;
        }
        EXPECT_EQ(!thrown, c.accepted) << c.latitude << " " << c.longitude;
        EXPECT_EQ(station.IsPositionSet(), c.accepted);
    }
    Station station;
    station.SetLatitude(53.5);
    EXPECT_TRUE(station.IsLatitudeSet());
    EXPECT_FALSE(station.IsPositionSet()) << "a position needs both coordinates";
    EXPECT_FALSE(station.IsNameSet());
    station.SetName(QString());
    EXPECT_TRUE(station.IsNameSet()) << "an empty name is still a set name";
    station.SetValidate(false);
    station.SetLongitude(500);
    EXPECT_TRUE(station.IsPositionSet());
}

TEST(ChannelSelection, AnEmptyElementClearsTheSelection)
{
    ChannelSelection read = fullSettings().GetChannelSelection();
    EXPECT_TRUE(read.SetXmlString(QStringLiteral("<ChannelSelection/>"), 0));
    EXPECT_FALSE(read.IsValueSet());
}
