#include "ShownPipeline.h"

#include "colours.h"

#include <QzManager.h>

#include <algorithm>
#include <locale>
#include <set>
#include <sstream>

namespace {

constexpr float canvasHeight = 1200;

using Texts = std::vector<plugin::TextItem>;
using Names = std::multiset<std::string>;

std::ostringstream plainStream() {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    return text;
}

Glib::RefPtr<Goocanvas::Item> childOf(OpenWindow& window, int position) {
    return window.canvas.get_root_item()->get_child(position);
}

template <typename Visit>
void forEachChild(OpenWindow& window, Visit visit) {
    for (int i = 0; i < window.canvas.get_root_item()->get_n_children(); ++i) {
        visit(childOf(window, i));
    }
}

Names boxesOf(OpenWindow& window) {
    Names boxes;
    forEachChild(window, [&boxes](const auto& item) {
        if (Glib::RefPtr<Goocanvas::Rect>::cast_dynamic(item)) {
            boxes.insert(propertyOf<Glib::ustring>(item, "title"));
        }
    });
    return boxes;
}

Names pathsOf(OpenWindow& window) {
    Names paths;
    forEachChild(window, [&paths](const auto& item) {
        if (const auto path = Glib::RefPtr<Goocanvas::Path>::cast_dynamic(item)) {
            paths.insert(pathText(path));
        }
    });
    return paths;
}

plugin* nodeOf(OpenWindow& window, const QzBase* object) {
    for (plugin* node : window.liveNodes()) {
        if (node->GetPlugin() == object) {
            return node;
        }
    }
    return nullptr;
}

const plugin::TextItem* textIn(const Texts& texts, const std::string& port) {
    const auto found = std::find_if(texts.begin(), texts.end(), [&port](const plugin::TextItem& text) {
        return propertyOf<Glib::ustring>(text, "text").raw() == port;
    });
    return found == texts.end() ? nullptr : &*found;
}

int coordinate(const plugin::TextItem& text, const char* axis) {
    return static_cast<int>(propertyOf<double>(text, axis));
}

std::string curveBetween(const plugin::TextItem& output, const plugin::TextItem& input) {
    const int fromX = coordinate(output, "x");
    const int fromY = coordinate(output, "y");
    const int toX = coordinate(input, "x");
    const int toY = coordinate(input, "y");
    const double half = (toX - fromX) * 0.5;
    std::ostringstream text = plainStream();
    text << "M " << fromX + 3 << ' ' << fromY << " C " << fromX + half + 3 << ' ' << fromY << ' ' << toX - half - 3
         << ' ' << toY << ' ' << toX - 3 << ' ' << toY;
    return text.str();
}

std::string sourceText(const QzBase::Input& input) {
    return input.source ? input.source->name + '.' + input.source->Outputs().at(input.sourceOutput).name : "";
}

/// Removes the expected paths of a receiver from `paths`. @return those that are missing, in words.
std::string takeWires(OpenWindow& window, QzBase& receiver, Names& paths, std::size_t& unseen) {
    std::string missing;
    for (const QzBase::Input& input : receiver.Inputs()) {
        const plugin* to = nodeOf(window, &receiver);
        const plugin* from = input.source ? nodeOf(window, input.source) : nullptr;
        if (!from || !to) {
            continue;
        }
        const auto* end = textIn(to->inputTexts, input.name);
        const auto* start = textIn(from->outputTexts, input.source->Outputs().at(input.sourceOutput).name);
        const auto path = start && end ? paths.find(curveBetween(*start, *end)) : paths.end();
        if (path != paths.end()) {
            paths.erase(path);
        } else if (start && end) {
            missing += "no path from " + sourceText(input) + " to " + receiver.name + '.' + input.name + "; ";
        } else {
            ++unseen;  // A collapsed node shows the ports that it had at its last redraw.
        }
    }
    return missing;
}

std::string wireDifferences(OpenWindow& window, QzManager& library) {
    Names paths = pathsOf(window);
    std::size_t unseen = 0;
    std::string found;
    if (paths.size() != window.pathMap.size() || paths.size() != window.connectionMap.size()) {
        found += "the maps and the canvas differ in the number of wires; ";
    }
    for (QzBase* object : library.plugins) {
        found += takeWires(window, *object, paths, unseen);
    }
    if (paths.size() != unseen) {
        found += std::to_string(paths.size()) + " paths are left, " + std::to_string(unseen) + " expected; ";
    }
    return found;
}

bool isBright(const plugin& node) {
    const auto colour = propertyOf<guint>(node.box, "fill_color_rgba");
    return colour == colours::startSelected || colour == colours::otherSelected;
}

std::string colourDifferences(OpenWindow& window) {
    std::string found;
    for (const plugin* node : window.liveNodes()) {
        // A node that was collapsed while selected looks unselected until it is clicked.
        if (isBright(*node) && node != window.selectedNode()) {
            found += propertyOf<Glib::ustring>(node->box, "title").raw() + " looks selected; ";
        }
        if (!isBright(*node) && node->box.get() == window.selectedItem.get()) {
            found += propertyOf<Glib::ustring>(node->box, "title").raw() + " is selected and does not look so; ";
        }
    }
    return found;
}

}  // namespace

std::string differencesBetween(OpenWindow& window, QzManager& library) {
    Names names;
    for (const QzBase* object : library.plugins) {
        names.insert(object->name);
    }
    std::string found = boxesOf(window) == names ? "" : "the boxes are not the plug-ins; ";
    return found + wireDifferences(window, library) + colourDifferences(window);
}

std::map<std::string, std::string> contentsOf(QzManager& library) {
    std::map<std::string, std::string> contents;
    for (QzBase* object : library.plugins) {
        float x = 0;
        float y = 0;
        float width = 0;
        float height = 0;
        object->GetPosition(x, y);
        object->GetOuterExtent(width, height);
        std::ostringstream text = plainStream();
        text << x << ' ' << canvasHeight - y - height;
        for (const QzBase::Input& input : object->Inputs()) {
            text << ' ' << input.name << '=' << sourceText(input);
        }
        contents[object->name] = text.str();
    }
    return contents;
}
