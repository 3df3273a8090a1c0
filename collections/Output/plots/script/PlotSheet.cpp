#include "Output/plots/script/PlotSheet.h"

#include <velmorak/DataObjects.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace velmorak {

namespace {

/// A list among the objects; null for any other object.
using ListPtr = std::shared_ptr<const HistogramList>;

ListPtr listIn(const PlotObject& object) {
    return visit(*object.object, overloaded{
                                     [&](const HistogramList& list) { return ListPtr(object.object, &list); },
                                     [](const DataObject&) { return ListPtr(); },
                                 });
}

/// Objects of one frame with their labels and looks.
struct FrameObjects {
    std::vector<PlotObject> objects;
    std::vector<std::string> labels;
    std::vector<ObjectLook> looks;

    void add(PlotObject object, std::string label, ObjectLook look);
    PlotStyle styled(PlotStyle style) const;
};

void FrameObjects::add(PlotObject object, std::string label, ObjectLook look) {
    objects.push_back(std::move(object));
    labels.push_back(std::move(label));
    looks.push_back(std::move(look));
}

PlotStyle FrameObjects::styled(PlotStyle style) const {
    style.labels = labels;
    style.looks = looks;
    return style;
}

/// Distributes the objects of a picture to frames.
class Distribution {
public:
    Distribution(const std::vector<PlotObject>& all, const PlotStyle& style);

    bool hasGrid() const { return style.lists == ListDisplay::Grid && !keys.empty(); }
    /// All objects in one frame.
    FrameObjects overlaid() const;
    /// Position of the frames, with the labels of their keys.
    const std::vector<HistogramList::Group>& frames() const { return keys; }
    /// The objects of the frame for a key: of lists the histogram with that key, if there is one, and the others.
    FrameObjects inFrame(const std::string& key) const;
    /// The title of the only list; empty if there are several.
    std::string title() const;

private:
    void addKeys(const HistogramList& list);
    std::string givenLabel(std::size_t position) const;
    ObjectLook look(std::size_t position) const;
    /// What the legend says of a list; empty if it goes without saying.
    std::string listLabel(std::size_t position) const;

    const std::vector<PlotObject>& all;
    const PlotStyle& style;
    std::vector<ListPtr> lists;  ///< Parallel to the objects.
    std::vector<HistogramList::Group> keys;
};

Distribution::Distribution(const std::vector<PlotObject>& all, const PlotStyle& style) : all(all), style(style) {
    for (const PlotObject& object : all) {
        lists.push_back(listIn(object));
        if (lists.back()) {
            addKeys(*lists.back());
        }
    }
}

/// A key that further lists have in addition comes after the one before it in its own list.
void Distribution::addKeys(const HistogramList& list) {
    std::size_t next = 0;
    for (const HistogramList::Group& group : list.groups()) {
        const auto found =
            std::find_if(keys.begin(), keys.end(), [&](const auto& one) { return one.key == group.key; });
        if (found == keys.end()) {
            keys.insert(keys.begin() + static_cast<std::ptrdiff_t>(next), group);
        } else {
            next = static_cast<std::size_t>(found - keys.begin());
        }
        ++next;
    }
}

std::string Distribution::givenLabel(std::size_t position) const {
    return position < style.labels.size() ? style.labels[position] : std::string();
}

ObjectLook Distribution::look(std::size_t position) const {
    return position < style.looks.size() ? style.looks[position] : ObjectLook();
}

std::string Distribution::listLabel(std::size_t position) const {
    const std::string label = look(position).legend.value_or(givenLabel(position));
    return label.empty() && all.size() > 1 ? lists[position]->title : label;
}

FrameObjects Distribution::overlaid() const {
    FrameObjects frame;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!lists[i]) {
            frame.add(all[i], givenLabel(i), look(i));
            continue;
        }
        const std::string label = listLabel(i);
        ObjectLook own = look(i);
        own.legend.reset();
        for (const HistogramList::Group& group : lists[i]->groups()) {
            PlotObject object = all[i];
            object.object = group.histogram;
            frame.add(std::move(object), label.empty() ? group.label : label + ", " + group.label, own);
        }
    }
    return frame;
}

FrameObjects Distribution::inFrame(const std::string& key) const {
    FrameObjects frame;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!lists[i]) {
            frame.add(all[i], givenLabel(i), look(i));
            continue;
        }
        for (const HistogramList::Group& group : lists[i]->groups()) {
            if (group.key == key) {
                PlotObject object = all[i];
                object.object = group.histogram;
                frame.add(std::move(object), listLabel(i), look(i));
            }
        }
    }
    return frame;
}

std::string Distribution::title() const {
    std::string title;
    std::size_t count = 0;
    for (const ListPtr& list : lists) {
        title = list ? list->title : title;
        count += list ? 1 : 0;
    }
    return count == 1 ? title : std::string();
}

/// How frames are arranged.
struct GridShape {
    std::size_t columns = 1;
    std::size_t rows = 1;
    double frameWidth = 0.0;
    double frameHeight = 0.0;
};

/// The arrangement in which frames with the usual proportions are largest.
GridShape shapeFor(std::size_t count, const PlotLayout& layout) {
    constexpr double proportion = 1.5;
    GridShape best;
    for (std::size_t columns = 1; columns <= count; ++columns) {
        const std::size_t rows = (count + columns - 1) / columns;
        const GridShape shape{.columns = columns,
                              .rows = rows,
                              .frameWidth = layout.frameWidth() / static_cast<double>(columns),
                              .frameHeight = layout.frameHeight() / static_cast<double>(rows)};
        const auto size = [](const GridShape& it) { return std::min(it.frameWidth, proportion * it.frameHeight); };
        best = columns == 1 || size(shape) > size(best) ? shape : best;
    }
    return best;
}

