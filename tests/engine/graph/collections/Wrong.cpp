#include <velmorak/Kind.h>

#include <limits>
#include <stdexcept>

using namespace velmorak;

namespace {

/// Has the name and the ports that it is made with.
class Made : public Function {
public:
    explicit Made(std::string kindName, Ports kindPorts = {})
        : kindName(std::move(kindName)), kindPorts(std::move(kindPorts)) {}
    std::string name() const override { return kindName; }
    std::string summary() const override { return "Is made wrong."; }
    Ports ports(const ValueTexts&) const override { return kindPorts; }
    void evaluate(const Arguments&, Results&, RunContext&) const override {}

private:
    std::string kindName;
    Ports kindPorts;
};

/// Throws an object that is no std::exception wherever a value is requested; not offered where it always throws.
class Thrower : public Function {
public:
    explicit Thrower(bool isAlways) : isAlways(isAlways) {}
    std::string name() const override { return isAlways ? "Always" : "Later"; }
    std::string summary() const override { return "Throws a number."; }
    Ports ports(const ValueTexts& values) const override {
        const auto text = values.find("text");
        if (isAlways || (text != values.end() && text->second == "throw")) {
            throw 7;
        }
        Ports made;
        made.inputs = {{.name = "text", .type = ValueType::Text},
                       {.name = text != values.end() && text->second == "nameless" ? "" : "named"}};
        return made;
    }
    std::string refusal(const std::string&, const std::string& value) const override {
        if (value == "refuse") {
            throw 8;
        }
        return {};
    }
    void evaluate(const Arguments&, Results&, RunContext&) const override {}

private:
    bool isAlways;
};

/// Opens no table, or throws an object that is no std::exception, also when it is asked for its files.
class Opener : public Source {
public:
    std::string name() const override { return "Opener"; }
    std::string summary() const override { return "Opens nothing."; }
    Ports ports(const ValueTexts&) const override {
        Ports made;
        made.inputs = {{.name = "how", .type = ValueType::Text}};
        made.outputs = {{.name = "table", .type = ValueType::Table}};
        return made;
    }
    bool tellsColumns() const override { return true; }
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext&) const override {
        if (arguments.text("how") == "throw early") {
            throw 8;
        }
        return {};
    }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext&) const override {
        if (arguments.text("how") == "throw") {
            throw 9;
        }
        return nullptr;
    }
};

void addInput(Registry& registry, const std::string& kind, InputSpec input) {
    registry.add(std::make_unique<Made>(kind, Ports{.inputs = {std::move(input)}, .outputs = {}}));
}

void addWrongNames(Registry& registry) {
    registry.add(nullptr);
    registry.add(std::make_unique<Made>(""));
    registry.add(std::make_unique<Made>("two words"));
    registry.add(std::make_unique<Made>("line\nend"));
    registry.add(std::make_unique<Made>("\xff"));
    addInput(registry, "Nameless", {.name = ""});
    addInput(registry, "Blank", {.name = "a b"});
    registry.add(std::make_unique<Made>("Doubled", Ports{.inputs = {}, .outputs = {{.name = "o"}, {.name = "o"}}}));
    registry.add(std::make_unique<Made>("Control", Ports{.inputs = {}, .outputs = {{.name = "\x1b[31m"}}}));
}

void addWrongInputs(Registry& registry) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    addInput(registry, "NoLimit", {.name = "i", .value = "0", .minimum = nan});
    addInput(registry, "Crossed", {.name = "i", .value = "0", .minimum = 2, .maximum = 1});
    addInput(registry, "Outside", {.name = "i", .value = "5", .maximum = 1});
    addInput(registry, "Halved", {.name = "i", .value = "0.5", .isInteger = true});
    addInput(registry, "NoNumber", {.name = "i", .value = "one"});
    addInput(registry, "LimitedText", {.name = "i", .type = ValueType::Text, .minimum = 1});
    addInput(registry, "NoChoices", {.name = "i", .type = ValueType::Choice});
    addInput(registry, "TwiceChosen", {.name = "i", .type = ValueType::Choice, .value = "a", .choices = {"a", "a"}});
    addInput(registry, "NotChosen", {.name = "i", .type = ValueType::Choice, .value = "c", .choices = {"a", "b"}});
    addInput(registry, "ChoosyText", {.name = "i", .type = ValueType::Text, .choices = {"a"}});
    addInput(registry, "WiredValue", {.name = "i", .type = ValueType::Histogram, .value = "h"});
}

}  // namespace

VELMORAK_COLLECTION(registry) {
    registry.group("Wrong");
    addWrongNames(registry);
    addWrongInputs(registry);
    registry.add(std::make_unique<Thrower>(true));
    registry.add(std::make_unique<Thrower>(false));
    registry.add(std::make_unique<Opener>());
    registry.group("Line\nend");
    registry.add(std::make_unique<Made>("Lost"));
}
