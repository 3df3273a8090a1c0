#include "WbxmlText.h"

#include "AidaText.h"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <string_view>

namespace velmorak::io {

namespace {

constexpr int firstCode = 5;
constexpr int hasAttributes = 0x80;
constexpr int hasContent = 0x40;
constexpr int switchPage = 0x00;
constexpr int endMark = 0x01;
constexpr int textMark = 0x03;
constexpr int valueMark = 0xC3;
/// No element lies deeper, and no value is longer, in any file that means well.
constexpr std::size_t deepest = 1000;
constexpr std::uint32_t longest = 1U << 28U;

/// Elements by number.
constexpr std::array elements{
    "aida",        "implementation", "histogram1d", "histogram2d", "histogram3d", "axis",         "binBorder",
    "statistics",  "statistic",      "data1d",      "bin1d",       "data2d",      "bin2d",        "data3d",
    "bin3d",       "tuple",          "columns",     "column",      "rows",        "row",          "entry",
    "entryITuple", "cloud1d",        "cloud2d",     "cloud3d",     "entries1d",   "entries2d",    "entries3d",
    "entry1d",     "entry2d",        "entry3d",     "profile1d",   "profile2d",   "dataPointSet", "dataPoint",
    "measurement", "annotation",     "item",        "function",    "codelet",     "arguments",    "argument",
    "range",       "parameters",     "parameter"};

/// Attributes by number; a page holds 59. Those without a name are written by nobody. The value of an entry has a
/// number for each type.
constexpr std::size_t pageLength = 59;
constexpr std::array attributes{"version",
                                "",
                                "",
                                "valueX",
                                "valueY",
                                "valueZ",
                                "weight",
                                "value",
                                "value",
                                "value",
                                "value",
                                "value",
                                "value",
                                "package",
                                "name",
                                "title",
                                "path",
                                "options",
                                "direction",
                                "min",
                                "max",
                                "numberOfBins",
                                "entries",
                                "equivalentBinEntries",
                                "mean",
                                "rms",
                                "skewness",
                                "binNum",
                                "weightedMean",
                                "weightedRms",
                                "height",
                                "error",
                                "error2",
                                "binNumX",
                                "binNumY",
                                "binNumZ",
                                "weightedMeanX",
                                "weightedMeanY",
                                "weightedMeanZ",
                                "weightedRmsX",
                                "weightedRmsY",
                                "weightedRmsZ",
                                "type",
                                "maxEntries",
                                "lowerEdgeX",
                                "lowerEdgeY",
                                "lowerEdgeZ",
                                "upperEdgeX",
                                "upperEdgeY",
                                "upperEdgeZ",
                                "conversionBins",
                                "conversionBinsX",
                                "conversionBinsY",
                                "conversionBinsZ",
                                "conversionLowerEdge",
                                "conversionLowerEdgeX",
                                "conversionLowerEdgeY",
                                "conversionLowerEdgeZ",
                                "conversionUpperEdge",
                                "conversionUpperEdgeX",
                                "conversionUpperEdgeY",
                                "conversionUpperEdgeZ",
                                "",
                                "",
                                "",
                                "",
                                "dimension",
                                "errorPlus",
                                "errorMinus",
                                "key",
                                "sticky",
                                "isNormalized"};

std::string elementName(int number) {
    const auto position = static_cast<std::size_t>(number);
    return position < elements.size() ? elements[position] : fmt::format("element-{}", number);
}

std::string_view attributeName(std::size_t page, int code) {
    const std::size_t position = page * pageLength + static_cast<std::size_t>(code - firstCode);
    return code >= firstCode && position < attributes.size() ? attributes[position] : "";
}

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

/// A value after its type: 0 boolean, 1 byte, 2 char, 3 double, 4 float, 5 int, 6 long, 7 short, 8 text.
bool appendTyped(int type, std::string_view bytes, std::string& text) {
    constexpr std::array<std::size_t, 8> sizes{1, 1, 2, 8, 4, 4, 8, 2};
    if (type == 8) {
        if (bytes.size() < 2 || bigEndian(bytes.substr(0, 2)) > bytes.size() - 2)
            return false;
        appendEscaped(bytes.substr(2, bigEndian(bytes.substr(0, 2))), text);
        return true;
    }
    if (type < 0 || type > 8 || bytes.size() != sizes[static_cast<std::size_t>(type)])
        return false;
    const std::uint64_t bits = bigEndian(bytes);
    if (type == 0)
        text += bits != 0 ? "true" : "false";
    else if (type == 2)
        text += fmt::format("&#{};", bits < 0x20 || (bits >= 0xD800 && bits < 0xE000) || bits > 0xFFFD ? 0xFFFD : bits);
    else if (type == 3)
        appendNumber(std::bit_cast<double>(bits), text);
    else if (type == 4)
        appendNumber(std::bit_cast<float>(static_cast<std::uint32_t>(bits)), text);
    else {
        const unsigned shift = 64U - 8U * static_cast<unsigned>(bytes.size());
        text += fmt::format("{}", static_cast<std::int64_t>(bits << shift) >> shift);
    }
    return true;
}

}  // namespace

WbxmlText::WbxmlText(std::function<int()> nextByte) : next(std::move(nextByte)) {}

void WbxmlText::damaged(const std::string& what) {
    isOver = true;
    if (reason.empty())
        reason = fmt::format("{} at byte {} of the binary XML", what, position);
}

int WbxmlText::byte() {
    const int value = isOver ? -1 : next();
    if (value < 0)
        damaged("the binary XML ends too early");
    else
        ++position;
    return value;
}

std::uint32_t WbxmlText::length() {
    std::uint32_t value = 0;
    for (int digit = 0; digit < 5; ++digit) {
        const int more = byte();
        if (more < 0)
            return 0;
        value = value << 7U | static_cast<std::uint32_t>(more & 0x7F);
        if (more < 0x80 && value <= longest)
            return value;
    }
    damaged("a length is out of range");
    return 0;
}

std::string WbxmlText::bytes(std::uint32_t count) {
    std::string all;
    for (int value = 0; all.size() < count && (value = byte()) >= 0;)
        all += static_cast<char>(value);
    return all;
}

void WbxmlText::skipHead() {
    bytes(1);  // Version; that this is 3, and the text UTF-8, whoever chose this reader has seen.
    if (length() == 0)
        length();
    length();
    bytes(length());
}

bool WbxmlText::append(std::string& text) {
    if (isOver)
        return false;
    if (!isBegun) {
        skipHead();
        isBegun = true;
        text += R"(<?xml version="1.0" encoding="UTF-8"?>)";
    }
    const int code = byte();
    if (code == endMark && !open.empty()) {
        text += fmt::format("</{}>\n", elementName(open.back()));
        open.pop_back();
    } else if (code == textMark && !open.empty()) {
        appendCharacters(text);
    } else if (code == switchPage || (code & 0x3F) < firstCode) {
        damaged("a code that no such file has");
    } else if (code >= 0) {
        appendElement(code, text);
    }
    isOver = isOver || open.empty();
    return reason.empty();
}

void WbxmlText::appendElement(int tag, std::string& text) {
    const int number = (tag & 0x3F) - firstCode;
    text += "<" + elementName(number);
    if ((tag & hasAttributes) != 0)
        appendAttributes(text);
    if ((tag & hasContent) == 0) {
        text += "/>\n";
        return;
    }
    text += ">";
    open.push_back(number);
    if (open.size() > deepest)
        damaged("elements lie too deep");
}

void WbxmlText::appendAttributes(std::string& text) {
    std::size_t page = 0;
    for (int code = byte(); code >= 0 && code != endMark; code = byte()) {
        if (code == switchPage) {
            page = static_cast<std::size_t>(byte() & 0xFF);
            continue;
        }
        const std::string_view name = attributeName(page, code);
        std::string value;
        appendValue(value);
        if (!name.empty())
            text += fmt::format(" {}=\"{}\"", name, value);
    }
}

void WbxmlText::appendValue(std::string& text) {
    if (byte() != valueMark)
        return damaged("a value without its mark");
    const std::string value = bytes(length());
    if (reason.empty() &&
        (value.empty() || !appendTyped(static_cast<unsigned char>(value[0]), std::string_view(value).substr(1), text)))
        damaged("a value of unknown type or wrong length");
}

void WbxmlText::appendCharacters(std::string& text) {
    const std::string count = bytes(2);
    appendEscaped(bytes(static_cast<std::uint32_t>(bigEndian(count))), text);
    if (byte() > 0)
        damaged("a text is longer than it says");
}

}  // namespace velmorak::io
