#pragma once

#include <QzBase.h>
#include <QzKind.h>

#include <map>
#include <string>
#include <vector>

namespace recording {

/// What a plug-in of a kind starts with.
struct Template {
    std::string description;
    float width = 160;
    std::vector<QzBase::Input> inputs;
    std::vector<QzBase::Output> outputs;
};

struct DocumentPlugin {
    std::string kind, name;
    float x = 0, y = 0;
    bool isCollapsed = false;
};

struct DocumentBinding {
    std::string receiver, input, sender, output;
};

struct Document {
    std::vector<DocumentPlugin> plugins;
    std::vector<DocumentBinding> bindings;
};

/// What the script describes; kinds and templates are parallel.
struct Script {
    std::vector<QzKind> kinds;
    std::vector<Template> templates;
    std::vector<QzExample> examples;
    std::map<std::string, Document> documents;
    bool runBlocks = false;
    bool runIsDeaf = false;  ///< Stop does not end it.

    /// @throws std::runtime_error with the line that is not understood.
    static Script parse(const std::string& text);
};

}  // namespace recording
