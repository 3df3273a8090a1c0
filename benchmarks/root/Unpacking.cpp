#include "Unpacking.h"

#include <root/container/File.h>
#include <root/objects/Classes.h>
#include <root/tree/Tree.h>

#include <fcntl.h>
#include <lz4.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <numeric>
#include <stdexcept>
#include <thread>

namespace velmorak::bench {

namespace {

constexpr std::size_t frameHeader = 9;
constexpr std::size_t checksumBytes = 8;

std::size_t sizeAt(const char* bytes) {
    const auto* raw = reinterpret_cast<const unsigned char*>(bytes);
    return raw[0] | static_cast<std::size_t>(raw[1]) << 8U | static_cast<std::size_t>(raw[2]) << 16U;
}

std::size_t unpackFrame(const char* frame, char* target) {
    const std::size_t size = sizeAt(frame + 3);
    const std::size_t unpacked = sizeAt(frame + 6);
    const char* const content = frame + frameHeader;
    if (std::memcmp(frame, "ZS", 2) == 0) {
        return ZSTD_decompress(target, unpacked, content, size);
    }
    if (std::memcmp(frame, "L4", 2) == 0) {
        return static_cast<std::size_t>(LZ4_decompress_safe(
            content + checksumBytes, target, static_cast<int>(size - checksumBytes), static_cast<int>(unpacked)));
    }
    uLongf length = unpacked;
    uncompress(reinterpret_cast<Bytef*>(target), &length, reinterpret_cast<const Bytef*>(content), size);
    return length;
}

/// Takes records in turn until there are none left.
std::size_t unpackSome(int file, const std::vector<PackedRecord>& records, std::atomic<std::size_t>& next) {
    std::vector<char> packed;
    std::vector<char> target;
    std::size_t sum = 0;
    for (std::size_t i = next++; i < records.size(); i = next++) {
        packed.resize(std::max(packed.size(), records[i].bytes));
        target.resize(std::max(target.size(), records[i].unpackedBytes));
        if (pread(file, packed.data(), records[i].bytes, static_cast<off_t>(records[i].position)) < 0) {
            throw std::runtime_error("cannot read");
        }
        std::size_t done = 0;
        for (std::size_t at = 0; at + frameHeader < records[i].bytes;
             at += frameHeader + sizeAt(packed.data() + at + 3)) {
            done += unpackFrame(packed.data() + at, target.data() + done);
        }
        sum += done;
    }
    return sum;
}

}  // namespace

std::vector<PackedRecord> recordsOf(const std::filesystem::path& path, const std::vector<std::string>& branches) {
    const root::File file(path);
    const auto isEvents = [](const root::Entry& entry) { return entry.path == "events"; };
    const auto entry = std::find_if(file.entries().begin(), file.entries().end(), isEvents);
    if (entry == file.entries().end()) {
        throw std::runtime_error("there is no tree");
    }
    const root::Tree tree(file, root::classesOf(file), *entry);
    std::vector<PackedRecord> records;
    for (const root::TreeColumn& column : tree.columns()) {
        if (std::find(branches.begin(), branches.end(), column.name) == branches.end()) {
            continue;
        }
        for (const root::BasketPlace& place : column.baskets) {
            const root::ByteVector bytes = file.bytesAt(place.position, std::min<std::size_t>(place.bytes, 500));
            root::Buffer buffer(bytes);
            const root::Key key = root::readKey(buffer);
            records.push_back({place.position + key.headBytes, key.bytes - key.headBytes, key.unpackedBytes});
        }
    }
    std::sort(records.begin(), records.end(),
              [](const auto& one, const auto& other) { return one.position < other.position; });
    return records;
}

std::size_t unpackAll(const std::filesystem::path& path, const std::vector<PackedRecord>& records, unsigned threads) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::atomic<std::size_t> next{0};
    std::vector<std::size_t> sums(threads);
    {
        std::vector<std::jthread> workers;
        for (unsigned i = 0; i < threads; ++i) {
            workers.emplace_back([&, i] { sums[i] = unpackSome(file, records, next); });
        }
    }
    close(file);
    return std::accumulate(sums.begin(), sums.end(), std::size_t{0});
}

}  // namespace velmorak::bench
