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
    /// @param lineNumber counted from 1; 0 when the reason does not concern a line.
    DocumentError(std::size_t lineNumber, const std::string& reason)
        : std::runtime_error(reason), lineNumber(lineNumber) {}
    std::size_t line() const { return lineNumber; }

private:
    std::size_t lineNumber;
};

/// Position of a value in a JSON text. Values are decoded only on request: parsing needs no memory beyond the text, and
/// numbers keep the digits as written.
struct JsonValue {
    enum class JsonType { Null, Boolean, Number, Text, List, Object };

    JsonType type = JsonType::Null;
    std::size_t begin = 0;  ///< First byte.
    std::size_t end = 0;    ///< Past the last byte.
};

/// Checks the whole text. Numbers may be of any size.
/// @throws DocumentError when the text is not JSON, or is nested too deeply.
JsonValue parseJson(std::string_view text);

/// For texts that parseJson has checked. Members are visited in order, repeated names included.
void forEachMember(std::string_view text, const JsonValue& object,
                   const std::function<void(std::string name, const JsonValue& value)>& take);
void forEachItem(std::string_view text, const JsonValue& list, const std::function<void(const JsonValue& item)>& take);
/// @return the content of a string, without quotes and escapes.
std::string unquoted(std::string_view text, const JsonValue& value);
/// @return infinity beyond the range of double.
double numberIn(std::string_view text, const JsonValue& value);

/// @return line of the byte, counted from 1.
std::size_t lineOf(std::string_view text, std::size_t position);

/// @return the text as a JSON string, with quotes. Bytes that are not UTF-8 become U+FFFD.
std::string jsonText(const std::string& text);

/// @return the text with every byte that is not UTF-8 replaced by U+FFFD.
std::string validUtf8(const std::string& text);

}  // namespace velmorak
