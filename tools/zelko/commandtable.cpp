#include "command.h"

namespace zelkotool {

std::vector<Command> const& commands()
{
    static std::vector<Command> const table = {
        {QStringLiteral("inspect"), QStringLiteral("inspect RECORDING..."),
         QStringLiteral("list the frames of recordings and what the reader reports"), &runInspect},
    };
    return table;
}

} // namespace zelkotool
