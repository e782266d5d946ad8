#include "frametypenames.h"

#include <array>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>

namespace zelkotool {

namespace FrameType = zelkodatastreamconverter::FrameType;

namespace {

struct FrameTypeKind
{
    FrameType::Value type;
    char const* kind;
};

// The converter that the convert command picks for each frame type.
constexpr std::array<FrameTypeKind, 5> frameTypeKinds = {{
    {FrameType::DecodedText, "text"},
    {FrameType::Symbols, "symbol"},
    {FrameType::BurstList, "bursts"},
    {FrameType::Image, "image"},
    {FrameType::TransmissionSystem, "ts"},
}};

} // namespace

QString frameTypeLabel(quint32 frameType)
{
    char const* const name = zelkodatastreamconverter::frameTypeName(frameType);
    QString label = QString::number(frameType);
    if (name != nullptr) {
        label += QLatin1Char(' ') + QLatin1String(name);
    }
    return label;
}

QString frameTypeKind(quint32 frameType)
{
    for (FrameTypeKind const& entry : frameTypeKinds) {
        if (entry.type == frameType) {
            return QString::fromLatin1(entry.kind);
        }
    }
    return QString();
}

} // namespace zelkotool
