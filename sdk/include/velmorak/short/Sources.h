#pragma once

#include <velmorak/Collection.h>
#include <velmorak/short/ComputedSource.h>
#include <velmorak/short/FileSource.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace velmorak {

/// Registers a source whose rows a function computes. It gets the number of the row, from 0, then a value for each
/// input. It is called on several threads at once and in any order, so it changes nothing outside itself. The user
/// enters the number of rows as "rows".
/// @param columns one for each value that the function returns, as for rowWise.
template <std::size_t inputCount, std::size_t columnCount, typename Function>
void rowSource(Registry& registry, KindDescription about, const InputDescription (&inputs)[inputCount],
               const ColumnDescription (&columns)[columnCount], Function function) {
    using Kind = shortkinds::ComputedSource<Function>;
    static_assert(inputCount == Kind::inputCount, "describe one input for each parameter after the number of the row");
    static_assert(columnCount == Kind::Columns::count, "describe one column for each value that the function returns");
    registry.add(std::make_unique<Kind>(std::move(about), std::vector<InputDescription>(inputs, inputs + inputCount),
                                        std::vector<ColumnDescription>(columns, columns + columnCount),
                                        std::move(function)));
}

/// As above, for a function of the number of the row alone.
template <std::size_t columnCount, typename Function>
void rowSource(Registry& registry, KindDescription about, const ColumnDescription (&columns)[columnCount],
               Function function) {
    using Kind = shortkinds::ComputedSource<Function>;
    static_assert(Kind::inputCount == 0, "describe one input for each parameter after the number of the row");
    static_assert(columnCount == Kind::Columns::count, "describe one column for each value that the function returns");
    registry.add(std::make_unique<Kind>(std::move(about), std::vector<InputDescription>(),
                                        std::vector<ColumnDescription>(columns, columns + columnCount),
                                        std::move(function)));
}

/// Registers a source that reads a file, which the user enters as "file".
/// @param columns one for each value of a row, as for rowWise.
/// @param opener gets the path of the file and returns a function without parameters that returns the next row as a
///               std::optional, which is empty at the end. Either may throw a Failure; that of a row gets the file and
///               the row in front.
template <std::size_t columnCount, typename Open>
void fileSource(Registry& registry, KindDescription about, const ColumnDescription (&columns)[columnCount],
                Open opener) {
    using Kind = shortkinds::FileSource<Open>;
    static_assert(columnCount == Kind::Columns::count, "describe one column for each value of a row");
    registry.add(std::make_unique<Kind>(
        std::move(about), std::vector<ColumnDescription>(columns, columns + columnCount), std::move(opener)));
}

}  // namespace velmorak
