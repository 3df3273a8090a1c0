#pragma once

#include <velmorak/Value.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

/// The description of a plug-in kind: name, ports, and the values that its inputs accept.
namespace velmorak {

struct InputSpec {
    std::string name{};         ///< One word.
    std::string description{};  ///< A sentence for physicists, with the unit if there is one.
    ValueType type = ValueType::Number;
    std::string value{};                                        ///< Default; empty if only a wire can provide a value.
    std::vector<std::string> choices{};                         ///< Of a choice: the allowed texts.
    double minimum = -std::numeric_limits<double>::infinity();  ///< Of a number.
    double maximum = std::numeric_limits<double>::infinity();
    bool isInteger = false;   ///< Of a number: must have no fraction.
    bool isOptional = false;  ///< Of an input that only a wire can feed: may stay unwired.
    bool isSeed = false;      ///< Of a number: seeds random numbers; the record of a run lists it.
    /// Of an input that only a wire can feed, but not with a table: the plug-in is executed even if what feeds the
    /// input has failed, as long as some such input has a value. Arguments::whyMissing then says why. The result is not
    /// kept.
    bool mayFail = false;
};

struct OutputSpec {
    std::string name{};
    std::string description{};
    ValueType type = ValueType::Number;
};

struct Ports {
    std::vector<InputSpec> inputs;
    std::vector<OutputSpec> outputs;
};

/// Value texts of a plug-in by input name.
using ValueTexts = std::map<std::string, std::string>;

/// One kind of plug-in. Created once when its collection is loaded, immutable, and shared by all plug-ins of the kind.
/// Threads: every operation may be called by several threads at once.
class Kind {
public:
    virtual ~Kind() = default;
    Kind(const Kind&) = delete;
    Kind& operator=(const Kind&) = delete;

    /// One word, unique in all collections.
    virtual std::string name() const = 0;
    /// One sentence.
    virtual std::string summary() const = 0;
    /// Markdown for the kind's page of the documentation, below the tables of ports: formulas with their sources, edge
    /// cases.
    virtual std::string notes() const { return {}; }
    /// Increase it whenever the same inputs yield other results than before: cached results then expire.
    virtual int version() const { return 1; }
    /// The kind reports on the whole run. It is executed after all other plug-ins, even if a plug-in that feeds it has
    /// failed: such an input is wired but has no value, or falls back to its own text. RunContext::record() then covers
    /// every plug-in, and results are never cached. Such a kind must be a Function without outputs.
    virtual bool isRunReporter() const { return false; }
    /// Ports of a plug-in with these values; values is empty for a new plug-in. Most kinds ignore the argument. Where
    /// ports do depend on values, those that remain keep their order.
    virtual Ports ports(const ValueTexts& values) const = 0;
    /// Rejects a value that no run could use, for example an expression with a syntax error. Called when a value is
    /// set.
    /// @return the reason as a sentence; empty to accept the value.
    virtual std::string refusal(const std::string& input, const std::string& value) const;

protected:
    Kind() = default;
};

}  // namespace velmorak
