#include "run/announce/TableJson.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/Utf8.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>

namespace velmorak {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t maxRows = 20;
constexpr std::size_t maxCharacters = 120;
constexpr std::size_t maxListed = 12;

std::string shortenedText(const std::string& text) {
    std::size_t end = 0;
    for (std::size_t count = 0; end < text.size(); ++count) {
        if (count == maxCharacters) {
            return text.substr(0, end) + "\u2026";
        }
        end += std::max<std::size_t>(1, characterBytes(std::string_view(text).substr(end)));
    }
    return text;
}

std::string shownValue(double value) {
    return formatNumber(value);
}

std::string shownValue(std::int64_t value) {
    return std::to_string(value);
}

std::string shownValue(std::uint8_t value) {
    return value != 0 ? "true" : "false";
}

std::string shownValue(const std::string& value) {
    return shortenedText(value);
}

std::string shownCell(const Column& column, std::size_t row) {
    return std::visit(
        [&](const auto& values) {
            if (!column.isList()) {
                return shownValue(values.at(row));
            }
            const std::uint64_t begin = column.offsets.at(row);
            const std::uint64_t end = column.offsets.at(row + 1);
            std::string text = "[";
            for (std::uint64_t i = begin; i < std::min<std::uint64_t>(end, begin + maxListed); ++i) {
                text += (i > begin ? ", " : "") + shownValue(values.at(i));
            }
            return text + (end - begin > maxListed ? ", \u2026]" : "]");
        },
        column.values);
}

Json columnsJson(const TableHead& head) {
    Json all = Json::array();
    for (std::size_t i = 0; i < head.columns.size(); ++i) {
        const ColumnInfo& column = head.columns[i];
        const bool isUsed = !head.pieces.empty() && head.pieces.front().columns.at(i) != nullptr;
        all.push_back({{"name", column.name},
                       {"type", nameOf(column.type)},
                       {"list", column.isList},
                       {"unit", column.unit},
                       {"used", isUsed}});
    }
    return all;
}

}  // namespace

Json tableEvent(const PipelineNode& node, const TableHead& head) {
    const auto output = std::find_if(node.outputs.begin(), node.outputs.end(),
                                     [](const OutputSpec& each) { return each.type == ValueType::Table; });
    Json rows = Json::array();
    for (const Chunk& piece : head.pieces) {
        for (std::size_t row = 0; row < piece.rows && rows.size() < maxRows; ++row) {
            Json cells = Json::array();
            for (const ColumnPtr& column : piece.columns) {
                cells.push_back(column ? Json(shownCell(*column, row)) : Json());
            }
            rows.push_back(std::move(cells));
        }
    }
    return {{"event", "table"},
            {"plugin", node.name},
            {"output", output == node.outputs.end() ? "" : output->name},
            {"columns", columnsJson(head)},
            {"columnsInAll", head.columnsInAll},
            {"rows", std::move(rows)}};
}

}  // namespace velmorak
