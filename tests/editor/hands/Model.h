#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// The expected content of the canvas, the maps and the library after a series of edits, as simple as possible.
class Model {
public:
    using Port = std::pair<int, std::string>;  ///< Number of a node, name of its port.

    struct Node {
        std::string kind, name;
        double x, y;  ///< Upper left corner on the canvas.
        bool isExpanded = true;
        std::vector<std::string> inputs, outputs;
        std::map<std::string, std::string> values = {};  ///< Values that were set, by input.
    };

    int add(const std::string& kind, double x, double y);
    void remove(int node);
    void wire(int sender, const std::string& output, int receiver, const std::string& input);
    void unwire(int receiver, const std::string& input);
    void setStart(int node);
    bool isTaken(const std::string& name) const;

    std::vector<std::string> shownInputs(int node) const;
    std::vector<std::string> shownOutputs(int node) const;

    std::map<int, Node> nodes;
    std::vector<int> order;  ///< The start first.
    std::map<Port, Port> sources;

private:
    int next = 0;
};
