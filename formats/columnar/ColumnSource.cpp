#include "columnar/ColumnSource.h"

#include "columnar/Columns.h"
#include "columnar/StandIn.h"

#include <fmt/format.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <utility>

namespace velmorak::columnar {
namespace {

class ColumnReader : public TableReader, public BoundedReader {
public:
    ColumnReader(std::unique_ptr<const ColumnSource> source, const std::vector<std::string>& columns,
                 const Schema* wanted, RunContext& context);

    const Schema& schema() const override { return offered; }
    void selectColumns(const std::vector<bool>& needed) override { isNeeded = needed; }
    void leaveOutBeyond(const std::vector<ColumnBound>& limits) override { bounds = limits; }
    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    bool isNeededAt(std::size_t column) const { return isNeeded.empty() || isNeeded[column]; }
    const ColumnBound* boundBefore(const Chunk& chunk) const;
    void standFor(Chunk& chunk, const ColumnBound& bound) const;
    void addAll(const Schema* wanted);
    void addNamed(const std::string& name, const Schema* wanted);
    void add(std::size_t position, const Schema* wanted);

    std::unique_ptr<const ColumnSource> source;
    RunContext& context;
    Schema offered;
    std::vector<std::size_t> positions;  ///< Of the offered columns in the source.
    std::vector<bool> isNeeded;          ///< Empty for all.
    std::vector<ColumnBound> bounds;     ///< Of rows that are used.
    std::uint64_t row = 0;
};

ColumnReader::ColumnReader(std::unique_ptr<const ColumnSource> source, const std::vector<std::string>& columns,
                           const Schema* wanted, RunContext& context)
    : source(std::move(source)), context(context) {
    if (columns.empty()) {
        addAll(wanted);
    }
    for (const std::string& name : columns) {
        addNamed(name, wanted);
    }
}

bool ColumnReader::next(Chunk& chunk) {
    if (context.isStopping()) {
        throw Stopped();
    }
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(rowsInChunk(offered), source->rows() - row));
    row += chunk.rows;
    return chunk.rows > 0;
}

/// Chunks begin with different columns, so that threads seldom wait for each other's pages.
void ColumnReader::complete(Chunk& chunk) const {
    const std::size_t count = positions.size();
    chunk.columns.resize(count);
    if (const ColumnBound* const bound = boundBefore(chunk)) {
        standFor(chunk, *bound);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t column = (i + chunk.number) % count;
        if (context.isStopping()) {
            throw Stopped();
        }
        if (isNeededAt(column)) {
            chunk.columns[column] = source->read(positions[column], offered[column].type, chunk.firstRow, chunk.rows);
        }
    }
}

/// @return a bound that all rows of the chunk fail; null if none is known.
const ColumnBound* ColumnReader::boundBefore(const Chunk& chunk) const {
    const auto found = std::ranges::find_if(bounds, [&](const ColumnBound& bound) {
        return source->isBeyond(positions[bound.column], bound, chunk.firstRow, chunk.rows);
    });
    return found == bounds.end() ? nullptr : &*found;
}

/// Fills a chunk with rows that fail the bound.
void ColumnReader::standFor(Chunk& chunk, const ColumnBound& bound) const {
    for (std::size_t column = 0; column < positions.size(); ++column) {
        if (isNeededAt(column)) {
            chunk.columns[column] = standIn(offered[column], chunk.rows, bound.column == column ? &bound : nullptr);
        }
    }
}

std::optional<double> ColumnReader::fraction() const {
    return source->rows() == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(source->rows());
}

void ColumnReader::addAll(const Schema* wanted) {
    std::vector<std::string> left;
    for (std::size_t i = 0; i < source->size(); ++i) {
        if (source->complaint(i).empty()) {
            add(i, wanted);
        } else {
            left.push_back(source->info(i).name);
        }
    }
    if (!left.empty()) {
        context.warn(fmt::format("{} of {} columns cannot be read: {}", left.size(), source->size(), listOf(left)));
    }
}

void ColumnReader::addNamed(const std::string& name, const Schema* wanted) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < source->size(); ++i) {
        names.push_back(source->info(i).name);
        if (names.back() != name) {
            continue;
        }
        if (!source->complaint(i).empty()) {
            throw Failure("columns", fmt::format("the column {} of {} cannot be read: {}", velmorak::quoted(name),
                                                 source->path().string(), source->complaint(i)));
        }
        add(i, wanted);
        return;
    }
    throw Failure("columns", fmt::format("{} has no column {}; its columns are {}", source->path().string(),
                                         velmorak::quoted(name), listOf(names)));
}

void ColumnReader::add(std::size_t position, const Schema* wanted) {
    ColumnInfo info = source->info(position);
    if (offered.find(info.name)) {
        return;
    }
    const std::optional<std::size_t> asked = wanted ? wanted->find(info.name) : std::nullopt;
    if (asked && (*wanted)[*asked].type == ColumnType::Real && info.type != ColumnType::Text) {
        info.type = ColumnType::Real;
    }
    offered.add(std::move(info));
    positions.push_back(position);
}

}  // namespace

TableSummary summaryOf(const ColumnSource& source) {
    TableSummary summary;
    summary.rows = source.rows();
    for (std::size_t i = 0; i < source.size(); ++i) {
        summary.columns.push_back({source.info(i), source.complaint(i)});
    }
    return summary;
}

std::unique_ptr<TableReader> openColumns(std::unique_ptr<const ColumnSource> source,
                                         const std::vector<std::string>& columns, const Schema* wanted,
                                         RunContext& context) {
    return std::make_unique<ColumnReader>(std::move(source), columns, wanted, context);
}

}  // namespace velmorak::columnar
