// Arbitrary bytes as an alphabet file; an alphabet that reads is walked through every table
// and shift as a translator would.
#include <alphabetkit/alphabet.h>
#include <cstdlib>

using AlphabetKit::Alphabet;
using AlphabetKit::CodeEntry;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    QString error;
    auto const alphabet = Alphabet::parse(
        QByteArray::fromRawData(reinterpret_cast<char const*>(data), int(size)),
        QStringLiteral("fuzz.alphabet"), error);
    if (!alphabet) {
        if (error.isEmpty()) {
            std::abort(); // a refusal always says why
        }
        return 0;
    }
    int table = alphabet->initialTable();
    unsigned const codes = 1u << alphabet->width();
    for (unsigned code = 0; code <= codes && code < 4096; ++code) {
        CodeEntry const& entry = alphabet->entry(table, code);
        if (entry.kind == CodeEntry::Shift) {
            if (entry.shift < 0 || entry.shift >= alphabet->tableCount()) {
                std::abort();
            }
            table = entry.shift;
        }
    }
    alphabet->longestOutput();
    return 0;
}
