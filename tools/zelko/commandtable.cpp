#include "command.h"

namespace zelkotool {

std::vector<Command> const& commands()
{
    static std::vector<Command> const table = {
        {QStringLiteral("inspect"), QStringLiteral("inspect RECORDING..."),
         QStringLiteral("list the frames of recordings and what the reader reports"), &runInspect},
        {QStringLiteral("convert"), QStringLiteral("convert INPUT... -o DIR"),
         QStringLiteral("convert recordings into result documents"), &runConvert},
        {QStringLiteral("bursts"), QStringLiteral("bursts RECORDING [--radio ID]"),
         QStringLiteral("estimate hop frequencies and channel grids of frequency hoppers"),
         &runBursts},
        {QStringLiteral("import"), QStringLiteral("import aivdm LOG... -o RECORDING"),
         QStringLiteral("turn NMEA AIS logs into a recording of PDU frames"), &runImport},
        {QStringLiteral("import"), QStringLiteral("import morse-audio AUDIO -o RECORDING"),
         QStringLiteral("turn CW audio into a recording of Morse symbol frames"), &runImport},
    };
    return table;
}

} // namespace zelkotool
