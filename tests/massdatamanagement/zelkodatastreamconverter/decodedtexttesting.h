#pragma once

#include <support/golden.h>

// Helpers of the decoded-text tests: frames and recordings of frame type 64, job settings
// that name a decoder and an alphabet, and a conversion that collects what it wrote.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <jobspec/settings.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <optional>
#include <recordingwriter/decodedtextpayload.h>
#include <recordingwriter/recordingwriter.h>
#include <reportkit/results.h>
#include <support/qstringprinter.h>
#include <vector>

namespace decodedtexttest {

/// ITA2 codes as a teleprinter decoder delivers them (first element after the start element
/// is the least significant bit; ITU-T S.1).
namespace ita2 {
constexpr quint16 E = 1, LF = 2, A = 3, SP = 4, S = 5, I = 6, U = 7, CR = 8, D = 9, R = 10, N = 12,
                  T = 16, Z = 17, L = 18, W = 19, H = 20, Y = 21, P = 22, Q = 23, O = 24,
                  Figures = 27, Letters = 31;
} // namespace ita2

constexpr quint32 DecodedTextType = zelkodatastreamconverter::FrameType::DecodedText;

/// 2024-03-15 10:00:00 UTC in microseconds.
constexpr quint64 BaseTime = 1710496800ull * 1000000ull;

using Entry = zelkorecording::DecodedTextEntry;
using zelkorecording::decodedTextPayload;

/// The complete frame in host order, as the model receives it from the reader.
QByteArray textFrame(quint64 microseconds, std::vector<Entry> const& entries,
                     std::optional<qint32> claimedCount = std::nullopt);
/// The entries of a run of codes on one channel.
std::vector<Entry> onChannel(qint32 channel, std::vector<quint16> const& codes);

/// Job settings with one decoder (none when empty) and an alphabet.
JobSpec::Settings textSettings(QString const& decoder, QString const& alphabet);

/// What one conversion left behind.
struct Conversion
{
    REPORTKIT::Results results;
    /// The files in the output directory, sorted.
    QStringList files;
    /// The bytes of the single result file; empty when there is none or several.
    QByteArray xml;
};
Conversion convert(QString const& inputPath, QString const& outputDirectory,
                   JobSpec::Settings const& settings);

/// Loads a result document; an empty string when it loaded, else the reason.
QString loadDocument(QByteArray const& xml, NerikResultDataXml::NerikResultData& document);
/// The content of the (single) block of channel in the document's last transmission; a
/// marker text when there is none.
QString contentOf(NerikResultDataXml::NerikResultData const& document, int channel);

/// Writes bytes to a file; false when it cannot.
bool writeFile(QString const& path, QByteArray const& bytes);
using zelkotest::readFile;
QString samplePath(QString const& name);

/// The plain text of the sample recordings, as their generator encoded it.
extern QString const WeatherText;
extern QString const PressText;
extern QString const NavtexText;

} // namespace decodedtexttest
