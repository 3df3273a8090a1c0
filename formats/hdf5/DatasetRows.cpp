#include "hdf5/DatasetRows.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <utility>

namespace velmorak::hdf5 {
namespace {

constexpr std::size_t blockBytes = std::size_t{1} << 22U;
constexpr std::uint64_t maxRowBytes = std::uint64_t{1} << 26U;
constexpr std::uint64_t maxPackedChunkBytes = 1'000'000'000;

/// Filters that the library lacks, by the numbers under which they are registered.
std::string nameOfFilter(H5Z_filter_t filter) {
    const std::map<H5Z_filter_t, std::string> names = {
        {307, "bzip2"},        {4, "szip"},    {32000, "LZF"},       {32001, "Blosc"}, {32004, "LZ4"},
        {32008, "bitshuffle"}, {32013, "ZFP"}, {32015, "Zstandard"}, {32017, "SZ"},    {32026, "Blosc2"}};
    const auto found = names.find(filter);
    return (found == names.end() ? "number" : found->second) + " " + std::to_string(filter);
}

/// A packed chunk is in memory as a whole, however small its packed bytes are.
std::string chunkProblem(hid_t list, std::size_t elementBytes) {
    std::array<hsize_t, H5S_MAX_RANK> chunk{};
    const int dimensions = H5Pget_layout(list) == H5D_CHUNKED ? H5Pget_chunk(list, H5S_MAX_RANK, chunk.data()) : 0;
    if (dimensions <= 0 || H5Pget_nfilters(list) <= 0) {
        return {};
    }
    auto bytes = static_cast<double>(elementBytes);
    for (int i = 0; i < dimensions; ++i) {
        bytes *= static_cast<double>(chunk[static_cast<std::size_t>(i)]);
    }
    return bytes <= static_cast<double>(maxPackedChunkBytes)
               ? std::string()
               : fmt::format(
                     "its packed chunks have {:.1f} GB each, and {:.1f} GB are the most; repack the file with "
                     "smaller ones (h5repack -l CHUNK=65536)",
                     bytes / 1e9, static_cast<double>(maxPackedChunkBytes) / 1e9);
}

/// @return why the bytes of the dataset are out of reach; empty if they are not.
std::string storageProblem(hid_t dataset, std::size_t elementBytes) {
    const Handle list(H5Dget_create_plist(dataset), H5Pclose);
    if (!list) {
        return "its properties cannot be read: " + lastError();
    }
    if (H5Pget_layout(list.id()) == H5D_VIRTUAL || H5Pget_external_count(list.id()) > 0) {
        return "its data are in other files, which are not opened";
    }
    const int count = H5Pget_nfilters(list.id());
    for (int i = 0; i < count; ++i) {
        unsigned flags = 0;
        std::size_t values = 0;
        const H5Z_filter_t filter =
            H5Pget_filter2(list.id(), static_cast<unsigned>(i), &flags, &values, nullptr, 0, nullptr, nullptr);
        if (H5Zfilter_avail(filter) <= 0) {
            return "its data are packed by the filter " + nameOfFilter(filter) +
                   ", which is not installed; repack the file with gzip (h5repack -f GZIP=4)";
        }
    }
    return chunkProblem(list.id(), elementBytes);
}

std::string shapeProblem(const Dataset& dataset) {
    if (dataset.shape.size() > 2) {
        return "it has " + std::to_string(dataset.shape.size()) + " dimensions; a table has one or two";
    }
    if (dataset.elementBytes == 0 || dataset.width() > maxRowBytes / dataset.elementBytes) {
        return "its rows are too large";
    }
    return {};
}

/// Bytes that the library has stored for texts and lists.
class LibraryBuffer {
public:
    LibraryBuffer(hid_t type, hid_t space, std::size_t bytes) : bytes(bytes, '\0'), type(type), space(space) {}
    LibraryBuffer(const LibraryBuffer&) = delete;
    LibraryBuffer& operator=(const LibraryBuffer&) = delete;
    ~LibraryBuffer() { H5Dvlen_reclaim(type, space, H5P_DEFAULT, bytes.data()); }

