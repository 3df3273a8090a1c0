#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmorak {

/// What an input takes or an output gives. The first three can also be written down as a value; the others come by
/// wire only.
enum class ValueType { Number, Text, Choice, Table, Histogram, Profile, Points, Function, Any };

/// @return the name as shown to the user: "number", "text", "choice", "table", "histogram", ...
std::string_view nameOf(ValueType type);

/// A remark that a file carries with an object.
struct AnnotationItem {
    std::string key;
    std::string value;
    bool isSticky = false;  ///< A user may not take it away.

    bool operator==(const AnnotationItem&) const = default;
};

/// Something that is not a number, text or table and travels on a wire whole: a histogram, a fitted function.
/// Immutable once it has left the plug-in that made it.
class DataObject {
public:
    virtual ~DataObject() = default;
    virtual ValueType type() const = 0;

    std::string name;   ///< Short name, as in a file's listing.
    std::string title;  ///< Shown above a plot.
    /// As a file has them, in its order.
    std::vector<AnnotationItem> annotation;
    std::string options;  ///< What the program that wrote the file notes for itself, as it stands.

protected:
    DataObject() = default;
    DataObject(const DataObject&) = default;
    DataObject(DataObject&&) = default;
    DataObject& operator=(const DataObject&) = default;
    DataObject& operator=(DataObject&&) = default;
};

using DataObjectPtr = std::shared_ptr<const DataObject>;

/// A finished value. A table is never one: it is a stream and passes by chunks.
using Value = std::variant<std::monostate, double, std::string, DataObjectPtr>;

/// Shortest decimal text that reads back as the same number; "NaN", "Infinity", "-Infinity". Never uses the locale.
std::string textOf(double number);

/// Reads what textOf writes, and any decimal number with optional sign and blanks around it; also "nan", "inf" and
/// "infinity" in any case. A number beyond the range of a double is rounded like any other: 1e999 is Infinity, 1e-999
/// is 0. Never uses the locale.
/// @return false, with number unchanged, when the text is anything else.
bool readNumber(std::string_view text, double& number);

}  // namespace velmorak
