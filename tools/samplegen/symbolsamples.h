#pragma once

#include "transmissionsystemsamples.h"

namespace zelkosamples {

/// The symbol samples (frame type 304): raw 5-bit teleprinter symbols beside a channel of
/// bare bits, and a Morse exchange keyed with ideal timing at two speeds. Text is encoded
/// with the alphabet files of `alphabets`.
std::vector<TransmissionSystemSample> symbolSamples(QString const& alphabets);

} // namespace zelkosamples
