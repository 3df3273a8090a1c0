#include "Target.h"

#include <velmorak/Failure.h>
#include <velmorak/Fit.h>
#include <velmorak/FunctionValues.h>

#include <cmath>
#include <optional>

// A model that is fitted, on the first line, the settings of its parameters on the second, and a function of a
// file as its codelet on the third. A model that is taken gives a function that can be computed.

namespace velmorak::fuzz {
namespace {

FitData points() {
    FitData data;
    for (const double y : {3.0, 5.0, 9.0, 6.0, 2.0, 1.0, 0.0, 1.0}) {
        const auto x = static_cast<double>(data.entries.size());
        data.entries.push_back({.low = x, .high = x + 1.0, .y = y, .error = std::sqrt(y)});
    }
    return data;
}

void fitted(const FitModel& model, const FitParameters& parameters) {
    constexpr int maxPolls = 200;
    int polls = 0;
    FitOptions options;
    options.parameters = parameters;
    options.isStopping = [&polls] { return ++polls > maxPolls; };
    try {
        const FitResult result = fit(model, points(), options);
        require(result.values.size() == model.parameters().size(), "each parameter has a value");
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
}

FitParameters parametersIn(std::string_view text) {
    try {
        return readFitParameters(text);
    } catch (const Failure&) {
        return {};
    }
}

void readModel(std::string_view text, std::string_view start) {
    std::optional<FitModel> model;
    try {
        model.emplace(text);
    } catch (const Failure&) {
        return;
    }
    const std::vector<double> values(model->parameters().size(), 0.5);
    const FunctionValues made(model->function(values));
    try {
        made({0.0, 1.5, -1e300});
    } catch (const Failure& failure) {
        const bool isOfIntegers =
            std::string_view(failure.what()).find("no integer can hold") != std::string_view::npos;
        require(isOfIntegers, "a function fails only where integers overflow or are divided by 0");
    }
    fitted(*model, parametersIn(start));
}

void readCodelet(std::string_view text) {
    FunctionObject function;
    function.codelet = text;
    for (const char* name : {"a", "b", "c", "mean", "sigma"}) {
        function.parameters.push_back({name, 1.5});
        try {
            const FunctionValues values(function);
            values({0.0, 2.0, -1.0});
        } catch (const Failure&) {
        }
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak::fuzz;
    std::string_view text = textOf(data, size);
    const std::string_view model = takeLine(text);
    const std::string_view start = takeLine(text);
    readModel(model, start);
    readCodelet(text);
    return 0;
}
