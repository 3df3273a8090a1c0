#include "files/ChosenColumns.h"

#include <velmorak/Parts.h>
#include <velmorak/RowBounds.h>
#include <velmorak/Text.h>

#include <cstddef>
#include <optional>
#include <utility>

namespace velmorak {
namespace {

std::vector<std::size_t> positionsOf(const std::vector<std::string>& columns, const Schema& schema) {
    std::vector<std::size_t> positions;
    for (const std::string& name : columns) {
        const std::optional<std::size_t> position = schema.find(name);
        if (!position) {
            std::vector<std::string> known;
            for (const ColumnInfo& column : schema.columns()) {
                known.push_back(column.name);
            }
            throw Failure("columns", "there is no column " + velmorak::quoted(name) + suggestion(name, known));
        }
        positions.push_back(*position);
    }
    return positions;
}

class ChosenReader : public TableReader, public SeekableReader, public BoundedReader {
public:
    ChosenReader(std::unique_ptr<TableReader> whole, const std::vector<std::string>& columns);

    const Schema& schema() const override { return chosen; }
    void selectColumns(const std::vector<bool>& needed) override;
    void leaveOutBeyond(const std::vector<ColumnBound>& bounds) override;
    bool next(Chunk& chunk) override { return whole->next(chunk); }
    std::uint64_t fileCount() const override { return whole->fileCount(); }
    std::size_t rowsPerChunk() const override { return whole->rowsPerChunk(); }
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override { return whole->fraction(); }
    std::optional<std::string> bookmark() const override;
    void seek(std::uint64_t file, const ChunkStart& start) override;

private:
    std::unique_ptr<TableReader> whole;
    std::vector<std::size_t> positions;  ///< Of the chosen columns in the whole.
    Schema chosen;
};

ChosenReader::ChosenReader(std::unique_ptr<TableReader> whole, const std::vector<std::string>& columns)
    : whole(std::move(whole)), positions(positionsOf(columns, this->whole->schema())) {
    for (const std::size_t position : positions) {
        chosen.add(this->whole->schema()[position]);
    }
}

void ChosenReader::selectColumns(const std::vector<bool>& needed) {
    std::vector<bool> all(whole->schema().size(), false);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        all[positions[i]] = all[positions[i]] || needed[i];
    }
    whole->selectColumns(all);
}

void ChosenReader::leaveOutBeyond(const std::vector<ColumnBound>& bounds) {
    auto* const bounded = dynamic_cast<BoundedReader*>(whole.get());
    std::vector<ColumnBound> ofWhole = bounds;
    for (ColumnBound& bound : ofWhole) {
        bound.column = positions[bound.column];
    }
    if (bounded) {
        bounded->leaveOutBeyond(ofWhole);
    }
}

void ChosenReader::complete(Chunk& chunk) const {
    whole->complete(chunk);
    std::vector<ColumnPtr> columns;
    if (chunk.rows > 0) {
        for (const std::size_t position : positions) {
            columns.push_back(chunk.columns[position]);
        }
    }
    chunk.columns = std::move(columns);
}

std::optional<std::string> ChosenReader::bookmark() const {
    const auto* const reader = dynamic_cast<const SeekableReader*>(whole.get());
    return reader ? reader->bookmark() : std::nullopt;
}

void ChosenReader::seek(std::uint64_t file, const ChunkStart& start) {
    auto* const reader = dynamic_cast<SeekableReader*>(whole.get());
    if (!reader) {
        throw Failure("file", "the file cannot be read from row " + std::to_string(start.row + 1) + " on");
    }
    reader->seek(file, start);
}

class ChosenOpener : public FileOpener {
public:
    ChosenOpener(std::shared_ptr<const FileOpener> whole, std::vector<std::string> columns);

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;

    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                      RunContext& context) const override;

private:
    const std::shared_ptr<const FileOpener> whole;
    const std::vector<std::string> columns;
};

ChosenOpener::ChosenOpener(std::shared_ptr<const FileOpener> whole, std::vector<std::string> columns)
    : whole(std::move(whole)), columns(std::move(columns)) {}

FileColumns ChosenOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    const FileColumns all = whole->columnsOf(file, context);
    FileColumns chosen;
    for (const std::size_t position : positionsOf(columns, all.schema)) {
        chosen.schema.add(all.schema[position]);
        if (all.undecided.contains(all.schema[position].name)) {
            chosen.undecided.insert(all.schema[position].name);
        }
    }
    return chosen;
}

std::unique_ptr<TableReader> ChosenOpener::open(const std::filesystem::path& file, const Schema* wanted,
                                                RunContext& context) const {
    return std::make_unique<ChosenReader>(whole->open(file, wanted, context), columns);
}

}  // namespace

std::shared_ptr<const FileOpener> withColumns(std::shared_ptr<const FileOpener> opener,
                                              std::vector<std::string> columns) {
    if (columns.empty()) {
        return opener;
    }
    return std::make_shared<ChosenOpener>(std::move(opener), std::move(columns));
}

}  // namespace velmorak
