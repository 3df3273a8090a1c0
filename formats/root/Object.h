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
using ObjectPtr = std::shared_ptr<Object>;

/// The value of a member; an array of numbers is reals or integers.
using Member = std::variant<std::monostate, double, std::int64_t, std::string, std::vector<double>,
                            std::vector<std::int64_t>, ObjectPtr, std::vector<ObjectPtr>>;

/// An object as its file describes it, the members of its base classes among its own.
struct Object {
    std::string className;
    bool isWhole = true;  ///< Nothing had to be passed over.
    std::vector<std::pair<std::string, Member>> members;

    const Member* find(std::string_view name) const;
    /// @return the number, or the one given where there is no such member, or it is no number.
    double real(std::string_view name, double otherwise = 0.0) const;
    std::int64_t integer(std::string_view name, std::int64_t otherwise = 0) const;
    /// @return empty where there is no such member, or it is no text.
    std::string text(std::string_view name) const;
    /// @return null where there is no such member, or it is no object.
    ObjectPtr object(std::string_view name) const;
    /// The objects of a list, or of a member that is an object which is a list. Empty ones are null.
    std::vector<ObjectPtr> objects(std::string_view name) const;
    std::vector<double> reals(std::string_view name) const;
    std::vector<std::int64_t> integers(std::string_view name) const;
};

/// What a list or an array of objects has its objects in.
inline constexpr std::string_view itemsMember = "items";
/// What an array of numbers has its numbers in.
inline constexpr std::string_view arrayMember = "fArray";

}  // namespace velmorak::root
