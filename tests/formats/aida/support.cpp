#include "support.h"

#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>
#include <zlib.h>

#include <fstream>
#include <iterator>

namespace velmorak {

std::string damaged(std::string bytes, std::mt19937& random) {
    for (std::size_t change = 0; change <= random() % 4; ++change) {
        bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    if (random() % 4 == 0) {
        bytes.resize(random() % bytes.size() + 1);
    }
    return bytes;
}

void addFile(::archive* target, const std::string& name, const std::string& content) {
    archive_entry* entry = archive_entry_new();
    archive_entry_set_pathname(entry, name.c_str());
    archive_entry_set_size(entry, static_cast<la_int64_t>(content.size()));
    archive_entry_set_filetype(entry, AE_IFREG);
    archive_write_header(target, entry);
    archive_write_data(target, content.data(), content.size());
    archive_entry_free(entry);
}

std::filesystem::path AidaFiles::fileWith(std::string_view bytes) const {
    const auto path = folder / "input.aida";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::filesystem::path AidaFiles::aidaWith(std::string_view objects) const {
    return fileWith("<?xml version=\"1.0\"?>\n<aida version=\"3.3\">\n" + std::string(objects) + "\n</aida>\n");
}

std::size_t Rows::count() const {
    std::size_t all = 0;
    for (const std::size_t rows : chunks) {
        all += rows;
    }
    return all;
}

namespace {

void append(Column& target, const Column& more) {
    std::visit(
        [&](const auto& values) {
            using Values = std::decay_t<decltype(values)>;
            if (target.values.index() != more.values.index()) {
                target.values = Values();
            }
            auto& all = std::get<Values>(target.values);
            all.insert(all.end(), values.begin(), values.end());
        },
        more.values);
    if (more.isList() && target.offsets.empty()) {
        target.offsets.push_back(0);
    }
    for (std::size_t row = 1; row < more.offsets.size(); ++row) {
        target.offsets.push_back(target.offsets.back() + more.offsets[row] - more.offsets[row - 1]);
    }
}

}  // namespace

Rows readRows(const std::filesystem::path& file, const std::string& object, RunContext& run) {
    const auto reader = openAidaTable(file, object, run);
    Rows rows;
    rows.schema = reader->schema();
    rows.columns.resize(rows.schema.size());
    Chunk chunk;
    try {
        while (reader->next(chunk)) {
            rows.chunks.push_back(chunk.rows);
            for (std::size_t column = 0; column < rows.columns.size(); ++column) {
                append(rows.columns[column], *chunk.columns[column]);
            }
        }
    } catch (const Failure& failure) {
        rows.failure = failure.what();
    }
    return rows;
}

std::filesystem::path ownFile(const std::string& name) {
    return std::filesystem::path(AIDA_FILES) / name;
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string gzipped(std::string_view bytes) {
    z_stream state{};
    deflateInit2(&state, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&state, bytes.size()), '\0');
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    state.avail_in = static_cast<uInt>(bytes.size());
    state.next_out = reinterpret_cast<Bytef*>(packed.data());
    state.avail_out = static_cast<uInt>(packed.size());
    deflate(&state, Z_FINISH);
    packed.resize(state.total_out);
    deflateEnd(&state);
    return packed;
}

std::string failureOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

}  // namespace velmorak
