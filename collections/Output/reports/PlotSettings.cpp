#include "PlotSettings.h"

#include "Output/Ports.h"
#include "Output/plots/contents/PlotValues.h"

#include <algorithm>

namespace velmorak {

namespace {

std::string valueIn(const RecordedPlugin& plugin, const std::string& input) {
    const auto found = std::find_if(plugin.inputs.begin(), plugin.inputs.end(),
                                    [&](const RecordedInput& one) { return one.name == input; });
    return found == plugin.inputs.end() || !found->plugin.empty() ? std::string() : found->value;
}

/// @return the number of the Plot's object that an output feeds; nothing if it feeds none.
std::optional<std::size_t> objectFedBy(const RecordedPlugin& plot, const ItemSource& item) {
    for (std::size_t i = 0; i < maxNumbered; ++i) {
        const std::string name = numberedName("object", i);
        const bool isFed = std::any_of(plot.inputs.begin(), plot.inputs.end(), [&](const RecordedInput& input) {
            return input.name == name && input.plugin == item.plugin && input.output == item.output;
        });
        if (isFed) {
            return i;
        }
    }
    return std::nullopt;
}

std::size_t objectCount(const RecordedPlugin& plot) {
    return static_cast<std::size_t>(std::count_if(plot.inputs.begin(), plot.inputs.end(), [](const auto& input) {
        return input.name.starts_with("object") && input.name != "objects" && !input.plugin.empty();
    }));
}

/// The looks and labels of the objects that are drawn, in their order.
PlotStyle forObjects(PlotStyle style, const std::vector<std::size_t>& objects) {
    std::vector<ObjectLook> looks;
    std::vector<std::string> labels;
    for (const std::size_t i : objects) {
        looks.push_back(i < style.looks.size() ? style.looks[i] : ObjectLook());
        labels.push_back(i < style.labels.size() ? style.labels[i] : std::string());
    }
    style.looks = std::move(looks);
    style.labels = std::move(labels);
    return style;
}

std::optional<PlotStyle> styleOf(const RecordedPlugin& plot, const std::vector<ItemSource>& items) {
    std::vector<std::size_t> objects;
    for (const ItemSource& item : items) {
        const std::optional<std::size_t> object = objectFedBy(plot, item);
        if (!object) {
            return std::nullopt;
        }
        objects.push_back(*object);
    }
    try {
        PlotStyle style = forObjects(
            plotStyleOf([&](const std::string& input) { return valueIn(plot, input); }, maxNumbered), objects);
        // A part of the objects has nothing to be compared with.
        style.panel = objectCount(plot) == objects.size() ? style.panel : PanelKind::None;
        return style;
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

std::optional<SettingsInRun> settingsInRun(const RunRecord& record, const std::vector<ItemSource>& items) {
    for (const RecordedPlugin& plugin : record.plugins) {
        if (plugin.kind != "Plot") {
            continue;
        }
        if (auto style = styleOf(plugin, items)) {
            return SettingsInRun{.plot = plugin.name, .style = *std::move(style)};
        }
    }
    return std::nullopt;
}

std::vector<PictureInRun> picturesInRun(const RunRecord& record) {
    std::vector<PictureInRun> pictures;
    for (const RecordedPlugin& plugin : record.plugins) {
        if (plugin.kind == "Plot" && plugin.state == RecordedState::Done) {
            pictures.push_back({.plot = plugin.name,
                                .file = pictureName(valueIn(plugin, "file"), plugin.name),
                                .style = styleOf(plugin, {}).value_or(PlotStyle())});
        }
    }
    return pictures;
}

}  // namespace velmorak
