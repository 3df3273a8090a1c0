#include "numpy/ListOffsets.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <string>
#include <utility>

namespace velmorak::numpy {

ListOffsets::ListOffsets(std::shared_ptr<const PlainFile> opened, const StoredArray& array, std::uint64_t values)
    : file(std::move(opened)), array(array), values(values), position(array.position) {
    if (array.packed) {
        stream = std::make_unique<MemberStream>(*file, *array.packed);
        stream->skip(array.header.begin);
    }
}

void ListOffsets::read(std::size_t count, char* target) {
    if (stream) {
        stream->read(count, target);
    } else {
        file->read(position, count, target);
        position += count;
    }
}

void ListOffsets::readAhead(std::size_t lists) {
    if (known.size() > lists) {
        return;
    }
    const Element& element = array.header.fields.front().element;
    const std::size_t missing = lists + 1 - known.size();
    std::string bytes(missing * element.bytes, '\0');
    read(bytes.size(), bytes.data());
    Column column{.values = Column::Integers(), .offsets = {}};
    appendElements(column, element, bytes.data(), element.bytes, missing);
    for (const std::int64_t offset : column.integers()) {
        const std::uint64_t least = known.empty() ? 0 : known.back();
        const auto next = static_cast<std::uint64_t>(offset);
        if (next < least || next > values) {
            throw Failure(file->path().string() + ": the array " + velmorak::quoted(array.name) +
                          " is damaged: a list ends at " + std::to_string(offset) + ", but begins at " +
                          std::to_string(least) + ", and there are " + std::to_string(values) + " values");
        }
        known.push_back(next);
    }
}

std::vector<std::uint64_t> ListOffsets::take(std::size_t lists) {
    const auto end = known.begin() + static_cast<std::ptrdiff_t>(lists);
    std::vector<std::uint64_t> taken(known.begin(), end + 1);
    known.erase(known.begin(), end);
    return taken;
}

}  // namespace velmorak::numpy
