#pragma once

#include "isolate/Helper.h"

#include <velmorak/FileCircumstances.h>
#include <velmorak/Parts.h>
#include <velmorak/RowBounds.h>
#include <velmorak/StoredTable.h>
#include <velmorak/TableReader.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Tables whose rows a helper process reads.
namespace velmorak::isolation {

/// What a helper process says of a reader that it has opened.
struct OpenedReader {
    std::uint64_t number = 0;
    Schema schema;
    std::uint64_t files = 1;
    std::optional<double> fraction;
    std::size_t rowsPerChunk = 0;
    bool isSeekable = false;
    bool hasCircumstances = false;
    std::vector<std::string> lists;
};

/// A reader in a helper process. Its chunks travel when they are completed.
class IsolatedReader : public TableReader, public FileSelection, public SeekableReader, public BoundedReader {
public:
    IsolatedReader(std::shared_ptr<Helper> helper, OpenedReader opened);
    ~IsolatedReader() override;

    const Schema& schema() const override { return opened.schema; }
    void selectColumns(const std::vector<bool>& needed) override;
    bool next(Chunk& chunk) override;
    std::uint64_t fileCount() const override { return opened.files; }
    std::size_t rowsPerChunk() const override { return opened.rowsPerChunk; }
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override { return opened.fraction; }

    void readOnly(const std::vector<bool>& isWanted) override;
    std::optional<std::string> bookmark() const override;
    void seek(std::uint64_t file, const ChunkStart& start) override;
    void leaveOutBeyond(const std::vector<ColumnBound>& bounds) override;

protected:
    std::string circumstances(std::uint64_t file) const;
    const std::vector<std::string>& listNames() const { return opened.lists; }

private:
    void readProgress(MessageReader& answer);

    const std::shared_ptr<Helper> helper;
    OpenedReader opened;
};

/// One that is told apart by having the second base.
class CircumstantialReader : public IsolatedReader, public FileCircumstances {
public:
    using IsolatedReader::IsolatedReader;
    std::string circumstancesOf(std::uint64_t file) const override { return circumstances(file); }
    const std::vector<std::string>& lists() const override { return listNames(); }
};

/// @param question about opening a reader, with its number. @return null if the kind gives none.
std::unique_ptr<TableReader> openReader(std::shared_ptr<Helper> helper, std::uint64_t number, Question& question);

/// A stored table in a helper process, which lives as long.
class IsolatedTable : public StoredTable {
public:
    IsolatedTable(std::shared_ptr<Helper> helper, std::uint64_t number, Schema columns);
    ~IsolatedTable() override;
    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override;

private:
    const std::shared_ptr<Helper> helper;
    const std::uint64_t number;
    const Schema columns;
};

/// Destroys an object in its helper process now. @throws nothing.
void dropNow(const std::shared_ptr<Helper>& helper, std::uint64_t number);

}  // namespace velmorak::isolation
