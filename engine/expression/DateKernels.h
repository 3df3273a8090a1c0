#pragma once

/// Parts of a moment, in seconds since the beginning of 1970 (UTC): NaN for NaN, for infinities and for years that are
/// not from -30000 to 30000.
namespace velmorak::expression {

double yearOf(double seconds);
double monthOf(double seconds);
double dayOf(double seconds);
double hourOf(double seconds);
double minuteOf(double seconds);
/// @return 1 for a Monday to 7 for a Sunday.
double weekdayOf(double seconds);
/// @return 1 for the first of January.
double dayOfYear(double seconds);

}  // namespace velmorak::expression
