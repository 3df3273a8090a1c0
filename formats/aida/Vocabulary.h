#pragma once

#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

/// The words of the AIDA format. Readers and writer take the names of elements, and their meaning, from here.
/// The binary form numbers the same words: aida/binary/WbxmlText.cpp.
namespace velmorak::io {

enum class AidaFamily { Histogram, Profile, Cloud, Tuple, Points, Function };

/// A type of object that a file may hold at its top level.
struct AidaObjectType {
    std::string_view element;
    AidaFamily family;
    std::size_t dimensions;  ///< 0 where the name of the element does not fix them.
    ValueType value;         ///< What the object is read as. A cloud that was converted is read as its histogram.
};

inline constexpr std::array<AidaObjectType, 11> aidaObjectTypes{{
    {"cloud1d", AidaFamily::Cloud, 1, ValueType::Table},
    {"cloud2d", AidaFamily::Cloud, 2, ValueType::Table},
    {"cloud3d", AidaFamily::Cloud, 3, ValueType::Table},
    {"dataPointSet", AidaFamily::Points, 0, ValueType::Points},
    {"function", AidaFamily::Function, 0, ValueType::Function},
    {"histogram1d", AidaFamily::Histogram, 1, ValueType::Histogram},
    {"histogram2d", AidaFamily::Histogram, 2, ValueType::Histogram},
    {"histogram3d", AidaFamily::Histogram, 3, ValueType::Histogram},
    {"profile1d", AidaFamily::Profile, 1, ValueType::Profile},
    {"profile2d", AidaFamily::Profile, 2, ValueType::Profile},
    {"tuple", AidaFamily::Tuple, 0, ValueType::Table},
}};

/// Elements around and within objects: those of the document type, and those that some programs write beside them.
inline constexpr std::array<std::string_view, 42> aidaInnerElements{"aida",
                                                                    "annotation",
                                                                    "argument",
                                                                    "arguments",
                                                                    "axis",
                                                                    "bin1d",
                                                                    "bin2d",
                                                                    "bin3d",
                                                                    "binBorder",
                                                                    "codelet",
                                                                    "column",
                                                                    "columns",
                                                                    "covarianceMatrix",
                                                                    "data1d",
                                                                    "data2d",
                                                                    "data3d",
                                                                    "dataPoint",
                                                                    "dimension",
                                                                    "dimenstion",
                                                                    "entries1d",
                                                                    "entries2d",
                                                                    "entries3d",
                                                                    "entry",
                                                                    "entry1d",
                                                                    "entry2d",
                                                                    "entry3d",
                                                                    "entryITuple",
                                                                    "entryTuple",
                                                                    "fitConstraint",
                                                                    "fitResult",
                                                                    "fittedParameter",
                                                                    "implementation",
                                                                    "item",
                                                                    "matrixElement",
                                                                    "measurement",
                                                                    "parameter",
                                                                    "parameters",
                                                                    "range",
                                                                    "row",
                                                                    "rows",
                                                                    "statistic",
                                                                    "statistics"};

// Both lists are searched by bisection.
static_assert(std::ranges::is_sorted(aidaObjectTypes, {}, &AidaObjectType::element));
static_assert(std::ranges::is_sorted(aidaInnerElements));

/// @return null if objects have no such element.
constexpr const AidaObjectType* aidaObjectType(std::string_view element) {
    const auto* const found = std::ranges::lower_bound(aidaObjectTypes, element, {}, &AidaObjectType::element);
    return found != aidaObjectTypes.end() && found->element == element ? found : nullptr;
}

/// @return whether the element is an object of this family.
constexpr bool isOfFamily(std::string_view element, AidaFamily family) {
    const AidaObjectType* const type = aidaObjectType(element);
    return type != nullptr && type->family == family;
}

/// @return whether the element is an object whose contents are rows: a tuple or a cloud.
constexpr bool isAidaTable(std::string_view element) {
    const AidaObjectType* const type = aidaObjectType(element);
    return type != nullptr && type->value == ValueType::Table;
}

/// @return the element of an object; empty if the format has none for so many dimensions.
constexpr std::string_view aidaElement(AidaFamily family, std::size_t dimensions = 0) {
    for (const AidaObjectType& type : aidaObjectTypes) {
        if (type.family == family && type.dimensions == dimensions) {
            return type.element;
        }
    }
    return {};
}

/// @return whether the format, or a program that writes it, has such an element.
constexpr bool isKnownElement(std::string_view name) {
    const auto isNamed = [name](const AidaObjectType& type) { return type.element == name; };
    return std::ranges::any_of(aidaObjectTypes, isNamed) || std::ranges::binary_search(aidaInnerElements, name);
}

}  // namespace velmorak::io
