#include "arrow/ArrowFile.h"

#include "arrow/ArrowColumns.h"

#include <fmt/format.h>

namespace velmorak {

bool isArrowFile(std::string_view firstBytes) {
    return firstBytes.starts_with("ARROW1") || firstBytes.starts_with("FEA1");
}

bool isArrowStream(std::string_view firstBytes) {
    constexpr std::string_view mark = "\xFF\xFF\xFF\xFF";
    constexpr std::size_t headBytes = 8;
    return firstBytes.size() >= headBytes && firstBytes.starts_with(mark) && firstBytes[headBytes - 1] == '\0';
}

columnar::TableSummary summariseArrow(const std::filesystem::path& file) {
    const arrow::ArrowColumns columns(file);
    columnar::TableSummary summary = columnar::summaryOf(columns);
    summary.description = fmt::format("{} batches", columns.batches());
    return summary;
}

std::unique_ptr<TableReader> openArrow(const std::filesystem::path& file, const std::vector<std::string>& columns,
                                       const Schema* wanted, RunContext& context) {
    auto source = std::make_unique<arrow::ArrowColumns>(file);
    if (!source->warning().empty()) {
        context.warn(file.string() + ": " + source->warning());
    }
    return columnar::openColumns(std::move(source), columns, wanted, context);
}

}  // namespace velmorak
