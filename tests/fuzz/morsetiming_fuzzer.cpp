// Arbitrary bytes as Morse elements (little-endian words: bit 31 key down, bits 0-30 the
// duration in microseconds, as in symbol frames), fed to the element timing in calls of a
// size the first byte chooses. Every character must lie within the stream, in order, with a
// confidence from 0 to 100; the stream then ends cleanly.
#include <alphabetkit/simplemorsehandler.h>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static SimpleMorseHandler* const handler = [] {
        auto* h = new SimpleMorseHandler;
        h->SetAlphabetsDir(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
        h->SetAlphabet(SimpleMorseHandler::morseName());
        return h;
    }();
    if (size < 1) {
        return 0;
    }
    int const perCall = 1 + data[0] % 16;
    QVector<MorseElement> elements;
    qint64 total = 0;
    for (size_t at = 1; at + 4 <= size; at += 4) {
        quint32 word = 0;
        std::memcpy(&word, data + at, 4);
        elements.append({(word & 0x80000000u) != 0, word & 0x7FFFFFFFu});
        total += word & 0x7FFFFFFFu;
    }
    QVector<MorseCharacter> out;
    for (int first = 0; first < elements.size(); first += perCall) {
        out += handler->AddElements(elements.mid(first, perCall));
    }
    out += handler->FlushElements();
    qint64 previousStart = 0;
    for (MorseCharacter const& c : out) {
        if (c.confidence < 0 || c.confidence > 100 || c.startMicroseconds < previousStart ||
            c.endMicroseconds < c.startMicroseconds || c.endMicroseconds > total ||
            c.text.isEmpty()) {
            std::abort();
        }
        previousStart = c.startMicroseconds;
    }
    return 0;
}
