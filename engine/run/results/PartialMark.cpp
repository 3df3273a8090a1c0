#include "run/results/PartialMark.h"

#include <velmorak/DataObjects.h>

#include <algorithm>
#include <memory>
#include <type_traits>

namespace velmorak {

namespace {

template <typename Object>
DataObjectPtr marked(const Object& object, const AnnotationItem& mark) {
    auto copy = std::make_shared<Object>(object);
    copy->annotation.push_back(mark);
    return copy;
}

}  // namespace

Value withPartialMark(const Value& value, const std::string& sentence) {
    const auto* object = std::get_if<DataObjectPtr>(&value);
    const AnnotationItem mark{.key = "partial", .value = sentence, .isSticky = true};
    if (!object || !*object ||
        std::find((*object)->annotation.begin(), (*object)->annotation.end(), mark) != (*object)->annotation.end()) {
        return value;
    }
    return visit(**object, overloaded{
                               [object](const DataObject&) { return *object; },
                               [&mark](const auto& known) { return marked(known, mark); },
                           });
}

}  // namespace velmorak
