#include "root/write/WrittenClasses.h"

#include "root/write/ClassTable.h"

#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <array>
#include <charconv>
#include <utility>

namespace velmorak::root {
namespace {

using Storage = WrittenMember::Storage;

struct NumberName {
    std::string_view name;
    int number;
    std::size_t bytes;
};

constexpr std::array numberNames{NumberName{"char", 1, 1},
                                 NumberName{"short", 2, 2},
                                 NumberName{"int", 3, 4},
                                 NumberName{"float", 5, 4},
                                 NumberName{"double", 8, 8},
                                 NumberName{"unsigned char", 11, 1},
                                 NumberName{"unsigned short", 12, 2},
                                 NumberName{"unsigned int", 13, 4},
                                 NumberName{"Long64_t", 16, 8},
                                 NumberName{"bool", 18, 1}};
constexpr int intNumber = 3;
constexpr int bitsNumber = 15;

/// @return the part up to the separator, which it takes from the text with that part.
std::string_view takeUpTo(std::string_view& text, std::string_view separator) {
    const std::size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + separator.size());
    return part;
}

/// Number of the type; that of an int for an enumeration, and 0 for other types.
int numberOf(std::string_view type) {
    for (const NumberName& each : numberNames) {
        if (each.name == type) {
            return each.number;
        }
    }
    return type.find("::E") != std::string_view::npos || type.starts_with("EError") ? intNumber : 0;
}

Storage storageOf(const WrittenMember& member, bool isOwned) {
    if (member.length > 0) {
        return Storage::FixedArray;
    }
    if (!member.count.empty()) {
        return Storage::Numbers;
    }
    if (member.type == "TString") {
        return Storage::Text;
    }
    if (member.type.starts_with("TArray")) {
        return Storage::Array;
    }
    if (member.type.ends_with('*')) {
        return isOwned ? Storage::OwnedObject : Storage::Pointer;
    }
    return member.number > 0 ? Storage::Number : Storage::Object;
}

/// A line such as "fX: double* [fNpoints]", "fMaximum: double = -1111", "fFunctions: TList* ->" or "fMaxIndex: int 5".
WrittenMember memberOf(std::string_view line) {
    WrittenMember member;
    member.name = takeUpTo(line, ": ");
    std::string_view type = takeUpTo(line, " = ");
    readNumber(line, member.standard);
    const bool isOwned = type.ends_with(" ->");
    if (isOwned) {
        type.remove_suffix(3);
    }
    if (type.ends_with(']')) {
        const std::string_view all = type;
        std::string_view rest = all.substr(0, all.size() - 1);
        type = takeUpTo(rest, " [");
        member.count = rest;
    }
    if (type.ends_with(" 5")) {
        type.remove_suffix(2);
        member.length = 5;
    }
    member.type = type;
    member.number = numberOf(type.ends_with('*') ? type.substr(0, type.size() - 1) : type);
    if (member.name == "fBits") {
        member.number = bitsNumber;
    }
    member.storage = storageOf(member, isOwned);
    return member;
}

/// A line such as "class TH1D 3 TH1 TArrayD".
WrittenClass classOf(std::string_view line) {
    WrittenClass described;
    described.name = takeUpTo(line, " ");
    const std::string_view version = takeUpTo(line, " ");
    std::from_chars(version.data(), version.data() + version.size(), described.version);
    while (!line.empty()) {
        const std::string_view base = takeUpTo(line, " ");
        if (base.starts_with('#')) {
            std::from_chars(base.data() + 1, base.data() + base.size(), described.checksum);
        } else {
            described.bases.emplace_back(base);
        }
    }
    return described;
}

std::uint32_t mixed(std::uint32_t sum, std::string_view text) {
    for (const char c : text) {
        sum = sum * 3 + static_cast<unsigned char>(c);
    }
    return sum;
}

}  // namespace

WrittenClasses::WrittenClasses() {
    std::string_view lines = classTable();
    WrittenClass* current = nullptr;
    while (!lines.empty()) {
        const std::string_view line = trimmed(takeUpTo(lines, "\n"));
        if (line.starts_with("class ")) {
            WrittenClass described = classOf(line.substr(6));
            current = &(all[described.name] = std::move(described));
        } else if (!line.empty()) {
            current->members.push_back(memberOf(line));
        }
    }
}

std::uint32_t WrittenClasses::checksum(const WrittenClass& described) const {
    if (described.checksum != 0) {
        return described.checksum;
    }
    std::uint32_t sum = mixed(0, described.name);
    for (const std::string& base : described.bases) {
        sum = mixed(sum, base) * 3 + checksum(at(base));
    }
    for (const WrittenMember& member : described.members) {
        const bool isEnumeration = member.number == intNumber && member.type.find('E') != std::string::npos;
        sum = isEnumeration ? sum * 3 + 1 : sum;
        sum = mixed(mixed(sum, member.name), member.type);
        sum = member.length > 0 ? sum * 3 + static_cast<std::uint32_t>(member.length) : sum;
        sum = mixed(sum, member.count);
    }
    return sum;
}

std::size_t bytesOfNumber(int number) {
    for (const NumberName& each : numberNames) {
        if (each.number == number) {
            return each.bytes;
        }
    }
    return 4;
}

}  // namespace velmorak::root
