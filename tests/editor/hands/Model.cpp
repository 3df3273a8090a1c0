#include "Model.h"

#include <algorithm>

int Model::add(const std::string& kind, double x, double y) {
    std::string name = kind;
    for (int number = 1; isTaken(name); ++number) {
        name = kind + std::to_string(number);
    }
    Node node{kind, name, x, y, true, {}, {}};
    if (kind == "Number") {
        node.inputs = {"value"};
        node.outputs = {"value"};
    } else if (kind == "Adder") {
        node.inputs = {"a", "b"};
        node.outputs = {"sum"};
    } else if (kind == "Splitter") {
        node.inputs = {"x"};
        node.outputs = {"low", "high"};
    } else if (kind == "Twins") {
        node.inputs = {"input", "x2", "x\u00B2"};
        node.outputs = {"x\u00B2", "x2"};
    }
    nodes[next] = node;
    order.push_back(next);
    return next++;
}

void Model::remove(int node) {
    nodes.erase(node);
    order.erase(std::find(order.begin(), order.end(), node));
    std::erase_if(sources,
                  [node](const auto& entry) { return entry.first.first == node || entry.second.first == node; });
}

void Model::wire(int sender, const std::string& output, int receiver, const std::string& input) {
    sources[{receiver, input}] = {sender, output};
}

void Model::unwire(int receiver, const std::string& input) {
    sources.erase({receiver, input});
}

void Model::setStart(int node) {
    const auto place = std::find(order.begin(), order.end(), node);
    std::rotate(order.begin(), place, place + 1);
}

bool Model::isTaken(const std::string& name) const {
    return std::any_of(nodes.begin(), nodes.end(), [&](const auto& entry) { return entry.second.name == name; });
}

std::vector<std::string> Model::shownInputs(int node) const {
    std::vector<std::string> shown = nodes.at(node).inputs;
    if (!nodes.at(node).isExpanded) {
        std::erase_if(shown, [&](const std::string& port) { return sources.count({node, port}) == 0; });
    }
    return shown;
}

std::vector<std::string> Model::shownOutputs(int node) const {
    std::vector<std::string> shown = nodes.at(node).outputs;
    if (!nodes.at(node).isExpanded) {
        std::erase_if(shown, [&](const std::string& port) {
            return std::none_of(sources.begin(), sources.end(),
                                [&](const auto& entry) { return entry.second == Port(node, port); });
        });
    }
    return shown;
}
