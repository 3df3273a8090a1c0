#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::root {

/// A member of a class as files describe it.
struct WrittenMember {
    /// How a member is stored.
    enum class Storage {
        Number,       ///< One number.
        Numbers,      ///< Several numbers, counted by another member.
        FixedArray,   ///< A fixed number of integers.
        Text,         ///< TString.
        Array,        ///< TArrayD, TArrayI: their length, then the numbers.
        Object,       ///< An object within the other.
        OwnedObject,  ///< As Object, though the member is a pointer.
        Pointer       ///< An object that several members may refer to, or none.
    };
    std::string name;
    std::string type;
    std::string count;  ///< Member that holds the number of Numbers.
    Storage storage = Storage::Number;
    int number = 0;          ///< Of the type in files: 1 char, 2 short, ... 18 bool.
    std::size_t length = 0;  ///< Of a fixed array.
    double standard = 0.0;   ///< Value of a number that is not set.
};

struct WrittenClass {
    std::string name;
    int version = 0;
    std::vector<std::string> bases;
    std::uint32_t checksum = 0;  ///< 0 if it follows from bases and members.
    std::vector<WrittenMember> members;
};

/// The classes that we write, in the versions of ROOT 6.22.
class WrittenClasses {
public:
    WrittenClasses();

    /// @throws std::out_of_range if there is no such class.
    const WrittenClass& at(std::string_view name) const { return all.at(std::string(name)); }
    bool contains(std::string_view name) const { return all.contains(std::string(name)); }
    /// A number that depends on the bases and members of a class; programs compare it with that of their own class.
    std::uint32_t checksum(const WrittenClass& described) const;

private:
    std::map<std::string, WrittenClass> all;
};

/// @return the bytes of a number.
/// @param number of the type in files.
std::size_t bytesOfNumber(int number);

}  // namespace velmorak::root
