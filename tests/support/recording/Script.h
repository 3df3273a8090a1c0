#pragma once

#include <QzBase.h>
#include <QzKind.h>

#include <map>
#include <string>
#include <vector>

namespace recording {

/// Initial state of the plug-ins of a kind.
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

/// Content of a script; kinds and templates are parallel.
struct Script {
    std::vector<QzKind> kinds;
    std::vector<Template> templates;
    std::vector<QzExample> examples;
    std::map<std::string, Document> documents;
    bool runBlocks = false;
    bool runIsDeaf = false;  ///< Stop does not end it.

    /// @throws std::runtime_error with the invalid line.
    static Script parse(const std::string& text);
};

}  // namespace recording
