#pragma once

#include <string>

/// Formats numbers for people to read. Files that programs read have exact digits instead: textOf in Value.h.
namespace velmorak {

/// @return the shortest text that reads back as the same number, with whole numbers below 10^15 written without an
///         exponent: 1000000, 0.1, 1e+20, NaN, -Infinity. Independent of the locale.
std::string formatNumber(double value);

/// Formats a value with its error, for example 91.212 ± 0.014. The error is rounded by the rule of the Particle Data
/// Group (Review of Particle Physics, Introduction, section 5.3), which looks at its three leading digits: 100 to 354
/// keep two digits, 355 to 949 keep one, and 950 to 999 become 1000, of which two are kept. The value is rounded to the
/// same digit. Halves are decided by the binary number.
///
/// Powers of ten are factored out, as in (1.234 ± 0.012)e+06, if digits before the decimal point would have to be
/// filled with zeros in a number of seven digits or more, and if both numbers are below 0.0001.
///
/// An error of 0 is not shown: 5. If the error is NaN or infinite, the value keeps all its digits: 5.25 ± NaN. If the
/// value is NaN or infinite, no error is shown. The sign of the error is ignored. Independent of the locale.
std::string formatMeasurement(double value, double error);

/// As above for asymmetric errors, for example 1.23 +0.12 -0.10. The smaller of the errors determines the rounding.
/// Equal errors give the symmetric form; otherwise an error of 0 is shown.
std::string formatMeasurement(double value, double errorPlus, double errorMinus);

}  // namespace velmorak