/// The number of frames that can be read.
std::size_t roomFor(const PlotLayout& layout) {
    constexpr double minWidth = 2.6;
    constexpr double minHeight = 2.0;
    return static_cast<std::size_t>(std::max(1.0, std::floor(layout.frameWidth() / minWidth)) *
                                    std::max(1.0, std::floor(layout.frameHeight() / minHeight)));
}

PlotLayout sheetLayout(const PlotStyle& style, bool hasTitle, std::size_t notes) {
    PlotLayout layout{.width = style.width, .height = style.height};
    layout.scale = scaleOf(style.width, style.height);
    layout.place = {.pageWidth = style.width, .pageHeight = style.height};
    layout.left = 1.25 * lineCm(layout.titleFont());
    layout.right = 0.2 * layout.scale;
    layout.bottom = 1.1 * lineCm(layout.titleFont()) + static_cast<double>(notes) * lineCm(layout.boxFont());
    layout.top = (hasTitle ? 1.0 : 0.2) * layout.scale;
    return layout;
}

/// The style of the frame with a number, from the upper left.
PlotStyle styleInGrid(PlotStyle style, std::size_t number, const GridShape& shape, const PlotLayout& layout) {
    const auto column = static_cast<double>(number % shape.columns);
    const std::size_t rowsAbove = number / shape.columns;
    const auto row = static_cast<double>(rowsAbove + 1);
    style.place = PlotPlace{.x = layout.left + column * shape.frameWidth,
                            .y = layout.height - layout.top - row * shape.frameHeight,
                            .pageWidth = style.width,
                            .pageHeight = style.height};
    style.width = shape.frameWidth;
    style.height = shape.frameHeight;
    style.title.clear();
    // A frame has no room for a box that nobody asked for.
    style.statistics = style.statistics == StatisticsDisplay::Automatic ? StatisticsDisplay::None : style.statistics;
    return style;
}

PlotSheet gridOf(const Distribution& objects, const PlotStyle& style, const std::vector<std::string>& missing) {
    PlotSheet sheet;
    sheet.title = style.title.empty() ? objects.title() : style.title;
    sheet.notes = missing;
    const std::size_t all = objects.frames().size();
    std::size_t count = all;
    if (count > roomFor(sheetLayout(style, !sheet.title.empty(), missing.size()))) {
        count = roomFor(sheetLayout(style, !sheet.title.empty(), missing.size() + 1));
        sheet.notes.push_back("the first " + std::to_string(count) + " of " + std::to_string(all) +
                              " histograms are drawn; the others need a larger size");
    }
    sheet.layout = sheetLayout(style, !sheet.title.empty(), sheet.notes.size());
    const GridShape shape = shapeFor(count, sheet.layout);
    for (std::size_t i = 0; i < count; ++i) {
        const HistogramList::Group& key = objects.frames()[i];
        const FrameObjects frame = objects.inFrame(key.key);
        PlotStyle own = frame.styled(styleInGrid(style, i, shape, sheet.layout));
        own.panel = frame.objects.size() > 1 ? style.panel : PanelKind::None;
        PlotContents contents = plotContents(frame.objects, own);
        contents.title = key.label;
        sheet.frames.push_back({std::move(contents), std::move(own)});
    }
    sheet.frames.front().contents.warnings.insert(sheet.frames.front().contents.warnings.end(), sheet.notes.begin(),
                                                  sheet.notes.end());
    return sheet;
}

/// A long legend would hide the picture.
void limitLegend(PlotContents& contents, PlotStyle& style) {
    constexpr std::size_t most = 24;
    if (style.legend == LegendPlace::Automatic && contents.series.size() > most) {
        style.legend = LegendPlace::None;
        contents.warnings.push_back("legend: " + std::to_string(contents.series.size()) +
                                    " names have no room; choose a corner to see them all the same");
    }
}

}  // namespace

std::vector<std::string> PlotSheet::warnings() const {
    std::vector<std::string> all;
    for (const Frame& frame : frames) {
        for (const std::string& warning : frame.contents.warnings) {
            if (!isGrid() || std::find(all.begin(), all.end(), warning) == all.end()) {
                all.push_back(warning);
            }
        }
    }
    return all;
}

PlotSheet plotSheet(const std::vector<PlotObject>& objects, const PlotStyle& style,
                    const std::vector<std::string>& missing) {
    const Distribution distribution(objects, style);
    if (distribution.hasGrid()) {
        return gridOf(distribution, style, missing);
    }
    const FrameObjects frame = distribution.overlaid();
    PlotStyle own = frame.styled(style);
    PlotContents contents = plotContents(frame.objects, own);
    if (const std::string title = distribution.title(); !title.empty()) {
        contents.title = title;
    }
    limitLegend(contents, own);
    contents.notes.insert(contents.notes.end(), missing.begin(), missing.end());
    contents.warnings.insert(contents.warnings.end(), missing.begin(), missing.end());
    PlotSheet sheet;
    sheet.frames.push_back({std::move(contents), std::move(own)});
    return sheet;
}

}  // namespace velmorak
