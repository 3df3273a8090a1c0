#include "kinds.h"

#include "Binning.h"
#include "Objects.h"

#include <velmorak/DataObjects.h>
#include <velmorak/HistogramList.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

namespace {

std::vector<std::string> keysOf(const HistogramList& list) {
    std::vector<std::string> keys;
    for (const HistogramList::Group& group : list.groups()) {
        keys.push_back(group.key);
    }
    return keys;
}

/// "3", "4" and 17 more.
std::string listOf(const std::vector<std::string>& keys) {
    constexpr std::size_t maxShown = 20;
    std::string text;
    for (std::size_t i = 0; i < std::min(keys.size(), maxShown); ++i) {
        text += (i == 0 ? "" : ", ") + velmorak::quoted(keys[i]);
    }
    return keys.size() <= maxShown ? text : text + " and " + std::to_string(keys.size() - maxShown) + " more";
}

/// @throws Failure if the list has no such group.
const Histogram1D& pick(const HistogramList& list, const std::string& key) {
    const std::vector<std::string> keys = keysOf(list);
    const auto found = std::find(keys.begin(), keys.end(), key);
    if (found != keys.end()) {
        return *list.groups()[static_cast<std::size_t>(found - keys.begin())].histogram;
    }
    if (keys.empty()) {
        throw Failure("histograms", "the list is empty");
    }
    throw Failure("key", "no histogram has the key " + velmorak::quoted(key) + "; the keys are " + listOf(keys) +
                             suggestion(key, keys));
}

/// Takes one histogram out of a list.
class PickHistogramKind : public Function {
public:
    std::string name() const override { return "PickHistogram"; }
    std::string summary() const override { return "Takes one histogram out of a list, by its key."; }
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string PickHistogramKind::notes() const {
    return R"(For what needs a single histogram: a `Fit`, a `Compare` of two groups, `Statistics`, `Smooth`. The key is the text that
titles and legends show after the equals sign: `3` for `run = 3`, `signal`, `10 to 20` for a bin of the key. The histogram is
passed on as it is, with its name and title unless a title is given.)";
}

Ports PickHistogramKind::ports(const ValueTexts&) const {
    return {{{.name = "histograms",
              .description = "List of histograms, such as that of GroupedHistogram.",
              .type = ValueType::Histograms},
             {.name = "key", .description = "Key of the wanted histogram, for example 3.", .type = ValueType::Text},
             derivedTitleInput()},
            {{.name = "histogram", .description = "The histogram with that key.", .type = ValueType::Histogram}}};
}

void PickHistogramKind::evaluate(const Arguments& arguments, Results& results, RunContext& /*context*/) const {
    const Value& value = arguments.value("histograms");
    const auto* const object = std::get_if<DataObjectPtr>(&value);
    const auto* const list = object ? dynamic_cast<const HistogramList*>(object->get()) : nullptr;
    if (!list) {
        throw Failure("histograms", "expected a list of histograms, such as that of a GroupedHistogram");
    }
    auto picked = std::make_shared<Histogram1D>(pick(*list, std::string(trimmed(arguments.text("key")))));
    if (const std::string& title = arguments.text("title"); !isBlank(title)) {
        picked->title = title;
    }
    results.set("histogram", DataObjectPtr(std::move(picked)));
}

std::unique_ptr<Kind> makePickHistogram() {
    return std::make_unique<PickHistogramKind>();
}

}  // namespace velmorak
