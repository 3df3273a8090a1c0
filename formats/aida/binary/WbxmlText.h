#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velmorak::io {

/// Decodes the binary form of an AIDA file, WBXML "BinaryAIDA/1.0", to XML text. docs/aida.md describes its layout.
/// Works byte by byte; memory is needed for one value and the stack of open elements.
class WbxmlText {
public:
    /// @param next returns the next byte, negative at the end.
    explicit WbxmlText(std::function<int()> next);

    /// Appends the text of the next element or end of one.
    /// @return false at the end, and if the bytes are damaged.
    bool append(std::string& text);
    /// Why there is no more text; empty if the bytes are intact.
    const std::string& damage() const { return reason; }

private:
    int byte();
    std::uint32_t length();
    std::string bytes(std::uint32_t count);
    void skipHead();
    void appendNext(std::string& text);
    void appendElement(int tag, std::string& text);
    void appendAttributes(std::string& text);
    void appendAttribute(int number, std::string& text);
    void appendValue(std::string& text);
    void appendCharacters(std::string& text);
    void reportDamage(const std::string& what);
    std::string place() const;

    std::function<int()> next;
    std::uint64_t position = 0;
    static constexpr int none = -1;
    int page = 0;          ///< Of the attributes.
    int element = none;    ///< Element whose beginning is being read.
    int attribute = none;  ///< Attribute whose value is being read.
    bool isBegun = false;
    bool isOver = false;
    std::vector<int> open;  ///< Numbers of the open elements, outermost first.
    std::string reason;
};

}  // namespace velmorak::io
