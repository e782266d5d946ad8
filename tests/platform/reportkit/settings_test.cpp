#include <QtGlobal>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <reportkit/rgexception.h>
#include <reportkit/tunersettings.h>
#include <support/qstringprinter.h>
#include <support/schemavalidator.h>
#include <support/textrows.h>
#include <support/textrows.h>

using namespace REPORTKIT;

namespace {

// The settings objects share the job-settings schema, where each is a global element.
QString const schema = QStringLiteral("jobsettings.xsd");

Tuner_Settings tuner()
{
    Tuner_Settings settings;
    settings.SetDevice(QStringLiteral("EB500 <#2>"));
    settings.SetAttenuation(0.5);
    settings.GetAntennaSettings().SetName(QStringLiteral("HE600"));
    settings.GetAntennaSettings().SetPort(1);
    settings.GetAudio_Settings().SetMode(QStringLiteral("FM"));
    settings.GetAudio_Settings().SetSquelch(0.0);
    settings.GetFFM_Settings().SetFrequency(14250000000.0);
    settings.GetFFM_Settings().SetBandwidth(0.1);
    return settings;
}

} // namespace

TEST(TunerSettings, RoundTripKeepsEveryPartAndValidates)
{
    Tuner_Settings const original = tuner();
    Tuner_Settings read;
    ASSERT_TRUE(read.SetXmlString(original.GetXmlString(), 0)) << read.LastXmlError().toStdString();
    EXPECT_TRUE(read == original);
    EXPECT_TRUE(read.GetAudio_Settings().IsSquelchSet()) << "a squelch of 0 is still set";
    EXPECT_EQ(read.GetFFM_Settings().GetFrequency().GetValue(), 14250000000.0);
    EXPECT_EQ(zelkotest::validateXmlText(original.GetXmlString(), schema), QString());
    EXPECT_EQ(zelkotest::validateXmlText(Tuner_Settings().GetXmlString(), schema), QString());
}

TEST(TunerSettings, EqualityLooksAtEveryPart)
{
    std::vector<std::pair<char const*, std::function<void(Tuner_Settings&)>>> const changes = {
        {"device", [](Tuner_Settings& t) { t.SetDevice("EB200"); }},
        {"attenuation", [](Tuner_Settings& t) { t.SetAttenuation(1); }},
        {"antenna type", [](Tuner_Settings& t) { t.GetAntennaSettings().SetType("Loop"); }},
        {"antenna port", [](Tuner_Settings& t) { t.GetAntennaSettings().SetPort(2); }},
        {"squelch cleared", [](Tuner_Settings& t) { t.GetAudio_Settings().ClearSquelch(); }},
        {"sample rate", [](Tuner_Settings& t) { t.GetAudio_Settings().SetSampleRate(8000); }},
        {"bandwidth", [](Tuner_Settings& t) { t.GetFFM_Settings().SetBandwidth(9); }},
    };
    for (auto const& change : changes) {
        Tuner_Settings changed = tuner();
        change.second(changed);
        EXPECT_FALSE(changed == tuner()) << change.first;
        Tuner_Settings read;
        ASSERT_TRUE(read.SetXmlString(changed.GetXmlString(), 0)) << change.first;
        EXPECT_TRUE(read == changed) << change.first;
    }
}

TEST(FFMSettings, FrequencyBoundariesWhileValidating)
{
    struct Case
    {
        double hertz;
        bool accepted;
    };
    Case const cases[] = {{0.0, true},     {1e-300, true},  {1e12, true},
                          {-0.001, false}, {qInf(), false}, {qQNaN(), false}};
    for (Case const& c : cases) {
        FFM_Settings settings;
        bool thrown = false;
        try {
            settings.SetFrequency(c.hertz);
        } catch (RGException const& e) {
            thrown = true;
            EXPECT_TRUE(e.GetMessage().startsWith(QLatin1String("FFM_Settings: frequency ")));
        }
        EXPECT_EQ(!thrown, c.accepted) << c.hertz;
        settings.SetValidate(false);
        settings.SetFrequency(c.hertz); // never throws without validation
    }
}

TEST(FFMSettings, TextWithoutFrequencyReadsAsZero)
{
    FFM_Settings settings;
    settings.SetFrequency(5e6);
    ASSERT_TRUE(settings.SetXmlString(QStringLiteral("<FFM_Settings bandwidth='100'/>"), 0));
    EXPECT_EQ(settings.GetFrequency().GetValue(), 0.0);
    EXPECT_EQ(settings.GetBandwidth().GetValue(), 100.0);
}

using TunerRefuses = testing::TestWithParam<zelkotest::TextRow>;

TEST_P(TunerRefuses, BadTextNamingItsPositionAndKeepsTheObject)
{
    Tuner_Settings settings = tuner();
    EXPECT_FALSE(settings.SetXmlString(GetParam().input, 0));
    EXPECT_EQ(settings.LastXmlError(), GetParam().expected);
    EXPECT_TRUE(settings == tuner());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TunerRefuses,
    testing::ValuesIn(zelkotest::readTextRows(QStringLiteral("reportkit/tuner-refused.rows"))),
    zelkotest::TextRowName());
