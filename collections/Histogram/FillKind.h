#pragma once

#include <velmorak/Kind.h>

#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// A kind that fills an object from the rows of a table.
class FillKind : public Accumulator {
public:
    struct Description {
        std::string name{};
        std::string summary{};
        std::string notes{};
        Ports ports{};
        std::unique_ptr<Accumulation> (*prepare)(const Arguments& arguments, const Schema& schema,
                                                 RunContext& context) = nullptr;
    };

    explicit FillKind(Description description) : description(std::move(description)) {}

    std::string name() const override { return description.name; }
    std::string summary() const override { return description.summary; }
    std::string notes() const override { return description.notes; }
    Ports ports(const ValueTexts& /*values*/) const override { return description.ports; }
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;

private:
    Description description;
};

InputSpec tableInput();

/// The inputs for the table, for the quantities x, y ... with these meanings, and for the weight.
std::vector<InputSpec> quantityInputs(const std::vector<std::string>& meanings);

}  // namespace velmorak
