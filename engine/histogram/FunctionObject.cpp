#include <velmorak/FunctionObject.h>

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

namespace velmorak {

namespace {

constexpr std::uint64_t functionMark = 0x31'63'6e'46'6b'6c'65'56;

}  // namespace

void FunctionObject::write(ByteWriter& writer) const {
    writer.number(functionMark);
    writer.head(*this);
    writer.list(codelet);
    writer.number<std::uint8_t>(isNormalized ? 1 : 0);
    writer.number<std::uint64_t>(arguments.size());
    for (const Argument& argument : arguments) {
        writer.list(argument.name);
        writer.list(argument.ranges);
    }
    writer.number<std::uint64_t>(parameters.size());
    for (const Parameter& parameter : parameters) {
        writer.list(parameter.name);
        writer.number(parameter.value);
    }
}

std::string FunctionObject::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

FunctionObject FunctionObject::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, functionMark);
    FunctionObject function;
    reader.head().give(function);
    function.codelet = reader.list<std::string>();
    function.isNormalized = reader.number<std::uint8_t>() != 0;
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        Argument argument{.name = reader.list<std::string>(), .ranges = {}};
        argument.ranges = reader.list<std::vector<Range>>();
        function.arguments.push_back(std::move(argument));
    }
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        Parameter parameter{.name = reader.list<std::string>()};
        parameter.value = reader.number<double>();
        function.parameters.push_back(std::move(parameter));
    }
    reader.mustBeAtEnd();
    return function;
}

}  // namespace velmorak
