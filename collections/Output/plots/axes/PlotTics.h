#pragma once

#include "Output/plots/axes/PlotFrame.h"

#include <string>
#include <vector>

/// Tics of axes: where they are and what they are called.
namespace velmorak {

struct PlotTic {
    double at = 0.0;
    std::string label;  ///< As Label markup; empty: none.
    bool isMinor = false;
};

struct PlotTics {
    std::vector<PlotTic> tics;
    std::string exponent;     ///< The power of ten that all numbers are to be multiplied with, as "10^{6}"; empty: 1.
    std::string titleSuffix;  ///< What the labels leave out, such as the day of times; begins with a blank.
    bool isTilted = false;    ///< The labels need more room than they have side by side.

    /// @return the width of the widest label in characters.
    double widest() const;
};

/// What the tics of an axis depend on beside its range.
struct TicRoom {
    double characters = 60.0;      ///< Length of the axis in characters of its labels.
    bool isHorizontal = true;      ///< Labels lie side by side, not above each other.
    bool hasIntegersOnly = false;  ///< The axis counts something: no tics between whole numbers.
};

/// Numbers at multiples of 1, 2 or 5 times a power of ten.
PlotTics linearTics(const PlotSpan& span, const TicRoom& room);

/// Powers of ten; 1, 2 and 5 times them below two decades; as linearTics where even those would be few.
PlotTics logTics(const PlotSpan& span, const TicRoom& room);

/// One label for each category, tilted where they need too much room; for each second, third ... of many.
PlotTics categoryTics(const std::vector<std::string>& categories, const TicRoom& room);

/// Dates and times, for an axis of seconds since the beginning of 1970.
PlotTics timeTics(const PlotSpan& span, const TicRoom& room);

/// @return the number with a real minus sign, so many decimals, and thin spaces between thousands if it has five digits
///         or more before the point.
std::string ticNumber(double value, int decimals, bool hasGroups);

}  // namespace velmorak
