#include "TestCollection.h"

#include <velmorak/Kind.h>

#include <stdexcept>
#include <thread>

using namespace velmorak;

std::atomic<int> waitersRunning{0};

namespace {

/// Numbers in all their forms.
class Pair : public Function {
public:
    std::string name() const override { return "Pair"; }
    std::string summary() const override { return "Adds two numbers."; }
    Ports ports(const ValueTexts&) const override {
        Ports made;
        made.inputs = {{.name = "a", .description = "First number.", .value = "0"},
                       {.name = "b", .description = "Second number.", .value = "0", .minimum = -10, .maximum = 10},
                       {.name = "count", .description = "How often.", .value = "1", .minimum = 1, .isInteger = true},
                       {.name = "mode",
                        .description = "How.",
                        .type = ValueType::Choice,
                        .value = "plain",
                        .choices = {"plain", "weighted"}},
                       {.name = "label", .description = "A text.", .type = ValueType::Text, .value = ""}};
        made.outputs = {{.name = "sum", .description = "a + b."},
                        {.name = "text", .description = "The label.", .type = ValueType::Text}};
        return made;
    }
    std::string refusal(const std::string& input, const std::string& value) const override {
        if (value == "throw") {
            throw std::runtime_error("the kind is at a loss.");
        }
        return input == "label" && value == "bad" ? "bad is no label." : "";
    }
    void evaluate(const Arguments& arguments, Results& results, RunContext&) const override {
        results.set("sum", arguments.number("a") + arguments.number("b"));
        results.set("text", arguments.text("label"));
    }
};

/// One number input and one number output for each letter of its value; "!" cannot be used.
class Letters : public Function {
public:
    std::string name() const override { return "Letters"; }
    std::string summary() const override { return "Has a port for each letter."; }
    Ports ports(const ValueTexts& values) const override {
        const auto found = values.find("letters");
        const std::string letters = found == values.end() ? "xy" : found->second;
        Ports made;
        made.inputs.push_back({.name = "letters", .description = "L.", .type = ValueType::Text, .value = "xy"});
        for (const char letter : letters) {
            if (letter == '!') {
                throw std::runtime_error("! is no letter.");
            }
            made.inputs.push_back({.name = std::string(1, letter), .description = "N.", .value = "1"});
            made.outputs.push_back({.name = std::string(1, letter), .description = "N."});
        }
        return made;
    }
    void evaluate(const Arguments&, Results&, RunContext&) const override {}
};

/// A table goes in, nothing comes out.
class Drain : public Function {
public:
    std::string name() const override { return "Drain"; }
    std::string summary() const override { return "Takes anything."; }
    Ports ports(const ValueTexts&) const override {
        Ports made;
        made.inputs = {{.name = "histogram", .description = "H.", .type = ValueType::Histogram, .isOptional = true},
                       {.name = "other", .description = "O.", .type = ValueType::Any, .isOptional = true}};
        return made;
    }
    void evaluate(const Arguments&, Results&, RunContext&) const override {}
};

/// Works until it is asked to stop.
class Waiter : public Function {
public:
    std::string name() const override { return "Waiter"; }
    std::string summary() const override { return "Waits for the end."; }
    Ports ports(const ValueTexts&) const override {
        Ports made;
        made.outputs = {{.name = "never", .description = "Does not come."}};
        return made;
    }
    void evaluate(const Arguments&, Results&, RunContext& context) const override {
        constexpr long maxPolls = 100'000'000;
        ++waitersRunning;
        for (long poll = 0; poll < maxPolls && !context.isStopping(); ++poll) {
            std::this_thread::yield();
        }
        --waitersRunning;
        if (!context.isStopping()) {
            throw Failure("nobody has stopped the run");
        }
        throw Stopped();
    }
};

}  // namespace

VELMORAK_COLLECTION(registry) {
    registry.group("TestCollection");
    registry.add(std::make_unique<Waiter>());
    registry.add(std::make_unique<Pair>());
    registry.add(std::make_unique<Letters>());
    registry.group("Drains");
    registry.add(std::make_unique<Drain>());
}