    char* data() { return bytes.data(); }

private:
    std::string bytes;
    hid_t type;
    hid_t space;
};

void appendValues(Column& target, const Leaf& leaf, const char* first, std::size_t stride, std::size_t count) {
    if (leaf.kind == Leaf::Kind::Text) {
        appendTexts(target, leaf, first, stride, count);
    } else {
        appendNumbers(target, leaf.number, first, stride, count);
    }
}

void appendLongText(Column& target, const char* from) {
    const char* text = nullptr;
    std::memcpy(&text, from, sizeof(text));
    std::get<Column::Texts>(target.values).push_back(text ? toUtf8(text) : std::string());
}

void appendLongList(Column& target, const Leaf& leaf, const char* from) {
    hvl_t list{};
    std::memcpy(&list, from, sizeof(list));
    if (list.p && list.len > 0) {
        appendNumbers(target, leaf.number, static_cast<const char*>(list.p), leaf.number.bytes, list.len);
    }
    target.offsets.push_back(target.valueCount());
}

}  // namespace

Dataset openDataset(hid_t place, const std::string& name, const std::string& path) {
    Dataset dataset{.handle = Handle(H5Dopen2(place, name.c_str(), H5P_DEFAULT), H5Dclose), .path = path};
    require(static_cast<bool>(dataset.handle), "the dataset \"" + path + "\" cannot be opened");
    const Handle type(H5Dget_type(dataset.handle.id()), H5Tclose);
    const Handle space(H5Dget_space(dataset.handle.id()), H5Sclose);
    require(type && space, "the dataset \"" + path + "\" cannot be opened");
    if (H5Sget_simple_extent_type(space.id()) == H5S_NULL) {
        dataset.problem = "it is empty";
        return dataset;
    }
    const int dimensions = std::clamp(H5Sget_simple_extent_ndims(space.id()), 0, H5S_MAX_RANK);
    std::array<hsize_t, H5S_MAX_RANK> lengths{};
    H5Sget_simple_extent_dims(space.id(), lengths.data(), nullptr);
    dataset.shape.assign(lengths.begin(), lengths.begin() + dimensions);
    dataset.elementBytes = H5Tget_size(type.id());
    dataset.problem = shapeProblem(dataset);
    if (dataset.problem.empty()) {
        dataset.problem = storageProblem(dataset.handle.id(), dataset.elementBytes);
    }
    dataset.leaves = leavesOf(type.id());
    dataset.hasStoredApart = H5Tdetect_class(type.id(), H5T_VLEN) > 0 ||
                             std::ranges::count(dataset.leaves, Leaf::Kind::LongText, &Leaf::kind) > 0;
    return dataset;
}

DatasetRows::DatasetRows(const Dataset& dataset, const std::string& file)
    : dataset(dataset), name(file + ", dataset \"" + dataset.path + "\"") {
    // Where values are stored apart, an element has other bytes in the file than in memory.
    std::optional<ChunkLayout> layout;
    if (!dataset.hasStoredApart) {
        layout = chunkLayoutOf(dataset.handle.id(), dataset.rowBytes());
    }
    if (layout) {
        chunks = std::make_unique<Chunks>(dataset.handle.id(), std::move(*layout), name);
    }
}

void DatasetRows::fail(std::uint64_t row) const {
    throw Failure(name + ", rows from " + std::to_string(row) + ": " + lastError());
}

void DatasetRows::read(std::uint64_t first, std::size_t rows, const Targets& targets, const RunContext& context) {
    Targets fromBytes;
    for (const auto& [column, target] : targets) {
        if (dataset.leaves[column->leaf].needsLibrary()) {
            readByLibrary(first, rows, *column, *target);
        } else {
            fromBytes.emplace_back(column, target);
        }
    }
    if (fromBytes.empty()) {
        return;
    }
    if (chunks) {
        readChunks(first, rows, fromBytes, context);
    } else {
        readBlocks(first, rows, fromBytes, context);
    }
}

void DatasetRows::append(const Targets& targets, Piece piece) const {
    const auto stride = static_cast<std::size_t>(dataset.rowBytes());
    for (const auto& [column, target] : targets) {
        const Leaf& leaf = dataset.leaves[column->leaf];
        const char* first = piece.first + column->offset;
        if (!column->isList) {
            appendValues(*target, leaf, first, stride, piece.second);
            continue;
        }
        for (std::size_t row = 0; row < piece.second; ++row) {
            appendValues(*target, leaf, first + row * stride, column->step, column->count);
            target->offsets.push_back(target->offsets.back() + column->count);
        }
    }
}

void DatasetRows::readChunks(std::uint64_t first, std::size_t rows, const Targets& targets,
                             const RunContext& context) const {
    const std::uint64_t chunkRows = chunks->layout().rows;
    const auto stride = static_cast<std::size_t>(dataset.rowBytes());
    for (std::size_t done = 0; done < rows;) {
        if (context.isStopping()) {
            throw Stopped();
        }
        const std::uint64_t row = first + done;
        const auto within = static_cast<std::size_t>(row % chunkRows);
        const std::size_t count = std::min<std::size_t>(rows - done, static_cast<std::size_t>(chunkRows) - within);
        const Chunks::Bytes bytes = chunks->chunk(row / chunkRows);
        append(targets, {bytes->data() + within * stride, count});
        done += count;
    }
}

namespace {

/// A selection of rows of a dataset. Called under the lock.
Handle selectedRows(const Dataset& dataset, std::uint64_t first, std::size_t rows) {
    Handle space(H5Dget_space(dataset.handle.id()), H5Sclose);
    const std::array<hsize_t, 2> start = {first, 0};
    const std::array<hsize_t, 2> count = {rows, dataset.width()};
    if (!dataset.shape.empty()) {
        H5Sselect_hyperslab(space.id(), H5S_SELECT_SET, start.data(), nullptr, count.data(), nullptr);
    }
    return space;
}

Handle memorySpace(const Dataset& dataset, std::size_t rows) {
    const hsize_t elements = rows * dataset.width();
    return {H5Screate_simple(1, &elements, nullptr), H5Sclose};
}

}  // namespace

void DatasetRows::readBlocks(std::uint64_t first, std::size_t rows, const Targets& targets,
                             const RunContext& context) const {
    const auto stride = static_cast<std::size_t>(dataset.rowBytes());
    const std::size_t rowsInBlock = std::max<std::size_t>(1, blockBytes / std::max<std::size_t>(1, stride));
    const auto block = std::make_unique_for_overwrite<char[]>(std::min(rowsInBlock, rows) * stride);
    for (std::size_t done = 0; done < rows; done += rowsInBlock) {
        if (context.isStopping()) {
            throw Stopped();
        }
        const std::size_t count = std::min(rowsInBlock, rows - done);
        {
            const LibraryLock lock;
            const Handle type(H5Dget_type(dataset.handle.id()), H5Tclose);
            const Handle space = selectedRows(dataset, first + done, count);
            const Handle memory = memorySpace(dataset, count);
            if (H5Dread(dataset.handle.id(), type.id(), memory.id(), space.id(), H5P_DEFAULT, block.get()) < 0) {
                fail(first + done);
            }
            if (dataset.hasStoredApart) {
                append(targets, {block.get(), count});
                H5Dvlen_reclaim(type.id(), memory.id(), H5P_DEFAULT, block.get());
                continue;
            }
        }
        append(targets, {block.get(), count});
    }
}

void DatasetRows::readByLibrary(std::uint64_t first, std::size_t rows, const DatasetColumn& column,
                                Column& target) const {
    const Leaf& leaf = dataset.leaves[column.leaf];
    const LibraryLock lock;
    const Handle type = memoryTypeOf(leaf);
    const Handle space = selectedRows(dataset, first, rows);
    const Handle memory = memorySpace(dataset, rows);
    const std::size_t size = H5Tget_size(type.id());
    LibraryBuffer buffer(type.id(), memory.id(), rows * static_cast<std::size_t>(dataset.width()) * size);
    if (H5Dread(dataset.handle.id(), type.id(), memory.id(), space.id(), H5P_DEFAULT, buffer.data()) < 0) {
        fail(first);
    }
    const std::size_t stride = static_cast<std::size_t>(dataset.width()) * size;
    for (std::size_t row = 0; row < rows; ++row) {
        const char* from = buffer.data() + row * stride + column.first * size;
        if (leaf.kind == Leaf::Kind::LongText) {
            appendLongText(target, from);
        } else if (leaf.kind == Leaf::Kind::LongList) {
            appendLongList(target, leaf, from);
        } else {
            appendNumbers(target, leaf.number, from, size, column.count);
            if (column.isList) {
                target.offsets.push_back(target.valueCount());
            }
        }
    }
}

}  // namespace velmorak::hdf5
