#include "WrittenColumns.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Failure.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <type_traits>
#include <utility>

namespace velmorak {
namespace {

void saveColumn(const Column& column, StateWriter& writer) {
    writer.list(column.offsets);
    std::visit(
        [&](const auto& values) {
            if constexpr (std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                writer.number<std::uint64_t>(values.size());
                std::for_each(values.begin(), values.end(), [&](const std::string& text) { writer.text(text); });
            } else {
                writer.list(values);
            }
        },
        column.values);
}

template <typename Values>
Values loadValues(StateReader& reader) {
    if constexpr (std::is_same_v<Values, Column::Texts>) {
        constexpr std::size_t minBytes = 8;
        Values texts(reader.length(minBytes));
        std::generate(texts.begin(), texts.end(), [&] { return reader.text(); });
        return texts;
    } else {
        return reader.list<Values>();
    }
}

Column loadColumn(const ColumnInfo& info, std::size_t rows, StateReader& reader) {
    Column column;
    column.offsets = reader.list<std::vector<std::uint64_t>>();
    switch (info.type) {
        case ColumnType::Real:
            column.values = loadValues<Column::Reals>(reader);
            break;
        case ColumnType::Integer:
            column.values = loadValues<Column::Integers>(reader);
            break;
        case ColumnType::Boolean:
            column.values = loadValues<Column::Booleans>(reader);
            break;
        case ColumnType::Text:
            column.values = loadValues<Column::Texts>(reader);
            break;
    }
    const std::vector<std::uint64_t>& offsets = column.offsets;
    const bool isConsistent = info.isList ? offsets.size() == rows + 1 && offsets.front() == 0 &&
                                                offsets.back() == column.valueCount() &&
                                                std::is_sorted(offsets.begin(), offsets.end())
                                          : offsets.empty() && column.valueCount() == rows;
    reader.require(isConsistent, "a column does not have the values of its rows");
    return column;
}

}  // namespace

void WrittenColumns::fill(const Chunk& chunk) {
    if (chunk.rows == 0) {
        return;
    }
    rows.push_back({chunk.columns, chunk.rows});
    for (const ColumnPtr& column : chunk.columns) {
        bytes += bytesIn(*column);
    }
}

void WrittenColumns::merge(AccumulatorState& other) {
    auto& next = static_cast<WrittenColumns&>(other);
    if (bytes + next.bytes > maxBytesKept) {
        handOver();
        next.handOver();
        hasWritten = true;
    } else {
        std::move(next.rows.begin(), next.rows.end(), std::back_inserter(rows));
        bytes += next.bytes;
    }
}

void WrittenColumns::save(StateWriter& writer) const {
    if (hasWritten) {
        throw Failure("the state of \"" + writer.kind() +
                      "\" cannot be saved, because rows are in its file already; save it for fewer rows");
    }
    writer.version(1);
    writer.number<std::uint64_t>(rows.size());
    for (const Rows& each : rows) {
        writer.number<std::int64_t>(static_cast<std::int64_t>(each.count));
        for (const ColumnPtr& column : each.columns) {
            saveColumn(*column, writer);
        }
    }
}

void WrittenColumns::load(StateReader& reader) {
    reader.version(1);
    rows.resize(reader.length(sizeof(std::int64_t)));
    for (Rows& each : rows) {
        each.count = static_cast<std::size_t>(reader.count());
        for (const ColumnInfo& info : file.schema().columns()) {
            each.columns.push_back(std::make_shared<const Column>(loadColumn(info, each.count, reader)));
            bytes += bytesIn(*each.columns.back());
        }
    }
}

void WrittenColumns::handOver() {
    for (const Rows& each : rows) {
        file.append(each.columns, each.count);
    }
    hasWritten = hasWritten || !rows.empty();
    rows.clear();
    bytes = 0;
}

}  // namespace velmorak
