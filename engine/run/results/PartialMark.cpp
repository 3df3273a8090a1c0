#include "run/results/PartialMark.h"

#include <velmorak/DataObjects.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmorak {

namespace {

template <typename Object>
DataObjectPtr marked(const Object& object, const AnnotationItem& mark) {
    auto copy = std::make_shared<Object>(object);
    copy->annotation.push_back(mark);
    return copy;
}

/// Each histogram is marked, too, because it may be written alone.
DataObjectPtr markedList(const HistogramList& list, const AnnotationItem& mark) {
    std::vector<HistogramList::Group> groups = list.groups();
    for (HistogramList::Group& group : groups) {
        auto copy = std::make_shared<Histogram1D>(*group.histogram);
        copy->annotation.push_back(mark);
        group.histogram = std::move(copy);
    }
    auto made = std::make_shared<HistogramList>(list.keyTitle(), std::move(groups));
    made->name = list.name;
    made->title = list.title;
    made->options = list.options;
    made->annotation = list.annotation;
    made->annotation.push_back(mark);
    return made;
}

}  // namespace

Value withPartialMark(const Value& value, const std::string& sentence) {
    const auto* object = std::get_if<DataObjectPtr>(&value);
    const AnnotationItem mark{.key = "partial", .value = sentence, .isSticky = true};
    if (object == nullptr || !*object ||
        std::find((*object)->annotation.begin(), (*object)->annotation.end(), mark) != (*object)->annotation.end()) {
        return value;
    }
    return visit(**object, overloaded{
                               [object](const DataObject&) { return *object; },
                               [&mark](const HistogramList& list) { return markedList(list, mark); },
                               [&mark](const auto& known) { return marked(known, mark); },
                           });
}

}  // namespace velmorak
