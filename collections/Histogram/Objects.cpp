#include "Objects.h"

namespace velmorak {

namespace {

const DataObjectPtr* objectAt(const Arguments& arguments, const std::string& input) {
    const Value& arrived = arguments.value(input);
    if (std::holds_alternative<std::monostate>(arrived)) {
        throw Failure(input,
                      arguments.isWired(input) ? "a table is wired where a histogram is needed" : "nothing is wired");
    }
    return std::get_if<DataObjectPtr>(&arrived);
}

}  // namespace

AnyHistogram histogramOf1Or2(const Arguments& arguments, const std::string& input) {
    const DataObjectPtr* object = objectAt(arguments, input);
    if (object) {
        if (auto one = std::dynamic_pointer_cast<const Histogram1D>(*object)) {
            return one;
        }
        if (auto two = std::dynamic_pointer_cast<const Histogram2D>(*object)) {
            return two;
        }
    }
    throw Failure(input, "what is wired is no histogram of one or two dimensions");
}

Histogram2DPtr histogram2D(const Arguments& arguments, const std::string& input) {
    const DataObjectPtr* object = objectAt(arguments, input);
    auto histogram = object ? std::dynamic_pointer_cast<const Histogram2D>(*object) : nullptr;
    if (!histogram) {
        throw Failure(input, "what is wired is no two-dimensional histogram");
    }
    return histogram;
}

InputSpec histogramInput(const std::string& name, const std::string& description) {
    return {.name = name, .description = description, .type = ValueType::Histogram};
}

InputSpec derivedTitleInput() {
    return {.name = "title",
            .description = "Shown above a plot. Empty: the title of the histogram that it is made of.",
            .type = ValueType::Text};
}

void nameAfter(DataObject& object, const DataObject& source, const Arguments& arguments, const RunContext& context) {
    object.name = context.pluginName();
    object.title = arguments.text("title").empty() ? source.title : arguments.text("title");
}

std::string describe(const Axis& axis) {
    return std::to_string(axis.bins()) + " bins from " + textOf(axis.low()) + " to " + textOf(axis.high());
}

}  // namespace velmorak
