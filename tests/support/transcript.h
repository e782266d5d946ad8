#pragma once
// Tool transcripts: a tool run as a user would run it, written down the way a user would read
// it (the command, its exit status, what it printed, the files it left and what the result
// documents hold), so that one golden file per call checks all of it.
//
// A calls file lists the calls, each as a comment line "# name: what it shows" followed by the
// argument line; words are split at spaces, "double quotes" keep spaces. In arguments and in
// transcripts, OUT stands for an empty directory of the call's own, SAMPLES for data/samples,
// TESTDATA for tests/data, SOURCE for the source tree.

#include "toolrun.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <ostream>
#include <vector>

namespace zelkotest {

struct ToolCall
{
    std::string name; ///< a row name: letters, digits and '_'
    QStringList arguments;
};

inline void PrintTo(ToolCall const& call, std::ostream* os)
{
    *os << call.name;
}

/// The calls of tests/data/<relativePath>; empty when it cannot be read.
std::vector<ToolCall> readToolCalls(QString const& relativePath);

/// Placeholder names for paths, such as {path of a generated recording, "HOPPERS"}.
using Places = std::vector<std::pair<QString, QString>>;

/// Runs `program` with the call's arguments (OUT made fresh) and returns its transcript;
/// `inputs` are further placeholders for the call.
/// Result documents (NerikResultData) are validated against their schema; the transcript
/// names the first complaint, if any, and shows each data block's attributes and the first
/// lines of its text.
QByteArray toolTranscript(QString const& program, ToolCall const& call, ToolSetup const& setup = {},
                          Places const& inputs = {});

/// The transcript compared with the golden file <goldenDirectory>/<call name>.txt under
/// tests/data: empty when equal (see compareWithGolden).
QString transcriptDifference(QString const& program, ToolCall const& call,
                             QString const& goldenDirectory, ToolSetup const& setup = {},
                             Places const& inputs = {});

/// For INSTANTIATE_TEST_SUITE_P: each call named after its comment.
struct ToolCallName
{
    template <typename Info>
    std::string operator()(Info const& info) const
    {
        return info.param.name;
    }
};

} // namespace zelkotest
