#include "wordswap.h"

#include <QtEndian>
#include <cstring>

#if defined(__GNUC__) && defined(__x86_64__)
#define ZELKO_X86_DISPATCH 1
#include <immintrin.h>
#endif

namespace zelkodatastreamconverter {

namespace {

void swapCopyPortable(char* destination, char const* source, int words)
{
    for (int i = 0; i < words; ++i) {
        quint32 word;
        std::memcpy(&word, source + 4 * i, sizeof word);
        word = qbswap(word);
        std::memcpy(destination + 4 * i, &word, sizeof word);
    }
}

void swapWordsPortable(char* data, int words)
{
    swapCopyPortable(data, data, words);
}

#ifdef ZELKO_X86_DISPATCH
// Source and destination may be the same (swapping in place), never partly overlapping.
__attribute__((target("avx2"))) void swapCopyAvx2(char* destination, char const* source, int words)
{
    __m256i const order = _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12, 3,
                                           2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    int i = 0;
    for (; i + 8 <= words; i += 8) {
        auto const* from = reinterpret_cast<__m256i const*>(source + 4 * i);
        auto* to = reinterpret_cast<__m256i*>(destination + 4 * i);
        _mm256_storeu_si256(to, _mm256_shuffle_epi8(_mm256_loadu_si256(from), order));
    }
    swapCopyPortable(destination + 4 * i, source + 4 * i, words - i);
}

__attribute__((target("avx2"))) void swapWordsAvx2(char* data, int words)
{
    swapCopyAvx2(data, data, words);
}

__attribute__((target("ssse3"))) void swapCopySsse3(char* destination, char const* source,
                                                    int words)
{
    __m128i const order = _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    int i = 0;
    for (; i + 4 <= words; i += 4) {
        auto const* from = reinterpret_cast<__m128i const*>(source + 4 * i);
        auto* to = reinterpret_cast<__m128i*>(destination + 4 * i);
        _mm_storeu_si128(to, _mm_shuffle_epi8(_mm_loadu_si128(from), order));
    }
    swapCopyPortable(destination + 4 * i, source + 4 * i, words - i);
}

__attribute__((target("ssse3"))) void swapWordsSsse3(char* data, int words)
{
    swapCopySsse3(data, data, words);
}
#endif

std::vector<WordSwap::Form> availableForms()
{
    std::vector<WordSwap::Form> forms{{"portable", swapWordsPortable, swapCopyPortable}};
#ifdef ZELKO_X86_DISPATCH
    __builtin_cpu_init();
    if (__builtin_cpu_supports("ssse3")) {
        forms.push_back({"ssse3", swapWordsSsse3, swapCopySsse3});
    }
    if (__builtin_cpu_supports("avx2")) {
        forms.push_back({"avx2", swapWordsAvx2, swapCopyAvx2});
    }
#endif
    return forms;
}

// Picked once: the last form is the widest.
WordSwap::Form const widest = availableForms().back();

} // namespace

void WordSwap::swap(char* data, int words)
{
    widest.swap(data, words);
}

void WordSwap::swapCopy(char* destination, char const* source, int words)
{
    widest.swapCopy(destination, source, words);
}

std::vector<WordSwap::Form> WordSwap::forms()
{
    return availableForms();
}

} // namespace zelkodatastreamconverter
