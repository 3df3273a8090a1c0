#include "parquet/ParquetFile.h"

#include "parquet/ParquetColumns.h"

#include <string_view>

namespace velmorak {

bool isParquet(std::string_view firstBytes) {
    return firstBytes.starts_with("PAR1") || firstBytes.starts_with("PARE");
}

ParquetSummary summariseParquet(const std::filesystem::path& file) {
    const parquet::ParquetColumns columns(file);
    ParquetSummary summary;
    summary.rows = columns.rows();
    summary.groups = columns.metadata().groups.size();
    summary.createdBy = columns.metadata().createdBy;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        summary.columns.push_back({columns.info(i), columns.complaint(i)});
    }
    return summary;
}

std::unique_ptr<TableReader> openParquet(const std::filesystem::path& file, const std::vector<std::string>& columns,
                                         const Schema* wanted, RunContext& context) {
    return columnar::openColumns(std::make_unique<parquet::ParquetColumns>(file), columns, wanted, context);
}

}  // namespace velmorak
