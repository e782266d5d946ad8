#pragma once
// Rows of text in, text out, kept in a data file where they read as the texts themselves:
//
//   # wrong root element
//   <Results/>
//   = line 1, column 9: root element is <Result>, expected <Results>
//
// The comment names the row (runnable on its own as */wrong_root_element); the next line is
// the input, the line after it, less "= ", the expected text (a lone "=": empty); in both, "\n",
// "\r" and "\t" stand for line feed, carriage return and tab. Lines starting "##" are remarks.

#include <QString>
#include <ostream>
#include <string>
#include <vector>

namespace zelkotest {

struct TextRow
{
    std::string name; ///< letters, digits and '_'
    QString input;
    QString expected;
};

/// The rows of tests/data/<relativePath>; empty when it cannot be read.
std::vector<TextRow> readTextRows(QString const& relativePath);

inline void PrintTo(TextRow const& row, std::ostream* os)
{
    *os << row.name;
}

/// For INSTANTIATE_TEST_SUITE_P: each row named after its comment.
struct TextRowName
{
    template <typename Info>
    std::string operator()(Info const& info) const
    {
        return info.param.name;
    }
};

} // namespace zelkotest
