#include <velmorak/ChunkFile.h>
#include <velmorak/Failure.h>
#include <velmorak/SystemReason.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <variant>

namespace velmorak {

namespace {

/// Layout of the rows of one append: for each column a header, then its offsets, then its values; texts as their
/// lengths, then their characters. Numbers as they are in memory: only the process that wrote the file reads it.
struct ColumnHeader {
    std::uint8_t isThere = 0;
    std::uint8_t type = 0;
    std::uint64_t offsets = 0;
    std::uint64_t values = 0;
};

template <typename Number>
void put(std::string& bytes, const Number* values, std::size_t count) {
    bytes.append(reinterpret_cast<const char*>(values), count * sizeof(Number));
}

void putTexts(std::string& bytes, const Column::Texts& texts) {
    for (const std::string& text : texts) {
        const std::uint64_t length = text.size();
        put(bytes, &length, 1);
    }
    for (const std::string& text : texts) {
        bytes.append(text);
    }
}

void putColumn(std::string& bytes, const Column& column) {
    const ColumnHeader header{1, static_cast<std::uint8_t>(column.values.index()), column.offsets.size(),
                              column.valueCount()};
    put(bytes, &header, 1);
    put(bytes, column.offsets.data(), column.offsets.size());
    std::visit(
        [&](const auto& values) {
            if constexpr (std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                putTexts(bytes, values);
            } else {
                put(bytes, values.data(), values.size());
            }
        },
        column.values);
}

/// Takes values from the bytes of one append.
class Taking {
public:
    explicit Taking(const std::string& bytes) : at(bytes.data()), end(bytes.data() + bytes.size()) {}

    bool isAtEnd() const { return at == end; }
    template <typename Number>
    void take(Number* values, std::size_t count) {
        checkRoom(count, sizeof(Number));
        std::copy_n(at, count * sizeof(Number), reinterpret_cast<char*>(values));
        at += count * sizeof(Number);
    }
    template <typename Values>
    Values list(std::size_t count) {
        if constexpr (std::is_same_v<Values, Column::Texts>) {
            return texts(count);
        } else {
            checkRoom(count, sizeof(typename Values::value_type));
            Values values(count);
            take(values.data(), count);
            return values;
        }
    }

private:
    void checkRoom(std::uint64_t count, std::size_t bytesOfEach) const;
    Column::Texts texts(std::size_t count);

    const char* at;
    const char* end;
};

void Taking::checkRoom(std::uint64_t count, std::size_t bytesOfEach) const {
    if (count > static_cast<std::uint64_t>(end - at) / bytesOfEach) {
        throw Failure("a temporary file was damaged while it was in use");
    }
}

Column::Texts Taking::texts(std::size_t count) {
    const auto lengths = list<std::vector<std::uint64_t>>(count);
    Column::Texts texts;
    texts.reserve(count);
    for (const std::uint64_t length : lengths) {
        checkRoom(length, 1);
        texts.emplace_back(at, length);
        at += length;
    }
    return texts;
}

template <std::size_t... types>
void takeValues(Taking& bytes, Column& column, const ColumnHeader& header, std::index_sequence<types...>) {
    using Values = decltype(column.values);
    ((header.type == types ? void(column.values = bytes.list<std::variant_alternative_t<types, Values>>(header.values))
                           : void()),
     ...);
}

ColumnPtr takeColumn(Taking& bytes) {
    ColumnHeader header;
    bytes.take(&header, 1);
    if (header.isThere == 0) {
        return nullptr;
    }
    Column column;
    column.offsets = bytes.list<std::vector<std::uint64_t>>(header.offsets);
    takeValues(bytes, column, header, std::make_index_sequence<std::variant_size_v<decltype(column.values)>>());
    return std::make_shared<const Column>(std::move(column));
}

std::string temporaryFolder() {
    std::error_code error;
    const std::string folder = std::filesystem::temp_directory_path(error).string();
    return error ? "/tmp" : folder;
}

[[noreturn]] void fail(const std::string& deed) {
    throw Failure("cannot " + deed + " a temporary file in \"" + temporaryFolder() + "\"" + systemReason(errno) +
                  "; set TMPDIR to a folder with more space, or VELMORAK_MEMORY_LIMIT to more memory");
}

}  // namespace

ChunkFile::ChunkFile() {
    std::string name = temporaryFolder() + "/velmorak-rows-XXXXXX";
    file = mkostemp(name.data(), O_CLOEXEC);
    if (file < 0) {
        fail("create");
    }
    unlink(name.c_str());
}

ChunkFile::~ChunkFile() {
    close(file);
}

ChunkFile::Place ChunkFile::append(const std::vector<ColumnPtr>& columns, std::size_t rows) {
    std::string bytes;
    for (const ColumnPtr& column : columns) {
        if (column) {
            putColumn(bytes, *column);
        } else {
            const ColumnHeader none;
            put(bytes, &none, 1);
        }
    }
    const Place place{end, bytes.size(), rows};
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = pwrite(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(end + done));
        if (written < 0 && errno != EINTR) {
            fail("write to");
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    end += bytes.size();
    return place;
}

std::vector<ColumnPtr> ChunkFile::read(const Place& place) const {
    std::string bytes(place.bytes, '\0');
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count =
            pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(place.offset + done));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            fail("read from");
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    std::vector<ColumnPtr> columns;
    Taking taking(bytes);
    while (!taking.isAtEnd()) {
        columns.push_back(takeColumn(taking));
    }
    return columns;
}

}  // namespace velmorak
