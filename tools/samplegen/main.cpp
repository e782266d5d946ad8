// Writes the sample recordings that ship in data/samples/. The output is deterministic, so
// running it again must reproduce the checked-in files byte for byte.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>
#include <functional>
#include <recordingwriter/payloadbuilder.h>
#include <recordingwriter/recordingwriter.h>

using zelkorecording::ByteOrder;
using zelkorecording::PayloadBuilder;
using zelkorecording::RecordingWriter;

namespace {

constexpr quint32 DecodedText = 64;
constexpr quint32 Symbols = 304;
constexpr quint32 BurstList = 336;
constexpr quint32 TransmissionSystem = 368;

QByteArray opaquePayload(int words, quint32 seed)
{
    PayloadBuilder payload;
    for (int i = 0; i < words; ++i) {
        payload.word(seed * 2654435761u + quint32(i));
    }
    return payload.data();
}

// Frames of every kind, all in the machine's own byte order.
void writeMixedHost(RecordingWriter& out)
{
    out.writeFrame(DecodedText, opaquePayload(8, 1));
    out.writeFrame(Symbols, opaquePayload(16, 2));
    out.writeFrame(BurstList, opaquePayload(32, 3));
    out.writeFrame(TransmissionSystem, opaquePayload(12, 4));
    out.writeHeader(RecordingWriter::FrameMagic, 6, DecodedText);
    out.writeFrame(DecodedText, opaquePayload(100, 5));
}

// What a recording that went through a bad link looks like: the byte order changes, garbage
// and zero padding lie between frames, one header claims an impossible length, and the
// file ends inside a frame.
void writeMixedDamaged(RecordingWriter& out)
{
    out.writeFrame(DecodedText, opaquePayload(8, 11), ByteOrder::Swapped);
    out.writeGarbage(3, 1, false);
    out.writeFrame(DecodedText, opaquePayload(8, 12), ByteOrder::Swapped);
    out.writeZeroPadding(48);
    out.writeFrame(TransmissionSystem, opaquePayload(20, 13));
    out.writeGarbage(200, 2, false);
    out.writeFrame(TransmissionSystem, opaquePayload(20, 14));
    out.writeHeader(RecordingWriter::FrameMagic, 0x4000001, DecodedText);
    out.writeFrame(BurstList, opaquePayload(40, 15), ByteOrder::Swapped);
    out.writeTruncatedFrame(DecodedText, opaquePayload(64, 16), 100);
}

bool writeSample(QDir const& directory, QString const& name,
                 std::function<void(RecordingWriter&)> const& content)
{
    QFile file(directory.filePath(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        QTextStream(stderr) << "zelko-samplegen: cannot write " << file.fileName() << ": "
                            << file.errorString() << '\n';
        return false;
    }
    RecordingWriter writer(&file);
    content(writer);
    QTextStream(stdout) << file.fileName() << ": " << writer.bytesWritten() << " bytes\n";
    return file.error() == QFileDevice::NoError;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QStringList const arguments = QCoreApplication::arguments();
    if (arguments.size() != 2 || arguments[1].startsWith(QLatin1Char('-'))) {
        QTextStream(stdout) << "Usage: zelko-samplegen DIRECTORY\n"
                            << "Writes the bundled sample recordings into DIRECTORY "
                               "(normally data/samples).\n";
        return arguments.contains(QStringLiteral("--help")) ? 0 : 2;
    }
    QDir const directory(arguments[1]);
    if (!directory.exists() && !QDir().mkpath(directory.path())) {
        QTextStream(stderr) << "zelko-samplegen: cannot create " << directory.path() << '\n';
        return 1;
    }
    bool ok = writeSample(directory, QStringLiteral("mixed-host.zdr"), writeMixedHost);
    ok = writeSample(directory, QStringLiteral("mixed-damaged.zdr"), writeMixedDamaged) && ok;
    return ok ? 0 : 1;
}
