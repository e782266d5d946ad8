#pragma once
// Names the rows of a parameterised test after their `name` field, so that each row can be
// run on its own: --gtest_filter='*/width_zero'.

#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace zelkotest {

struct RowName
{
    template <typename Row>
    std::string operator()(testing::TestParamInfo<Row> const& info) const
    {
        std::string name = info.param.name;
        for (char& ch : name) {
            if (!std::isalnum(static_cast<unsigned char>(ch))) {
                ch = '_';
            }
        }
        return name;
    }
};

} // namespace zelkotest
