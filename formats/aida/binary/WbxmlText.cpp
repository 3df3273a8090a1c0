#include "aida/binary/WbxmlText.h"

#include "aida/Vocabulary.h"
#include "aida/text/AidaText.h"

#include <fmt/format.h>

#include <algorithm>
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
/// Limits against malformed or hostile files.
constexpr std::size_t maxDepth = 1000;
constexpr std::uint32_t maxLength = 1U << 26U;

/// Elements by number.
constexpr std::array<std::string_view, 45> elements{
    "aida",        "implementation", "histogram1d", "histogram2d", "histogram3d", "axis",         "binBorder",
    "statistics",  "statistic",      "data1d",      "bin1d",       "data2d",      "bin2d",        "data3d",
    "bin3d",       "tuple",          "columns",     "column",      "rows",        "row",          "entry",
    "entryITuple", "cloud1d",        "cloud2d",     "cloud3d",     "entries1d",   "entries2d",    "entries3d",
    "entry1d",     "entry2d",        "entry3d",     "profile1d",   "profile2d",   "dataPointSet", "dataPoint",
    "measurement", "annotation",     "item",        "function",    "codelet",     "arguments",    "argument",
    "range",       "parameters",     "parameter"};

static_assert(std::ranges::all_of(elements, isKnownElement));

/// Attributes by number; a page has 59. Numbers without a name are not in use. The value of an entry has one number for
/// each type.
constexpr int pageLength = 59;
constexpr std::array attributes{"version",
                                "",
                                "",
                                "",
                                "value",
                                "value",
                                "value",
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
                                "valueX",
                                "valueY",
                                "valueZ",
                                "weight",
                                "dimension",
                                "errorPlus",
                                "errorMinus",
                                "key",
                                "sticky",
                                "isNormalized"};
/// A point of a cloud has its coordinates at this number, and in some files at that of values, on the first page.
constexpr int firstPoint = 28;
constexpr int lastPoint = 30;
static_assert(elements[firstPoint] == "entry1d" && elements[lastPoint] == "entry3d");
constexpr std::size_t coordinates = 62;
constexpr std::size_t coordinatesOnFirstPage = 3;

std::string elementName(int number) {
    const auto position = static_cast<std::size_t>(number);
    return position < elements.size() ? std::string(elements[position]) : fmt::format("element-{}", number);
}

bool isKnown(int element) {
    return static_cast<std::size_t>(element) < elements.size();
}

/// @return the name; empty if elements of this number have no such attribute.
std::string_view attributeName(int element, std::size_t number) {
    const bool isPoint = element >= firstPoint && element <= lastPoint;
    if (isPoint && number >= coordinatesOnFirstPage && number < coordinatesOnFirstPage + 4) {
        return attributes[number - coordinatesOnFirstPage + coordinates];
    }
    return number < attributes.size() ? attributes[number] : "";
}

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

constexpr std::array<std::string_view, 9> types{"boolean", "byte", "char",  "double", "float",
                                                "int",     "long", "short", "text"};
constexpr std::array<std::size_t, 8> sizes{1, 1, 2, 8, 4, 4, 8, 2};

/// Decodes a text after its length; it ends with a zero byte, which some writers omit.
bool appendText(std::string_view bytes, std::string& text) {
    if (bytes.size() < 2) {
        return false;
    }
    const std::size_t length = bigEndian(bytes.substr(0, 2));
    bytes.remove_prefix(2);
    if (bytes.size() != length && (bytes.size() != length + 1 || bytes.back() != '\0')) {
        return false;
    }
    appendEscaped(bytes.substr(0, length), text);
    return true;
}

/// @return whether XML can hold the unit of UTF-16 as a character.
bool isXmlCharacter(std::uint64_t unit) {
    const bool isBlank = unit == '\t' || unit == '\n' || unit == '\r';
    return isBlank || (unit >= 0x20 && unit < 0xD800) || (unit >= 0xE000 && unit <= 0xFFFD);
}

/// @return false for a boolean that is neither true nor false.
bool appendBits(std::size_t type, std::string_view bytes, std::string& text) {
    const std::uint64_t bits = bigEndian(bytes);
    if (type == 0 && bits > 1) {
        return false;
    }
    if (type == 0) {
        text += bits != 0 ? "true" : "false";
    } else if (type == 2) {
        text += fmt::format("&#{};", isXmlCharacter(bits) ? bits : 0xFFFD);
    } else if (type == 3) {
        appendNumber(std::bit_cast<double>(bits), text);
    } else if (type == 4) {
        appendNumber(std::bit_cast<float>(static_cast<std::uint32_t>(bits)), text);
    } else {
        const unsigned shift = 64U - 8U * static_cast<unsigned>(bytes.size());
        text += fmt::format("{}", static_cast<std::int64_t>(bits << shift) >> shift);
    }
    return true;
}

/// Decodes a value after its type. @return why it is invalid; empty if it is valid.
std::string appendTyped(std::size_t type, std::string_view bytes, std::string& text) {
    if (type >= types.size()) {
        return fmt::format("has the unknown type {}", type);
    }
    if (type == 8) {
        return appendText(bytes, text) ? ""
                                       : fmt::format("is a text whose length does not fit its {} bytes", bytes.size());
    }
    if (bytes.size() != sizes[type]) {
        return fmt::format("is a {} of {} bytes instead of {}", types[type], bytes.size(), sizes[type]);
    }
    return appendBits(type, bytes, text) ? "" : "is a boolean that is neither true nor false";
}

}  // namespace

