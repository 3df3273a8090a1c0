#include "numpy/NumpyFile.h"

#include "numpy/ArrayTable.h"

#include <velmorak/NameList.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <set>
#include <utility>

namespace velmorak {
namespace numpy {
namespace {

constexpr std::size_t maxColumns = 100000;
constexpr std::string_view archiveSignature = "PK\x03\x04";
constexpr std::string_view suffix = ".npy";
constexpr std::string_view offsetsSuffix = ".offsets";

ArrayHeader headerAt(const PlainFile& file, std::uint64_t position) {
    const std::uint64_t left = file.size() - position;
    std::string bytes(std::min<std::uint64_t>(prefixBytes, left), '\0');
    file.read(position, bytes.size(), bytes.data());
    bytes.resize(headerBytes(bytes));
    if (bytes.size() > left) {
        throw Failure("its header is cut off");
    }
    file.read(position, bytes.size(), bytes.data());
    return readHeader(bytes);
}

ArrayHeader headerOf(const PlainFile& file, const ZipMember& member) {
    std::string bytes(std::min<std::uint64_t>(prefixBytes, member.bytes), '\0');
    MemberStream(file, member).read(bytes.size(), bytes.data());
    bytes.resize(headerBytes(bytes));
    MemberStream(file, member).read(bytes.size(), bytes.data());
    return readHeader(bytes);
}

/// @param bytes that there are, with the header.
void checkSize(const ArrayHeader& header, std::uint64_t bytes) {
    if (header.dataBytes() > bytes - std::min(bytes, header.begin)) {
        throw Failure("the header announces " + std::to_string(header.dataBytes()) + " bytes of data, but there are " +
                      std::to_string(bytes - header.begin) + "; it was cut off, or is still being written");
    }
}

std::string problemOf(const ArrayHeader& header) {
    const std::size_t dimensions = header.shape.size();
    if (header.itemBytes == 0) {
        return "its elements have no bytes";
    }
    if (dimensions > 2) {
        return "it has " + std::to_string(dimensions) + " dimensions; a table has one or two";
    }
    if (dimensions == 2 && header.hasRecords) {
        return "its records have two dimensions; a table of records has one";
    }
    if (dimensions == 2 && header.shape[1] > maxColumns) {
        return "it has " + std::to_string(header.shape[1]) + " columns; a table has at most " +
               std::to_string(maxColumns);
    }
    return {};
}

StoredArray arrayAt(const PlainFile& file, const ZipMember& member) {
    StoredArray array{.name = member.name.substr(0, member.name.size() - suffix.size()), .header = {}};
    try {
        if (member.isDeflated) {
            array.header = headerOf(file, member);
            array.packed = member;
        } else {
            array.header = headerAt(file, member.position);
            array.position = member.position + array.header.begin;
        }
        checkSize(array.header, member.bytes);
        array.problem = problemOf(array.header);
    } catch (const Failure& failure) {
        array.problem = failure.what();
    }
    return array;
}

StoredArray arrayIn(const PlainFile& file) {
    try {
        StoredArray array{.name = {}, .header = headerAt(file, 0)};
        checkSize(array.header, file.size());
        array.position = array.header.begin;
        array.problem = problemOf(array.header);
        return array;
    } catch (const Failure& failure) {
        throw Failure(file.path().string() + ": " + failure.what());
    }
}

ArrayColumn columnOf(const StoredArray& array, const Field& field, const std::string& name) {
    return {.info = {.name = name, .type = field.element.type(), .isList = field.isList, .unit = {}},
            .problem = field.element.problem,
            .array = &array,
            .element = field.element,
            .offset = field.offset,
            .inItem = field.offset,
            .rowStride = array.header.itemBytes,
            .count = field.count};
}

/// The columns of an array of numbers with two dimensions: one for each position in the second, or its parts.
std::vector<ArrayColumn> positionsOf(const StoredArray& array, const std::string& stem) {
    const ArrayHeader& header = array.header;
    std::vector<ArrayColumn> columns;
    for (std::uint64_t i = 0; i < header.shape[1]; ++i) {
        for (const Field& field : header.fields) {
            std::string name = stem + std::to_string(i + 1);
            name += field.name.empty() ? "" : "." + field.name;
            ArrayColumn column = columnOf(array, field, name);
            column.offset += i * header.itemBytes * (header.isFortran ? header.shape[0] : 1);
            column.rowStride = header.itemBytes * (header.isFortran ? 1 : header.shape[1]);
            columns.push_back(std::move(column));
        }
    }
    return columns;
}

std::vector<std::string> namesOf(const std::vector<StoredArray>& arrays) {
    std::vector<std::string> names;
    names.reserve(arrays.size());
    for (const StoredArray& array : arrays) {
        names.push_back(array.name);
    }
    return names;
}

/// The arrays that make up the table.
std::vector<const StoredArray*> chosenFrom(const std::vector<StoredArray>& arrays, const std::string& object,
                                           const std::string& file) {
    std::vector<const StoredArray*> chosen;
    for (const StoredArray& array : arrays) {
        if (object.empty() || array.name == object) {
            chosen.push_back(&array);
        }
    }
    if (chosen.empty()) {
        throw Failure("object", arrays.empty() ? file + " contains no array"
                                               : file + " contains no array " + velmorak::quoted(object) +
                                                     "; it contains " + listOfNames(namesOf(arrays)));
    }
    if (chosen.size() == 1 && !chosen.front()->problem.empty()) {
        throw Failure(file + (object.empty() ? "" : ", array " + velmorak::quoted(object)) + ": " +
                      chosen.front()->problem);
    }
    return chosen;
}

/// The columns of an array; of one with offsets, lists.
std::vector<ArrayColumn> columnsWithLists(const StoredArray& array, const std::vector<StoredArray>& all, bool names) {
    std::vector<ArrayColumn> columns = numpy::columnsOf(array, names);
    for (ArrayColumn& column : columns) {
        column.offsets = offsetsOf(array, all);
        column.info.isList = column.info.isList || column.offsets != nullptr;
    }
    return columns;
}

/// The array only says where the lists of another one begin.
bool areOffsets(const StoredArray& array, const std::vector<StoredArray>& all) {
    if (!array.name.ends_with(offsetsSuffix)) {
        return false;
    }
    const std::string name = array.name.substr(0, array.name.size() - offsetsSuffix.size());
    const auto lists = std::ranges::find(all, name, &StoredArray::name);
    return lists != all.end() && offsetsOf(*lists, all) == &array;
}

/// The columns of several arrays, which must have the same number of rows.
std::vector<ArrayColumn> joinedColumns(const std::vector<const StoredArray*>& chosen,
                                       const std::vector<StoredArray>& all, const std::string& file,
                                       RunContext& context) {
    std::vector<ArrayColumn> columns;
    std::set<std::uint64_t> lengths;
    for (const StoredArray* array : chosen) {
        if (chosen.size() > 1 && areOffsets(*array, all)) {
            continue;
        }
        if (!array->problem.empty()) {
            context.warn(file + ": array " + velmorak::quoted(array->name) + " is left out: " + array->problem);
            continue;
        }
        for (ArrayColumn& column : columnsWithLists(*array, all, chosen.size() > 1)) {
            lengths.insert(column.rows());
            columns.push_back(std::move(column));
        }
    }
    if (lengths.size() > 1) {
        std::vector<std::string> names;
        names.reserve(chosen.size());
        for (const StoredArray* array : chosen) {
            names.push_back(array->name + " (" + std::to_string(array->header.rows()) + ")");
        }
        throw Failure("object",
                      file + " contains arrays of different lengths; enter the name of one: " + listOfNames(names));
    }
    return columns;
}

/// Restricts the columns to those that are wanted and that can be read.
std::vector<ArrayColumn> offeredOf(std::vector<ArrayColumn> all, const std::vector<std::string>& wanted,
                                   const std::string& file, RunContext& context) {
    std::vector<ArrayColumn> offered;
    std::set<std::string> taken;
    for (const std::string& name : wanted) {
        const auto found = std::ranges::find(all, name, [](const ArrayColumn& column) { return column.info.name; });
        if (found == all.end()) {
            std::vector<std::string> names;
            names.reserve(all.size());
            for (const ArrayColumn& column : all) {
                names.push_back(column.info.name);
            }
            throw Failure("columns",
                          "there is no column " + velmorak::quoted(name) + "; the columns are " + listOfNames(names));
        }
        if (!found->problem.empty()) {
            throw Failure("columns", "the column " + velmorak::quoted(name) + " cannot be read: " + found->problem);
        }
        if (taken.insert(name).second) {
            offered.push_back(*found);
        }
    }
    for (ArrayColumn& column : all) {
        if (!wanted.empty()) {
            break;
        }
        if (!column.problem.empty()) {
            context.warn(file + ": the column " + velmorak::quoted(column.info.name) +
                         " is left out: " + column.problem);
        } else if (taken.insert(column.info.name).second) {
            offered.push_back(std::move(column));
        }
    }
    return offered;
}

}  // namespace

std::vector<StoredArray> arraysIn(const PlainFile& file) {
    std::string first(std::min<std::uint64_t>(archiveSignature.size(), file.size()), '\0');
    file.read(0, first.size(), first.data());
    std::vector<StoredArray> arrays;
    if (first != archiveSignature) {
        arrays.push_back(arrayIn(file));
        return arrays;
    }
    for (const ZipMember& member : zipMembers(file)) {
        if (member.name.ends_with(suffix)) {
            arrays.push_back(arrayAt(file, member));
        }
    }
    return arrays;
}

const StoredArray* offsetsOf(const StoredArray& array, const std::vector<StoredArray>& arrays) {
    const auto found = std::ranges::find(arrays, array.name + std::string(offsetsSuffix), &StoredArray::name);
    const auto isPlain = [](const StoredArray& each) {
        return each.problem.empty() && each.header.shape.size() == 1 && !each.header.hasRecords;
    };
    if (array.name.empty() || found == arrays.end() || !isPlain(array) || !isPlain(*found)) {
        return nullptr;
    }
    const Element& element = found->header.fields.front().element;
    const bool isIntegral = element.kind == Element::Kind::Number && element.number.bytes == 8 &&
                            columnTypeOf(element.number) == ColumnType::Integer;
    return isIntegral && found->header.rows() > 0 ? &*found : nullptr;
}

std::vector<ArrayColumn> columnsOf(const StoredArray& array, bool names) {
    if (array.header.shape.size() == 2) {
        return positionsOf(array, names ? array.name + "_" : "c");
    }
    std::vector<ArrayColumn> columns;
    for (const Field& field : array.header.fields) {
        if (array.header.hasRecords) {
            columns.push_back(columnOf(array, field, names ? array.name + "." + field.name : field.name));
        } else {
            const std::string stem = array.name.empty() ? "value" : array.name;
            columns.push_back(columnOf(array, field, field.name.empty() ? stem : stem + "." + field.name));
        }
    }
    return columns;
}

}  // namespace numpy

bool isNumpy(const FileStart& start) {
    if (start.bytes.starts_with(numpy::arraySignature)) {
        return true;
    }
    // The name of the first member of an archive follows 30 bytes of its header.
    constexpr std::size_t nameAt = 30;
    if (!start.bytes.starts_with(numpy::archiveSignature) || start.bytes.size() < nameAt) {
        return false;
    }
    const std::size_t length = static_cast<unsigned char>(start.bytes[26]) +
                               256U * static_cast<std::size_t>(static_cast<unsigned char>(start.bytes[27]));
    return std::string_view(start.bytes).substr(nameAt, length).ends_with(numpy::suffix);
}

std::vector<FileObject> listNumpy(const std::filesystem::path& file) {
    const PlainFile opened(file);
    std::vector<FileObject> objects;
    const std::vector<numpy::StoredArray> arrays = numpy::arraysIn(opened);
    for (const numpy::StoredArray& array : arrays) {
        FileObject object{.path = array.name, .type = "array", .description = array.problem};
        if (array.problem.empty()) {
            object.rows = array.header.rows();
            object.isTable = true;
            for (const numpy::ArrayColumn& column : numpy::columnsWithLists(array, arrays, false)) {
                object.rows = column.rows();
                object.columns.push_back({.info = column.info, .problem = column.problem});
            }
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

std::unique_ptr<TableReader> openNumpyTable(const std::filesystem::path& file, const std::string& object,
                                            const std::vector<std::string>& columns, RunContext& context) {
    const std::string name = file.string();
    auto opened = std::make_shared<const PlainFile>(file);
    std::vector<numpy::StoredArray> arrays = numpy::arraysIn(*opened);
    const std::vector<const numpy::StoredArray*> chosen = numpy::chosenFrom(arrays, object, name);
    std::vector<numpy::ArrayColumn> offered =
        numpy::offeredOf(numpy::joinedColumns(chosen, arrays, name, context), columns, name, context);
    if (offered.empty()) {
        throw Failure(name + " contains no column that can be read");
    }
    const std::uint64_t rows = offered.front().rows();
    // The columns point into the arrays, which keep their place when the vector is moved.
    return numpy::openArrays(std::move(opened), std::move(arrays), std::move(offered), rows, context);
}

}  // namespace velmorak
