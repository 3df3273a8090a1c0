#include "Target.h"

#include <velmorak/Failure.h>
#include "Data/Distribution.h"
#include "csv/CsvTypes.h"

#include <cmath>

// What the user says of columns: their types in a text file, and their distributions in a table of random numbers.

namespace velmorak::fuzz {
namespace {

void readTypes(const std::string& text) {
    try {
        const CsvTypes given = csvTypesIn(text);
        for (const auto& [name, type] : given.types) {
            require(!nameOf(type).empty(), "a type has a name");
        }
    } catch (const Failure&) {
    }
}

void makeNumbers(const std::string& text) {
    constexpr std::uint64_t rows = 32;
    try {
        std::uint32_t position = 0;
        for (const RandomColumn& column : randomColumnsIn(text)) {
            for (std::uint64_t row = 0; row < rows; ++row) {
                const double value = column.distribution.valueAt(row, position, 1);
                require(std::isfinite(value), "a random number is finite");
                require(!column.distribution.isInteger() || std::fabs(value) < 0x1p62, "a count fits an integer");
            }
            ++position;
        }
    } catch (const Failure&) {
    }
}

void guess(const std::string& text) {
    const CsvField field{.text = text, .isQuoted = false};
    const CsvNotation notation{.missing = "NA"};
    TypeGuess guess;
    guess.see(field, notation);
    Column column;
    switch (guess.type()) {
        case ColumnType::Real:
            column.values = Column::Reals(1);
            break;
        case ColumnType::Integer:
            column.values = Column::Integers(1);
            break;
        case ColumnType::Boolean:
            column.values = Column::Booleans(1);
            break;
        case ColumnType::Text:
            column.values = Column::Texts(1);
            break;
    }
    require(storeField(field, notation, column, 0), "a value can be read as the type that is guessed from it");
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(velmorak::fuzz::textOf(data, size));
    velmorak::fuzz::readTypes(text);
    velmorak::fuzz::makeNumbers(text);
    velmorak::fuzz::guess(text);
    return 0;
}
