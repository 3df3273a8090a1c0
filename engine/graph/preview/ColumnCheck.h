#pragma once

#include "run/plan/Pipeline.h"

#include <QzManager.h>
#include <velmorak/Table.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Finds columns that the values of a plug-in name and its table lacks, before any run: the columns of table readers
/// are passed down through the plug-ins that work row by row. Behind others they are unknown, and nothing is found.
class ColumnCheck {
public:
    /// @return the columns of the table reader at that position of Pipeline::nodes; nothing if they are not known.
    using ReaderSchema = std::function<std::optional<Schema>(std::size_t reader)>;

    /// @param pipeline outlives this.
    ColumnCheck(const Pipeline& pipeline, ReaderSchema readerSchema);

    /// @return what is wrong, with the names of similar columns; empty if nothing is found.
    std::string mistakeOf(std::size_t position);

private:
    std::optional<Schema> tableOf(std::size_t node);
    std::optional<Schema> made(std::size_t node, const Schema& table) const;

    const Pipeline& pipeline;
    ReaderSchema readerSchema;
    std::map<std::size_t, std::optional<Schema>> known;  ///< Of the tables that plug-ins give.
};

/// The mistakes of all plug-ins, by position; empty ones are none. Reads the beginning of the table readers' files.
std::vector<std::string> columnMistakes(const Pipeline& pipeline);

/// The mistake of one plug-in; empty if there is none. Readers of tables are asked in the background, for no longer
/// than a user would wait, and not while an earlier preview is unfinished.
std::string columnMistake(QzManager& manager, std::size_t node);

}  // namespace velmorak
