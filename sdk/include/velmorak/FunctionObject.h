#pragma once

#include <velmorak/Value.h>

#include <limits>
#include <string>
#include <vector>

namespace velmorak {

class ByteWriter;

/// A function of one or more arguments and its parameters, as a file describes it.
class FunctionObject : public DataObject {
public:
    struct Range {
        double low = -std::numeric_limits<double>::infinity();
        double high = std::numeric_limits<double>::infinity();

        bool operator==(const Range&) const = default;
    };
    struct Argument {
        std::string name;
        std::vector<Range> ranges;  ///< Ranges over which the function is normalised.

        bool operator==(const Argument&) const = default;
    };
    struct Parameter {
        std::string name;
        double value = 0.0;

        bool operator==(const Parameter&) const = default;
    };

    ValueType type() const override { return ValueType::Function; }

    /// The formula: "codelet:G:catalog", or "codelet:TITLE:verbatim:jel : 1 : a+b*x[0] : a,b : null". No blanks at the
    /// ends.
    std::string codelet;
    bool isNormalized = false;
    std::vector<Argument> arguments;
    std::vector<Parameter> parameters;

    /// Serialises the whole object; fromBytes reads it on machines of the same byte order.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static FunctionObject fromBytes(const std::string& bytes);
};

}  // namespace velmorak
