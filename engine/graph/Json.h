#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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

struct JsonMember;

/// A value of a JSON text that remembers where it stands, so that a message can give its line and what is not
/// understood can be kept byte for byte.
struct JsonValue {
    enum class Shape { Null, Boolean, Number, Text, List, Object };

    Shape shape = Shape::Null;
    bool boolean = false;
    double number = 0.0;
    std::string text;
    std::vector<JsonValue> items;     ///< Of a list.
    std::vector<JsonMember> members;  ///< Of an object, in order, also those of the same name.
    std::size_t begin = 0;            ///< First byte in the text.
    std::size_t end = 0;              ///< Behind the last byte.
};

struct JsonMember {
    std::string name;
    JsonValue value;
};

/// @throws DocumentError when the text is no JSON, nests too deep, or holds a number beyond the range of double.
JsonValue parseJson(const std::string& text);

/// @return number of the line that the byte stands in, counted from 1.
std::size_t lineOf(std::string_view text, std::size_t position);

/// @return the text as JSON writes it, with its quotes. Bytes that are not UTF-8 become U+FFFD.
std::string jsonText(const std::string& text);

/// @return the text with every byte that is not UTF-8 replaced by U+FFFD.
std::string validUtf8(const std::string& text);

}  // namespace velmorak
