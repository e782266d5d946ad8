#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace zelkorecording {
class RecordingWriter;
}

namespace zelkosamples {

/// One bundled transmission-system recording: its file name in data/samples and what writes
/// it.
struct TransmissionSystemSample
{
    QString fileName;
    std::function<void(zelkorecording::RecordingWriter&)> write;
};

/// The transmission-system samples, one or a few systems a recording, as a monitoring
/// station would keep them: a paging channel, an evening of vehicle radio and tone calls,
/// a packet-radio session, ACARS, PACTOR and CLOVER links, trunked radio, F7W, and a short
/// recording of the text systems and ATIS.
std::vector<TransmissionSystemSample> transmissionSystemSamples();

} // namespace zelkosamples
