#pragma once

#include "csv/CsvPieces.h"
#include "csv/CsvTypes.h"

#include <vector>

namespace velmorak {

/// The findings about a column of type integer.
enum class CsvInteger : std::uint8_t {
    No,       ///< The column is none.
    Yes,      ///< All values are integers, as far as has been seen.
    Widened,  ///< A value is missing, or has a fraction, or is too large.
};

/// Looks through a file for values that an integer column cannot hold but a real one can, on all threads of the run.
/// Values that are not numbers are passed over.
/// @param pieces at the first row.
/// @param columns those that are Yes may become Widened. The result does not depend on the threads.
/// @throws Stopped. A damaged file ends the search.
void surveyIntegers(CsvPieces& pieces, const CsvForm& form, const CsvNotation& notation,
                    std::vector<CsvInteger>& columns);

}  // namespace velmorak
