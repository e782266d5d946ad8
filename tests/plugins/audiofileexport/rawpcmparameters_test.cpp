// The raw PCM sidecar: each row a sidecar text and what it gives, or the line it is refused at.

#include <gtest/gtest.h>
#include <rawpcmparameters.h>
#include <support/rowname.h>

using audiofileexport::RawPcmParameters;

namespace {

struct SidecarRow
{
    char const* name;
    QByteArray text;
    int sampleRate; // 0: refused
    int channels;
    bool bigEndian;
    std::string error;
};

using Sidecar = testing::TestWithParam<SidecarRow>;

TEST_P(Sidecar, GivesParametersOrNamesTheLine)
{
    SidecarRow const& row = GetParam();
    RawPcmParameters parameters;
    QString error;
    bool const valid = parameters.parse(row.text, error);
    EXPECT_EQ(valid, row.sampleRate != 0);
    EXPECT_EQ(error.toStdString(), row.error);
    if (valid) {
        EXPECT_EQ(parameters.sampleRate, row.sampleRate);
        EXPECT_EQ(parameters.channels, row.channels);
        EXPECT_EQ(parameters.bigEndian, row.bigEndian);
    }
}

QByteArray const longValue = "channels=" + QByteArray(100, '7');

INSTANTIATE_TEST_SUITE_P(
    Rows, Sidecar,
    testing::Values(
        SidecarRow{"Empty", "", 48000, 1, false, ""},
        SidecarRow{"Everything", "# c\n\n samplerate = 16000 \r\nchannels=2\nbyteorder=Big\n",
                   16000, 2, true, ""},
        SidecarRow{"Lowest", "samplerate=1\nchannels=1\nbyteorder=little", 1, 1, false, ""},
        SidecarRow{"Highest", "samplerate=384000\nchannels=64", 384000, 64, false, ""},
        SidecarRow{"RateZero", "samplerate=0", 0, 0, false,
                   "line 1: 'samplerate=0' is not a valid setting"},
        SidecarRow{"RateOnePast", "samplerate=384001", 0, 0, false,
                   "line 1: 'samplerate=384001' is not a valid setting"},
        SidecarRow{"ChannelsOnePast", "\nchannels=65", 0, 0, false,
                   "line 2: 'channels=65' is not a valid setting"},
        SidecarRow{"NotANumber", "channels=two", 0, 0, false,
                   "line 1: 'channels=two' is not a valid setting"},
        SidecarRow{"UnknownOrder", "byteorder=middle", 0, 0, false,
                   "line 1: 'byteorder=middle' is not a valid setting"},
        SidecarRow{"UnknownKey", "bits=16", 0, 0, false,
                   "line 1: 'bits=16' is not a valid setting"},
        SidecarRow{"NoEquals", "channels 2", 0, 0, false,
                   "line 1: 'channels 2' is not a valid setting"},
        SidecarRow{"LongLineQuotedShort", longValue, 0, 0, false,
                   "line 1: '" + longValue.left(80).toStdString() + "' is not a valid setting"},
        SidecarRow{"LargestSize", "#" + QByteArray(64 * 1024 - 1, 'x'), 48000, 1, false, ""},
        SidecarRow{"OneBytePastLargest", "#" + QByteArray(64 * 1024, 'x'), 0, 0, false,
                   "larger than 65536 bytes"}),
    zelkotest::RowName());

} // namespace
