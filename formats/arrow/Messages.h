#pragma once

#include "arrow/Schema.h"
#include "columnar/FileBytes.h"

namespace velmorak::arrow {

enum class Codec : std::int8_t { None = -1, Lz4 = 0, Zstd = 1 };

struct Node {
    std::uint64_t length = 0;
    bool mayHaveNulls = false;  ///< Some programs do not count them.
};

struct Buffer {
    std::uint64_t position = 0;  ///< In the file.
    std::uint64_t bytes = 0;
};

/// Rows of all columns, and where their buffers are.
struct Batch {
    std::uint64_t rows = 0;
    std::vector<Node> nodes;
    std::vector<Buffer> buffers;
    std::vector<std::uint64_t> viewBuffers;  ///< Number of further buffers of each column of views.
    Codec codec = Codec::None;
};

struct DictionaryBatch {
    std::int64_t id = 0;
    bool isDelta = false;       ///< Continues the values of the one before.
    std::size_t validFrom = 0;  ///< Number of the first batch that it applies to.
    Batch batch;
};

/// What a file or stream consists of.
struct Messages {
    std::vector<Field> fields;
    std::vector<Batch> batches;
    std::vector<DictionaryBatch> dictionaries;  ///< In the order of the file.
    bool hasUnionValidity = false;              ///< Unions of an old version.
    std::string warning;                        ///< That a stream has no end; empty if it has.
};

/// @throws Failure if it is neither a file nor a stream of Arrow, or its descriptions are damaged.
Messages readMessages(const columnar::FileBytes& file);

}  // namespace velmorak::arrow
