#pragma once

#include "graph/document/Json.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The content of a document, independent of any kind or manager. docs/document.md describes the format.
namespace velmorak {

/// Limit for the inputs and outputs that a document names, and for those of its plug-ins: a known kind has its ports
/// whether they are named or not.
inline constexpr std::size_t maxPorts = 1'000'000;

/// A field that this version does not know, preserved byte for byte.
struct ForeignField {
    std::string name;
    std::string json;

    bool operator==(const ForeignField&) const = default;
};

using ForeignFields = std::vector<ForeignField>;

/// An output, named by its plug-in and its own name.
struct OutputName {
    std::string plugin;
    std::string output;

    bool operator==(const OutputName&) const = default;
};

struct DocumentInput {
    std::string name;
    std::optional<std::string> value;
    std::optional<OutputName> from;
    ForeignFields foreign;
    std::size_t line = 0;  ///< In the text that was read, counted from 1.
};

struct DocumentOutput {
    std::string name;
    std::string type;
    ForeignFields foreign;
};

struct DocumentPlugin {
    std::string name;
    std::string kind;
    float x = 0.0F;  ///< Lower left corner of the box in canvas units, y upwards.
    float y = 0.0F;
    bool isCollapsed = false;
    std::vector<DocumentInput> inputs;
    std::vector<DocumentOutput> outputs;
    ForeignFields foreign;
    std::size_t line = 0;
};

/// Of the files that hold documents.
inline constexpr std::string_view documentExtension = ".zedra";

struct Document {
    std::optional<std::string> summary;
    std::vector<DocumentPlugin> plugins;  ///< The first one is the start.
    ForeignFields foreign;
};

/// @throws DocumentError with the line.
Document parseDocument(const std::string& text);

/// The only writer of documents. Does not depend on the locale.
std::string formatDocument(const Document& document);

}  // namespace velmorak
