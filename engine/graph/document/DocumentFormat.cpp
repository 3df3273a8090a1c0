#include "graph/document/Document.h"

#include <array>
#include <charconv>

namespace velmorak {
namespace {

std::string coordinate(float number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {digits.data(), end};
}

/// Joins the fields of one object with a separator.
class ObjectText {
public:
    explicit ObjectText(std::string separator) : separator(std::move(separator)) {}

    void field(const std::string& name, const std::string& json);
    void foreign(const ForeignFields& fields);
    const std::string& text() const { return body; }

private:
    std::string separator;
    std::string body;
};

void ObjectText::field(const std::string& name, const std::string& json) {
    if (!body.empty()) {
        body += ',' + separator;
    }
    body += jsonText(name) + ": " + json;
}

void ObjectText::foreign(const ForeignFields& fields) {
    for (const ForeignField& each : fields) {
        field(each.name, each.json);
    }
}

std::string inputText(const DocumentInput& input) {
    ObjectText object(" ");
    object.field("name", jsonText(input.name));
    if (input.value) {
        object.field("value", jsonText(*input.value));
    }
    if (input.from) {
        object.field("from", '[' + jsonText(input.from->plugin) + ", " + jsonText(input.from->output) + ']');
    }
    object.foreign(input.foreign);
    return '{' + object.text() + '}';
}

std::string outputText(const DocumentOutput& output) {
    ObjectText object(" ");
    object.field("name", jsonText(output.name));
    object.field("type", jsonText(output.type));
    object.foreign(output.foreign);
    return '{' + object.text() + '}';
}

template <typename Port>
std::string portList(const std::vector<Port>& ports, std::string (*textOfPort)(const Port&)) {
    std::string list;
    for (const Port& port : ports) {
        list += (list.empty() ? "\n        " : ",\n        ") + textOfPort(port);
    }
    return '[' + list + "\n      ]";
}

std::string pluginText(const DocumentPlugin& plugin) {
    ObjectText object("\n      ");
    object.field("name", jsonText(plugin.name));
    object.field("kind", jsonText(plugin.kind));
    object.field("position", '[' + coordinate(plugin.x) + ", " + coordinate(plugin.y) + ']');
    if (plugin.isCollapsed) {
        object.field("collapsed", "true");
    }
    if (!plugin.inputs.empty()) {
        object.field("inputs", portList(plugin.inputs, inputText));
    }
    if (!plugin.outputs.empty()) {
        object.field("outputs", portList(plugin.outputs, outputText));
    }
    object.foreign(plugin.foreign);
    return "{\n      " + object.text() + "\n    }";
}

std::string pluginList(const std::vector<DocumentPlugin>& plugins) {
    if (plugins.empty()) {
        return "[]";
    }
    std::string list;
    for (const DocumentPlugin& plugin : plugins) {
        list += (list.empty() ? "\n    " : ",\n    ") + pluginText(plugin);
    }
    return '[' + list + "\n  ]";
}

}  // namespace

std::string formatDocument(const Document& document) {
    ObjectText object("\n  ");
    object.field("zedra", "1");
    if (document.summary) {
        object.field("summary", jsonText(*document.summary));
    }
    object.field("plugins", pluginList(document.plugins));
    object.foreign(document.foreign);
    return "{\n  " + object.text() + "\n}\n";
}

}  // namespace velmorak
