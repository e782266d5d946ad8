#pragma once

#include <vector>

namespace zelkodatastreamconverter {

/// Byte-swaps each 32-bit word in place: a 64-bit field keeps the order of its halves, two
/// 16-bit fields sharing a word change places.
///
/// Swapped recordings run through this for every byte, so swap() uses the widest byte shuffle
/// the processor has. forms() lists every form this processor runs, so that each can be
/// checked against the portable one whichever the dispatch picks.
///
/// swapCopy() does the same while copying, for a frame that moves from the read-ahead into the
/// frame buffer anyway: one pass over the bytes instead of a copy and a swap.
class WordSwap
{
public:
    using Function = void (*)(char* data, int words);
    using CopyFunction = void (*)(char* destination, char const* source, int words);
    struct Form
    {
        char const* name;
        Function swap;
        CopyFunction swapCopy;
    };

    /// Swaps `words` words at data with the widest form this processor runs.
    static void swap(char* data, int words);
    /// Writes the `words` words at source, each swapped, to destination (no overlap).
    static void swapCopy(char* destination, char const* source, int words);
    /// The portable form first, then the shuffles this processor supports.
    static std::vector<Form> forms();
};

} // namespace zelkodatastreamconverter
