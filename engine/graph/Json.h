#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velmorak {

/// Why a document cannot be read.
class DocumentError : public std::runtime_error {
public:
    /// @param atLine counted from 1; 0 when the reason is no matter of a line.
    DocumentError(std::size_t atLine, const std::string& reason) : std::runtime_error(reason), lineNumber(atLine) {}
    std::size_t line() const { return lineNumber; }

private:
    std::size_t lineNumber;
};

/// Where a value stands in a JSON text. Nothing is made of it before it is asked for, so that a text takes no more
/// memory than itself, and a number no more digits than are written.
struct JsonValue {
    enum class JsonType { Null, Boolean, Number, Text, List, Object };

    JsonType type = JsonType::Null;
    std::size_t begin = 0;  ///< First byte.
    std::size_t end = 0;    ///< Behind the last byte.
};

/// Checks all of the text. A number may be of any size.
/// @throws DocumentError when the text is no JSON, or nests too deep.
JsonValue parseJson(std::string_view text);

/// For values of a text that parseJson has checked, in order, also members of the same name.
void forEachMember(std::string_view text, const JsonValue& object,
                   const std::function<void(std::string name, const JsonValue& value)>& take);
void forEachItem(std::string_view text, const JsonValue& list, const std::function<void(const JsonValue& item)>& take);
/// @return what a text says, without quotes and escapes.
std::string unquoted(std::string_view text, const JsonValue& value);
/// @return infinity for what is beyond the range of double.
double numberIn(std::string_view text, const JsonValue& value);

/// @return number of the line that the byte stands in, counted from 1.
std::size_t lineOf(std::string_view text, std::size_t position);

/// @return the text as JSON writes it, with its quotes. Bytes that are not UTF-8 become U+FFFD.
std::string jsonText(const std::string& text);

/// @return the text with every byte that is not UTF-8 replaced by U+FFFD.
std::string validUtf8(const std::string& text);

}  // namespace velmorak
