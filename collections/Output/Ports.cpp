#include "Ports.h"

#include <algorithm>
#include <cmath>

namespace velmorak {

std::string numberedName(const std::string& name, std::size_t position) {
    return position == 0 ? name : name + std::to_string(position + 1);
}

std::size_t numberedCount(const ValueTexts& values, const std::string& countInput) {
    const auto text = values.find(countInput);
    double count = 1.0;
    if (text == values.end() || !readNumber(text->second, count) || std::isnan(count)) {
        return 1;
    }
    return static_cast<std::size_t>(std::clamp(count, 1.0, static_cast<double>(maxNumbered)));
}

void addNumbered(Ports& ports, const InputSpec& first, std::size_t count) {
    for (std::size_t i = 1; i < count; ++i) {
        ports.inputs.push_back(first);
        ports.inputs.back().name = numberedName(first.name, i);
    }
}

std::vector<std::string> numberedInputs(const Arguments& arguments, const std::string& countInput,
                                        const std::string& name) {
    if (arguments.isWired(countInput)) {
        throw Failure(countInput, "the number cannot be wired, because it determines the inputs; enter it as a value");
    }
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < arguments.integer(countInput); ++i) {
        names.push_back(numberedName(name, static_cast<std::size_t>(i)));
    }
    return names;
}

InputSpec countInput(const std::string& name, const std::string& description) {
    return {.name = name,
            .description = description,
            .value = "1",
            .minimum = 1,
            .maximum = static_cast<double>(maxNumbered),
            .isInteger = true};
}

}  // namespace velmorak
