#include "root/write/TreeLayout.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>

namespace velmorak::root {
namespace {

/// What a basket's header has more than that of any record: version, sizes, and a flag.
constexpr std::size_t basketHeadBytes = 2 + 4 + 4 + 4 + 4 + 1;

}  // namespace

std::string nameInFile(const std::string& name, std::vector<std::string>& taken) {
    std::string plain = name.empty() ? "_" : name;
    std::replace_if(
        plain.begin(), plain.end(),
        [](char c) {
            return std::string_view("/;[]").find(c) != std::string_view::npos || static_cast<unsigned char>(c) < 0x20;
        },
        '_');
    std::string candidate = plain;
    for (int number = 2; std::find(taken.begin(), taken.end(), candidate) != taken.end(); ++number) {
        candidate = fmt::format("{}_{}", plain, number);
    }
    taken.push_back(candidate);
    return candidate;
}

std::size_t WrittenBranch::valueBytes() const {
    if (hasLengths) {
        return 4;
    }
    return type == ColumnType::Boolean || type == ColumnType::Text ? 1 : 8;
}

char WrittenBranch::letter() const {
    if (hasLengths) {
        return 'I';
    }
    switch (type) {
        case ColumnType::Integer:
            return 'L';
        case ColumnType::Boolean:
            return 'O';
        case ColumnType::Text:
            return 'C';
        case ColumnType::Real:
            break;
    }
    return 'D';
}

TreeLayout::TreeLayout(std::string name, const Schema& schema) : name(std::move(name)), schema(schema) {
    std::vector<std::string> names;
    std::vector<std::string> lengthNames;
    for (const ColumnInfo& column : schema.columns()) {
        names.push_back(nameInFile(column.name, lengthNames));
    }
    for (std::size_t i = 0; i < schema.size(); ++i) {
        WrittenBranch branch{.name = names[i], .column = i, .type = schema[i].type, .count = std::nullopt};
        if (schema[i].isList) {
            if (branch.type == ColumnType::Text) {
                throw Failure(
                    fmt::format("the column \"{}\" is a list of texts, which a flat tree cannot hold; leave it "
                                "out with Select",
                                schema[i].name));
            }
            WrittenBranch lengths = branch;
            lengths.name = nameInFile("n" + names[i], lengthNames);
            lengths.hasLengths = true;
            branch.count = branches.size();
            branches.push_back(std::move(lengths));
        }
        branches.push_back(std::move(branch));
    }
}

RecordHead TreeLayout::basketHead(const WrittenBranch& branch) const {
    return {.className = "TBasket", .name = branch.name, .title = name, .more = basketHeadBytes};
}

}  // namespace velmorak::root
