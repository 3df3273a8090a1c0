#pragma once

#include <string_view>

namespace velmorak {

/// Reads a date, or a date and time, of ISO 8601 in its extended form: 2024-02-29, 2024-02-29T12:30, with seconds and
/// their fraction, with a blank instead of the T, and with a time zone (Z, +01, +01:00, +0100); without one, it is UTC.
/// @param seconds since the beginning of 1970, without leap seconds.
/// @return false, with seconds unchanged, if the text is anything else, or there is no such day or time.
bool readDate(std::string_view text, double& seconds);

}  // namespace velmorak
