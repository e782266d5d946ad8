#pragma once

namespace REPORTKIT {

/// A frequency in hertz.
class Frequency
{
public:
    Frequency() = default;
    explicit Frequency(double hertz) : m_value(hertz) {}

    void SetValue(double hertz) { m_value = hertz; }
    double GetValue() const { return m_value; }

    bool operator==(Frequency const& other) const { return m_value == other.m_value; }
    bool operator!=(Frequency const& other) const { return !(*this == other); }

private:
    double m_value = 0.0;
};

} // namespace REPORTKIT
