#include <velmorak/StateBytes.h>

#include "table/Checksum.h"

#include <velmorak/Kind.h>
#include <velmorak/ObjectBytes.h>

#include <utility>

// Layout: mark, version of the layout, name of the kind, the bytes of the state, checksum of all before.
namespace velmorak {

namespace {

constexpr std::string_view mark = "VelState";
constexpr std::uint32_t layout = 1;
constexpr std::size_t bytesOfSum = sizeof emptyChecksum;

std::string sentence(const std::string& kind, const std::string& why) {
    return "the saved state of \"" + kind + "\" is damaged: " + why;
}

}  // namespace

StateWriter::StateWriter(std::string kind) : kindName(std::move(kind)), bytes(mark) {
    number(layout);
    text(kindName);
}

void StateWriter::text(std::string_view value) {
    number<std::uint64_t>(value.size());
    append(value);
}

void StateWriter::object(const DataObject& value) {
    number<std::uint64_t>(countBytesOf(value));
    bytesOf(value, [this](std::string_view piece) { append(piece); });
}

std::string StateWriter::sealed() {
    number(checksum(bytes));
    return std::move(bytes);
}

StateReader::StateReader(std::string_view sealed, std::string kind) : kindName(std::move(kind)), bytes(sealed) {
    require(sealed.starts_with(mark) && sealed.size() >= mark.size() + bytesOfSum, "it does not begin as a state does");
    bytes = sealed.substr(sealed.size() - bytesOfSum);
    const auto sum = number<std::uint64_t>();
    bytes = sealed.substr(0, sealed.size() - bytesOfSum);
    require(sum == checksum(bytes), "its checksum is wrong");
    bytes.remove_prefix(mark.size());
    if (const auto written = number<std::uint32_t>(); written != layout) {
        throw Failure("the saved state of \"" + kindName + "\" has layout " + std::to_string(written) +
                      ", but this version reads only layout " + std::to_string(layout));
    }
    if (const std::string other = text(); other != kindName) {
        throw Failure("the saved state is one of \"" + other + "\", not of \"" + kindName + "\"");
    }
}

std::uint32_t StateReader::version(std::uint32_t newest) {
    const auto written = number<std::uint32_t>();
    if (written == 0 || written > newest) {
        throw Failure("the saved state of \"" + kindName + "\" has version " + std::to_string(written) +
                      ", but the kind reads only versions up to " + std::to_string(newest));
    }
    return written;
}

std::int64_t StateReader::count() {
    const auto value = number<std::int64_t>();
    require(value >= 0 && value <= std::int64_t{1} << 53, "a number of rows is out of range");
    return value;
}

std::string StateReader::text() {
    std::string value(length(1), '\0');
    take(value.data(), value.size());
    return value;
}

std::size_t StateReader::length(std::size_t bytesOfEach) {
    const auto count = number<std::uint64_t>();
    require(count <= bytes.size() / bytesOfEach, "it ends too early");
    return count;
}

DataObjectPtr StateReader::object() {
    const std::string raw = text();
    try {
        return objectFrom(raw);
    } catch (const std::invalid_argument& error) {
        fail(error.what());
    }
}

void StateReader::fail(const std::string& why) const {
    throw Failure(sentence(kindName, why));
}

void StateReader::mustBeAtEnd() const {
    require(bytes.empty(), "bytes follow its end");
}

void StateReader::take(char* target, std::size_t count) {
    require(count <= bytes.size(), "it ends too early");
    std::copy_n(bytes.data(), count, target);
    bytes.remove_prefix(count);
}

std::string savedState(const AccumulatorState& state, const std::string& kind) {
    StateWriter writer(kind);
    state.save(writer);
    return writer.sealed();
}

void loadState(AccumulatorState& state, std::string_view bytes, const std::string& kind) {
    StateReader reader(bytes, kind);
    try {
        state.load(reader);
    } catch (const std::logic_error& error) {  // Of a constructor that was given damaged numbers.
        reader.fail(error.what());
    }
    reader.mustBeAtEnd();
}

}  // namespace velmorak
