#pragma once

#include <velmorak/Value.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

/// What a kind of plug-in says of itself: name, ports, which values it refuses.
namespace velmorak {

struct InputSpec {
    std::string name{};         ///< One word.
    std::string description{};  ///< A sentence that a physicist understands, with the unit where there is one.
    ValueType type = ValueType::Number;
    std::string value{};  ///< Text that a new plug-in begins with; empty where only a wire brings something.
    std::vector<std::string> choices{};                         ///< Of a choice: the texts that are allowed.
    double minimum = -std::numeric_limits<double>::infinity();  ///< Of a number.
    double maximum = std::numeric_limits<double>::infinity();
    bool isInteger = false;   ///< Of a number: no fraction.
    bool isOptional = false;  ///< Of an input that only a wire can feed: the run goes on without one.
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

/// One kind of plug-in. Made once when its collection is loaded, never changed; serves any number of plug-ins.
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
    /// What its page says below the tables, in Markdown: formulas with their sources, rules at the edges.
    virtual std::string notes() const { return {}; }
    /// Counts up when the same inputs would give other results than before.
    virtual int version() const { return 1; }
    /// The kind tells of the whole run, as a report does. It is executed when all else has ended, also where what feeds
    /// it failed: such an input is wired and has no value, or keeps its own text. Its record holds every plug-in, and
    /// its result is never taken from the store. Such a kind is a function without outputs.
    virtual bool isRunReporter() const { return false; }
    /// Ports of a plug-in with these values. A kind whose ports do not depend on them ignores the argument; it is
    /// empty when a new plug-in is made. Ports that stay keep their place.
    virtual Ports ports(const ValueTexts& values) const = 0;
    /// Refuses values that no run could use, for example an expression with a mistake. Called when the value is set.
    /// @return an empty text, or the reason as a sentence.
    virtual std::string refusal(const std::string& input, const std::string& value) const;

protected:
    Kind() = default;
};

}  // namespace velmorak