WbxmlText::WbxmlText(std::function<int()> next) : next(std::move(next)) {}

void WbxmlText::reportDamage(const std::string& what) {
    isOver = true;
    if (reason.empty()) {
        reason = fmt::format("the binary XML is damaged at its byte {}: {}", position, what);
    }
}

/// "the value of <entry>", "<entry>"
std::string WbxmlText::place() const {
    std::string name = fmt::format("<{}>", elementName(element));
    if (attribute == none) {
        return name;
    }
    const std::string_view known = attributeName(element, static_cast<std::size_t>(attribute));
    return known.empty() ? fmt::format("attribute {} of {}", attribute, name)
                         : fmt::format("the {} of {}", known, name);
}

int WbxmlText::byte() {
    const int value = isOver ? -1 : next();
    if (value < 0) {
        reportDamage(element == none ? "it ends too early" : fmt::format("it ends within {}", place()));
    } else {
        ++position;
    }
    return value;
}

std::uint32_t WbxmlText::length() {
    std::uint32_t value = 0;
    for (int digit = 0; digit < 5; ++digit) {
        const int more = byte();
        if (more < 0) {
            return 0;
        }
        value = value << 7U | static_cast<std::uint32_t>(more & 0x7F);
        if (more < 0x80 && value <= maxLength) {
            return value;
        }
    }
    reportDamage(element == none ? "a length is out of range"
                                 : fmt::format("the length of {} is out of range", place()));
    return 0;
}

std::string WbxmlText::bytes(std::uint32_t count) {
    std::string all;
    for (int value = 0; all.size() < count && (value = byte()) >= 0;) {
        all += static_cast<char>(value);
    }
    return all;
}

void WbxmlText::skipHead() {
    bytes(1);  // Version; the caller has checked that it is 3, and that the text is UTF-8.
    if (length() == 0) {
        length();
    }
    length();
    bytes(length());
}

bool WbxmlText::append(std::string& text) {
    if (isOver) {
        return false;
    }
    const std::size_t before = text.size();
    if (!isBegun) {
        skipHead();
        isBegun = true;
        text += R"(<?xml version="1.0" encoding="UTF-8"?>)";
    }
    appendNext(text);
    // An incomplete element would look like one that lacks attributes.
    if (!reason.empty()) {
        text.resize(before);
    }
    isOver = isOver || open.empty();
    return reason.empty();
}

void WbxmlText::appendNext(std::string& text) {
    element = attribute = none;
    const int code = byte();
    if (code == endMark && !open.empty()) {
        text += fmt::format("</{}>\n", elementName(open.back()));
        open.pop_back();
    } else if (code == textMark && !open.empty()) {
        appendCharacters(text);
    } else if (code == switchPage || (code & 0x3F) < firstCode) {
        reportDamage(fmt::format("unknown code {}", code));
    } else if (code >= 0) {
        appendElement(code, text);
    }
}

void WbxmlText::appendElement(int tag, std::string& text) {
    element = (tag & 0x3F) - firstCode;
    text += "<" + elementName(element);
    if ((tag & hasAttributes) != 0) {
        appendAttributes(text);
    }
    if ((tag & hasContent) == 0) {
        text += "/>\n";
        return;
    }
    text += ">";
    open.push_back(element);
    if (open.size() > maxDepth) {
        reportDamage(fmt::format("elements are nested deeper than {}", maxDepth));
    }
}

/// The current page persists from one element to the next.
void WbxmlText::appendAttributes(std::string& text) {
    const std::uint64_t begin = position;
    for (int code = byte(); code >= 0 && code != endMark; code = byte()) {
        if (position - begin > maxLength) {
            reportDamage(fmt::format("{} is longer than {} MB", place(), maxLength >> 20U));
        } else if (code == switchPage) {
            page = byte() & 0xFF;
        } else if (code < firstCode || code - firstCode >= pageLength) {
            reportDamage(fmt::format("no attribute has the code {}", code));
        } else {
            appendAttribute(page * pageLength + code - firstCode, text);
        }
    }
}

void WbxmlText::appendAttribute(int number, std::string& text) {
    attribute = number;
    const std::string_view name = attributeName(element, static_cast<std::size_t>(number));
    // Attributes of unknown elements do not matter: these are skipped as a whole.
    if (name.empty() && isKnown(element)) {
        return reportDamage(fmt::format("{} is unknown", place()));
    }
    std::string value;
    appendValue(value);
    if (!name.empty()) {
        text.append(" ").append(name).append("=\"").append(value).append("\"");
    }
    attribute = none;
}

void WbxmlText::appendValue(std::string& text) {
    const int mark = byte();
    if (mark >= 0 && mark != valueMark) {
        return reportDamage(fmt::format("{} has no value", place()));
    }
    const std::string value = bytes(length());
    if (!reason.empty()) {
        return;
    }
    const std::string problem =
        value.empty() ? "is empty"
                      : appendTyped(static_cast<unsigned char>(value[0]), std::string_view(value).substr(1), text);
    if (!problem.empty()) {
        reportDamage(fmt::format("{} {}", place(), problem));
    }
}

void WbxmlText::appendCharacters(std::string& text) {
    const std::string count = bytes(2);
    appendEscaped(bytes(static_cast<std::uint32_t>(bigEndian(count))), text);
    if (byte() > 0) {
        reportDamage("a text between elements is longer than stated");
    }
}

}  // namespace velmorak::io
