#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmorak::root {

struct Object;
/// Owns its object only where ObjectReader::read gives it.
using ObjectPtr = std::shared_ptr<Object>;

/// The value of a member; an array of numbers is reals or integers.
using Member = std::variant<std::monostate, double, std::int64_t, std::string, std::vector<double>,
                            std::vector<std::int64_t>, ObjectPtr, std::vector<ObjectPtr>>;

/// An object as its file describes it; members of base classes are among its own.
struct Object {
    std::string className;
    bool isWhole = true;  ///< No member was skipped.
    std::vector<std::pair<std::string, Member>> members;

    const Member* find(std::string_view name) const;
    /// @return the number, or the default if there is no such member or it is not a number.
    double real(std::string_view name, double otherwise = 0.0) const;
    std::int64_t integer(std::string_view name, std::int64_t otherwise = 0) const;
    /// @return empty if there is no such member or it is not a text.
    std::string text(std::string_view name) const;
    /// @return null if there is no such member or it is not an object.
    ObjectPtr object(std::string_view name) const;
    /// The objects of a list, or of a member that is a list. Empty ones are null.
    std::vector<ObjectPtr> objects(std::string_view name) const;
    std::vector<double> reals(std::string_view name) const;
    /// @return empty if there is no such member or it is not an array of integers.
    const std::vector<std::int64_t>& integers(std::string_view name) const;
};

/// Name of the member that holds the objects of a list or array.
inline constexpr std::string_view itemsMember = "items";
/// Name of the member that holds the numbers of an array.
inline constexpr std::string_view arrayMember = "fArray";

}  // namespace velmorak::root
