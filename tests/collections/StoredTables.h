#pragma once

#include "KindHarness.h"

#include <velmorak/StoredTable.h>

#include <memory>
#include <string>
#include <utility>

namespace velmorak::test {

/// A stored table that yields the chunks of another one.
class StoredSmallTable : public StoredTable {
public:
    explicit StoredSmallTable(SmallTable given) : given(std::move(given)) {}
    const Schema& schema() const override { return given.schema; }
    std::unique_ptr<TableReader> open() const override { return std::make_unique<Reader>(given); }

private:
    class Reader : public TableReader {
    public:
        explicit Reader(const SmallTable& table) : table(table) {}
        const Schema& schema() const override { return table.schema; }
        bool next(Chunk& chunk) override {
            if (at == table.chunks.size()) {
                return false;
            }
            chunk = table.chunks[at++];
            return true;
        }

    private:
        const SmallTable& table;
        std::size_t at = 0;
    };

    SmallTable given;
};

inline Value stored(SmallTable table) {
    return DataObjectPtr(std::make_shared<StoredSmallTable>(std::move(table)));
}

inline SmallTable rowsOf(const Value& value) {
    const auto table = std::dynamic_pointer_cast<const StoredTable>(std::get<DataObjectPtr>(value));
    SmallTable rows{table->schema(), {}};
    const std::unique_ptr<TableReader> reader = table->open();
    for (Chunk chunk; reader->next(chunk); chunk = {}) {
        reader->complete(chunk);
        rows.chunks.push_back(std::move(chunk));
    }
    return rows;
}

inline Column::Texts textsIn(const SmallTable& table, const std::string& name) {
    Column::Texts all;
    for (const Chunk& chunk : table.chunks) {
        const Column::Texts& texts = chunk.columns.at(table.schema.find(name).value())->texts();
        all.insert(all.end(), texts.begin(), texts.end());
    }
    return all;
}

}  // namespace velmorak::test
