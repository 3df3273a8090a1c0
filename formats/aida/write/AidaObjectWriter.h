#pragma once

#include <string>
#include <string_view>

#include <velmorak/Histogram.h>

namespace velmorak::io {

/// <element name title path ...>, without the end tag. more is inserted before the closing bracket.
std::string beginElement(std::string_view element, const DataObject& object, const std::string& folder,
                         std::string_view more = {});
/// ' name="number"', or empty if the number is not finite.
std::string numberAttribute(std::string_view name, double number);
std::string axisElement(const Axis& axis, char direction);

/// Annotation items for data that the format cannot hold elsewhere.
struct AnnotationText {
    explicit AnnotationText(const DataObject& object);
    void add(std::string_view key, std::string_view value);
    /// Adds a list separated by "; ", as one item or several.
    void addList(std::string_view key, std::string_view list);
    /// @return the whole element, including the object's items that are not replaced.
    std::string finish(const DataObject& object);

    std::string items;
};

/// @return the element of a histogram, a profile, points or a function.
/// @throws Failure for an object of another class.
std::string objectElement(const DataObject& object, const std::string& folder);

}  // namespace velmorak::io
