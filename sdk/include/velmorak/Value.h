#pragma once

#include <velmorak/NumberWithError.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmorak {

/// The type of an input or output. A user can enter values of the first three; the others come by wire only.
enum class ValueType { Number, Text, Choice, Table, Histogram, Profile, Points, Function, Histograms, Any };

/// @return the name as shown to the user: "number", "text", "choice", "table", "histogram", ...; "histogram list" of
/// Histograms.
std::string_view nameOf(ValueType type);

/// A key-value remark that a file attaches to an object.
struct AnnotationItem {
    std::string key;
    std::string value;
    bool isSticky = false;  ///< Users may not remove it.

    bool operator==(const AnnotationItem&) const = default;
};

/// Base class of values that travel along a wire as a whole: histograms, profiles, points, functions, lists of
/// histograms. DataObjects.h lists the classes. Immutable once it has left the plug-in that made it.
class DataObject {
public:
    virtual ~DataObject() = default;
    virtual ValueType type() const = 0;

    std::string name;   ///< Short name, as in a file's listing.
    std::string title;  ///< Shown above a plot.
    /// In the order of the file.
    std::vector<AnnotationItem> annotation;
    std::string options;  ///< Private notes of the program that wrote the file, verbatim.

protected:
    DataObject() = default;
    DataObject(const DataObject&) = default;
    DataObject(DataObject&&) = default;
    DataObject& operator=(const DataObject&) = default;
    DataObject& operator=(DataObject&&) = default;
};

using DataObjectPtr = std::shared_ptr<const DataObject>;

/// A complete value. Tables are never values: they are streams of chunks. A number is a double, or has an error.
using Value = std::variant<std::monostate, double, std::string, DataObjectPtr, NumberWithError>;

/// @return the number that a value of type number is, with or without an error; nothing for other values.
std::optional<NumberWithError> numberIn(const Value& value);

/// @return the shortest decimal text that reads back as the same number; "NaN", "Infinity" or "-Infinity". Independent
///         of the locale. For integers use std::to_string: this may print 100000 as 1e+05.
std::string textOf(double number);

/// Parses the output of textOf and any decimal number with optional sign and surrounding blanks, also "nan", "inf" and
/// "infinity" in either case. A number beyond the range of a double is rounded: 1e999 to Infinity, 1e-999 to 0.
/// Independent of the locale.
/// @return false, with number unchanged, if the text is anything else.
bool readNumber(std::string_view text, double& number);

}  // namespace velmorak
