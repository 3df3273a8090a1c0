#pragma once

#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include <root/RootFile.h>

#include <string>

/// What the targets for ROOT files share: each reads one sort of the objects in a file.
namespace velmorak::fuzz {

template <typename Action>
void refusing(const Action& action) {
    try {
        action();
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
}

/// Reads the first chunks of a table.
inline void readRootTable(const std::filesystem::path& file, const std::string& object) {
    constexpr std::size_t maxChunks = 4;
    QuietContext context;
    const std::unique_ptr<TableReader> reader = openRootTable(file, object, {}, context);
    std::uint64_t row = 0;
    Chunk chunk;
    for (std::size_t i = 0; i < maxChunks && reader->next(chunk); ++i) {
        chunk.firstRow = row;
        row += chunk.rows;
        require(chunk.rows <= reader->rowsPerChunk(), "a chunk has no more rows than were announced");
        reader->complete(chunk);
        require(chunk.columns.size() == reader->schema().size(), "a chunk has the columns of its schema");
        for (std::size_t column = 0; column < chunk.columns.size(); ++column) {
            const Column& values = *chunk.columns[column];
            require(values.type() == reader->schema()[column].type, "a column has the type that was announced");
            require((values.isList() ? values.offsets.size() - 1 : values.valueCount()) == chunk.rows,
                    "a column has a value for each row");
        }
        chunk = {};
    }
}

/// Calls an action with the path and class of each of the first objects of a file.
template <typename Action>
void forEachRootObject(const std::uint8_t* data, std::size_t size, const Action& action) {
    constexpr std::size_t maxObjects = 8;
    const InputFile input(textOf(data, size));
    refusing([&] {
        std::size_t objects = 0;
        for (const RootEntry& entry : listRoot(input.path())) {
            if (objects++ < maxObjects) {
                refusing([&] { action(input.path(), entry); });
            }
        }
    });
}

}  // namespace velmorak::fuzz
