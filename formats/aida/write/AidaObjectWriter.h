#pragma once

#include <string>
#include <string_view>

#include <velmorak/Histogram1D.h>

namespace velmorak::io {

/// <element name title path ...>, without its end. more stands before the closing bracket.
std::string beginElement(std::string_view element, const DataObject& object, const std::string& folder,
                         std::string_view more = {});
/// ' name="number"', or nothing where the number is not finite.
std::string numberAttribute(std::string_view name, double number);
std::string axisElement(const Axis& axis, char direction);

/// Items that the format has no other place for: key and value, one after the other.
struct AnnotationText {
    explicit AnnotationText(const DataObject& object);
    void add(std::string_view key, std::string_view value);
    /// A value of parts with "; " between them, as one item or several.
    void addList(std::string_view key, std::string_view list);
    /// The whole element, with the object's own items that are not written anew.
    std::string finish(const DataObject& object);

    std::string items;
};

/// The element of a histogram of two or three dimensions, a profile, points or a function.
/// @throws Failure for an object of another class, and for axes whose number the format does not have.
std::string objectElement(const DataObject& object, const std::string& folder);

}  // namespace velmorak::io
