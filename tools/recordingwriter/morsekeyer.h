#pragma once

#include "symbolpayload.h"

#include <QString>
#include <QVector>

namespace zelkorecording {

/// How a Morse text is keyed: PARIS timing (a dot lasts 1.2 s / wpm; a dash three dots, one
/// dot between elements, three between characters, seven between words), optionally with
/// Farnsworth spacing (characters at `wpm`, the gaps between characters and words stretched
/// 3:7 so that the whole runs at `effectiveWpm`) and a random spread of every duration.
struct MorseKeying
{
    double wpm = 20;
    double effectiveWpm = 0; ///< 0: no Farnsworth spacing
    double jitter = 0;       ///< each duration times 1 +- up to this (uniform)
    quint32 seed = 1;        ///< of the jitter
};

/// The key-down and key-up elements of `code`, written as SimpleMorseHandler::Backtranslate
/// writes it: "." dot, "-" dash, a blank after each character, "/" between words. Every
/// character is followed by its gap (a character gap, or a word gap where "/" follows); the
/// elements start with the first mark.
QVector<KeyElement> keyMorse(QString const& code, MorseKeying const& keying = {});

/// Mono CW audio of `elements` at `sampleRate`: a sine of `toneHz` and `amplitude` (1: full
/// scale) while the key is down, with raised-cosine edges of `edgeSeconds` centred on the
/// keying instants (as transmitters shape them, so that the keying does not splatter).
QVector<float> cwAudio(QVector<KeyElement> const& elements, double toneHz, int sampleRate,
                       double amplitude = 0.5, double edgeSeconds = 0.004);

} // namespace zelkorecording
