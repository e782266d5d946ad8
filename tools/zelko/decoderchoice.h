#pragma once

#include <QString>
#include <jobspec/settings.h>

namespace AlphabetKit {
class AlphabetCatalog;
}

namespace zelkotool {

/// What `zelko convert` does with the alphabet of the job settings before it converts.
///
/// A converter only uses an alphabet that its decoder offers, and writes the codes themselves
/// otherwise (alphabet "None"). So that a wanted alphabet is never dropped unseen:
/// - with an alphabet and no decoder, the first decoder that the alphabet's file lists
///   becomes the decoder (BAUDOT for "International", SITOR-A for "CCIR 476");
/// - where no decoder offers it (or, with several decoders, the converter keeps its own
///   "NONE"), the returned note says "alphabet X is not offered by decoder Y; writing the
///   codes".
/// Returns the note, empty when the alphabet will be used (or none is asked for).
QString chooseDecoderForAlphabet(JobSpec::Settings& settings,
                                 AlphabetKit::AlphabetCatalog const& alphabets);

} // namespace zelkotool
