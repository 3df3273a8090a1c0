#include "Objects.h"

#include <velmorak/DataObjects.h>

namespace velmorak {

namespace {

const DataObjectPtr* objectAt(const Arguments& arguments, const std::string& input) {
    const Value& arrived = arguments.value(input);
    if (std::holds_alternative<std::monostate>(arrived)) {
        throw Failure(input,
                      arguments.isWired(input) ? "expected a histogram, but a table is wired" : "nothing is wired");
    }
    return std::get_if<DataObjectPtr>(&arrived);
}

[[noreturn]] void refuse(const std::string& input) {
    throw Failure(input, "expected a histogram");
}

}  // namespace

AnyHistogram anyHistogram(const Arguments& arguments, const std::string& input) {
    const DataObjectPtr* const object = objectAt(arguments, input);
    if (!object) {
        refuse(input);
    }
    return visit(**object, overloaded{
                               [&]<std::size_t axes>(const Histogram<axes>& histogram) -> AnyHistogram {
                                   return std::shared_ptr<const Histogram<axes>>(*object, &histogram);
                               },
                               [&](const DataObject&) -> AnyHistogram { refuse(input); },
                           });
}

InputSpec histogramInput(const std::string& name, const std::string& description) {
    return {.name = name, .description = description, .type = ValueType::Histogram};
}

InputSpec derivedTitleInput() {
    return {.name = "title",
            .description = "Title shown above a plot. Empty: the title of the input histogram.",
            .type = ValueType::Text};
}

void nameAfter(DataObject& object, const DataObject& source, const Arguments& arguments, const RunContext& context) {
    object.name = context.pluginName();
    object.title = arguments.text("title").empty() ? source.title : arguments.text("title");
}

std::string describe(const Axis& axis) {
    if (!axis.labels.empty()) {
        return std::to_string(axis.bins()) + " categories from \"" + axis.labels.front() + "\" to \"" +
               axis.labels.back() + "\"";
    }
    return std::to_string(axis.bins()) + " bins from " + textOf(axis.low()) + " to " + textOf(axis.high());
}

}  // namespace velmorak
