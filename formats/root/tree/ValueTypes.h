#pragma once

#include "root/container/Number.h"
#include "root/objects/Classes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::root {

/// Layout of the values of a type in the bytes of an entry.
struct ValueType {
    enum class Kind {
        Number,
        Text,
        List,
        Map,
        Object,      ///< A header unless it is bare, then its members.
        ObjectBase,  ///< A TObject, which has nothing for a table.
        Pointer,     ///< An object elsewhere, or within the entry.
        Unknown,     ///< Its header says how long it is.
    };
    Kind kind = Kind::Number;
    NumberType number = NumberType::Int32;
    NumberRange range = {};
    /// Of a list the type of its items, of a map those of keys and values, of an object those of its members.
    std::vector<ValueType> arguments = {};

    std::string name = {};                  ///< Of a member; empty for a base class.
    std::string className = {};             ///< Of an object; of a text "string" or "TString".
    int version = 0;                        ///< Of the class, if the file describes several; else 0.
    std::uint32_t checksum = 0;             ///< Likewise.
    std::size_t length = 1;                 ///< Of an array of fixed length.
    std::optional<std::size_t> count = {};  ///< Of an array: position of the member that holds its length.
    bool isCount = false;                   ///< Another member needs this one's value.
    bool hasHeader = false;                 ///< A collection or text that is a member.
    bool isBare = false;                    ///< An object without a header.
    std::string problem = {};               ///< Of a kind that cannot be read.
};

/// @param name C++ name, such as "map<string,vector<int> >"; names of unknown types are classes.
/// @return nothing if the name cannot be understood.
std::optional<ValueType> valueTypeNamed(std::string_view name);

/// Replaces the classes in a type by their members as the file describes them.
void addMembers(ValueType& type, const Classes& classes);

}  // namespace velmorak::root
