#pragma once

#include <velmorak/Value.h>

#include <limits>
#include <string>
#include <vector>

namespace velmorak {

class ByteWriter;

/// A function of one or more arguments with its parameters, as a file describes it.
class FunctionObject : public DataObject {
public:
    struct Range {
        double low = -std::numeric_limits<double>::infinity();
        double high = std::numeric_limits<double>::infinity();

        bool operator==(const Range&) const = default;
    };
    struct Argument {
        std::string name;
        std::vector<Range> ranges;  ///< Over which the function is normalised.

        bool operator==(const Argument&) const = default;
    };
    struct Parameter {
        std::string name;
        double value = 0.0;

        bool operator==(const Parameter&) const = default;
    };

    ValueType type() const override { return ValueType::Function; }

    /// What is computed: "codelet:G:catalog", or "codelet:TITLE:verbatim:jel : 1 : a+b*x[0] : a,b : null". Without
    /// blanks at its ends.
    std::string codelet;
    bool isNormalized = false;
    std::vector<Argument> arguments;
    std::vector<Parameter> parameters;

    /// Everything as bytes that fromBytes reads on any machine of the same kind.
    std::string toBytes() const;
    /// Writes these bytes without the checksum at their end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static FunctionObject fromBytes(const std::string& bytes);
};

}  // namespace velmorak
