#pragma once

#include "graph/Json.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The document text and what it says, apart from any kind or manager. docs/document.md describes the format.
namespace velmorak {

/// A field that this version does not know, kept byte for byte.
struct ForeignField {
    std::string name;
    std::string json;

    bool operator==(const ForeignField&) const = default;
};

using ForeignFields = std::vector<ForeignField>;

/// An output by the name of its plug-in and its own.
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
    std::size_t line = 0;  ///< Where it stands in the text that was read.
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

struct Document {
    std::optional<std::string> summary;
    std::vector<DocumentPlugin> plugins;  ///< The first one is the start.
    ForeignFields foreign;
};

/// @throws DocumentError with the line.
Document parseDocument(const std::string& text);

/// The one way to write a document. Never uses the locale.
std::string formatDocument(const Document& document);

}  // namespace velmorak
