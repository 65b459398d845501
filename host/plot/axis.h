// A scale with round ticks.
#pragma once

#include <string>
#include <vector>

namespace qmml::host::plot {

struct Tick {
    double value;
    std::string label;
};

// From low to high, where high > low and both are of a size that can be drawn.
struct Axis {
    double low = 0, high = 1;
    double finest = 0; // ticks are no closer

    // The values with their share of the range set free on both sides; a range without width gets one.
    static Axis around(double low, double high, double margin = 0.04);

    double position(double value) const { return (value - low) / (high - low); } // 0 to 1
    std::vector<Tick> ticks(int most) const; // at 1, 2 or 5 times a power of ten, at most that many where possible
};

// Finite, and far enough from the largest number for differences and margins.
bool can_be_drawn(double value);

} // namespace qmml::host::plot
