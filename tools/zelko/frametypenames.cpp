#include "frametypenames.h"

#include <array>

namespace zelkotool {

namespace {

struct FrameTypeName
{
    quint32 type;
    char const* label;
    char const* kind;
};

// The frame types of the receiver family, one row each.
constexpr std::array<FrameTypeName, 5> frameTypes = {{
    {64, "64 decoded text", "text"},
    {304, "304 symbols", "symbol"},
    {336, "336 burst list", "bursts"},
    {352, "352 image", "image"},
    {368, "368 PDU", "ts"},
}};

FrameTypeName const* find(quint32 frameType)
{
    for (FrameTypeName const& entry : frameTypes) {
        if (entry.type == frameType) {
            return &entry;
        }
    }
    return nullptr;
}

} // namespace

QString frameTypeLabel(quint32 frameType)
{
    FrameTypeName const* entry = find(frameType);
    return entry ? QString::fromLatin1(entry->label) : QString::number(frameType);
}

QString frameTypeKind(quint32 frameType)
{
    FrameTypeName const* entry = find(frameType);
    return entry ? QString::fromLatin1(entry->kind) : QString();
}

} // namespace zelkotool
