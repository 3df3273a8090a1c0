#include "parquet/ParquetFile.h"

#include "parquet/ParquetColumns.h"

#include <fmt/format.h>

namespace velmorak {

bool isParquet(std::string_view firstBytes) {
    return firstBytes.starts_with("PAR1") || firstBytes.starts_with("PARE");
}

columnar::TableSummary summariseParquet(const std::filesystem::path& file) {
    const parquet::ParquetColumns columns(file);
    columnar::TableSummary summary = columnar::summaryOf(columns);
    const std::string& program = columns.metadata().createdBy;
    summary.description = fmt::format("{} row groups{}{}", columns.metadata().groups.size(),
                                      program.empty() ? "" : ", written by ", program);
    return summary;
}

std::unique_ptr<TableReader> openParquet(const std::filesystem::path& file, const std::vector<std::string>& columns,
                                         const Schema* wanted, RunContext& context) {
    return columnar::openColumns(std::make_unique<parquet::ParquetColumns>(file), columns, wanted, context);
}

}  // namespace velmorak
