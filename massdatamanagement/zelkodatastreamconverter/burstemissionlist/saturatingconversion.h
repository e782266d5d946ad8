#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelkodatastreamconverter {
namespace BurstEmissionList {

/// Conversions of computed doubles (channel numbers, counts) to integers that saturate
/// instead of overflowing: frequencies from damaged frames may be anything, NaN included.
class SaturatingConversion
{
public:
    static int toInt32(double value)
    {
        if (std::isnan(value)) {
            return 0;
        }
        value = std::clamp(value, double(std::numeric_limits<int>::min()),
                           double(std::numeric_limits<int>::max()));
        return static_cast<int>(value);
    }

    static unsigned int toUnsigned32(double value)
    {
        if (!(value > 0.0)) {
            return 0;
        }
        if (value >= double(std::numeric_limits<unsigned int>::max())) {
            return std::numeric_limits<unsigned int>::max();
        }
        return static_cast<unsigned int>(value);
    }
};

} // namespace BurstEmissionList
} // namespace zelkodatastreamconverter
