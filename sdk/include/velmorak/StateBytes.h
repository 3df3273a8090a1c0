#pragma once

#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// Serialises the states of accumulators, so that another process, or a later run, continues with them.
namespace velmorak {

class AccumulatorState;

template <typename Number>
concept StateNumber = std::is_arithmetic_v<Number> && !std::is_same_v<Number, long double>;
/// A container of numbers that follow each other in memory, which std::vector<bool> is not.
template <typename List>
concept StateNumbers = StateNumber<typename List::value_type> && !std::is_same_v<typename List::value_type, bool>;

/// Serialises one state: a mark, the version of this layout, the name of the kind, what the state itself writes, and a
/// checksum. Numbers are little-endian; reals keep every bit. Texts, lists and objects are preceded by their length.
class StateWriter {
public:
    /// @param kind name of the kind whose accumulator has the state.
    explicit StateWriter(std::string kind);

    const std::string& kind() const { return kindName; }

    /// Version of the layout that the state itself writes. AccumulatorState::save begins with it.
    void version(std::uint32_t number) { this->number(number); }
    /// Use types of fixed width, so that every machine reads the same.
    template <StateNumber Number>
    void number(Number value) {
        auto raw = std::bit_cast<std::array<char, sizeof(Number)>>(value);
        if constexpr (std::endian::native == std::endian::big) {
            std::reverse(raw.begin(), raw.end());
        }
        append({raw.data(), raw.size()});
    }
    void text(std::string_view value);
    template <StateNumbers List>
    void list(const List& values) {
        number<std::uint64_t>(values.size());
        if constexpr (std::endian::native == std::endian::little) {
            append({reinterpret_cast<const char*>(values.data()), values.size() * sizeof values[0]});
        } else {
            std::for_each(values.begin(), values.end(), [this](auto value) { number(value); });
        }
    }
    /// An object of a class listed in DataObjects.h.
    void object(const DataObject& value);

    /// What another writer has written, without its beginning and its checksum.
    void rest(std::string_view written) { append(written); }

    /// @return all bytes, with their checksum; the writer is then used up.
    std::string sealed();

private:
    void append(std::string_view more) { bytes.append(more); }

    std::string kindName;
    std::string bytes;
};

/// Reads the bytes of a StateWriter. Every operation throws a Failure if the bytes are damaged, too few, or those of
/// another kind, and allocates no more memory than the bytes that are left can fill.
class StateReader {
public:
    /// @param sealed outlives this.
    StateReader(std::string_view sealed, std::string kind);

    const std::string& kind() const { return kindName; }

    /// @param newest version of the state's own layout that the caller knows.
    /// @return the version of the bytes, from 1 to newest.
    std::uint32_t version(std::uint32_t newest);
    template <StateNumber Number>
    Number number() {
        std::array<char, sizeof(Number)> raw{};
        take(raw.data(), raw.size());
        if constexpr (std::endian::native == std::endian::big) {
            std::reverse(raw.begin(), raw.end());
        }
        if constexpr (std::is_same_v<Number, bool>) {
            require(raw[0] == 0 || raw[0] == 1, "a truth value is neither 0 nor 1");
        }
        return std::bit_cast<Number>(raw);
    }
    /// A number of rows or fills: an integer of 64 bits from 0 to 2^53, so that sums of such numbers do not overflow.
    std::int64_t count();
    std::string text();
    template <StateNumbers List = std::vector<double>>
    List list() {
        List values;
        values.resize(length(sizeof(typename List::value_type)));
        if constexpr (std::endian::native == std::endian::little) {
            take(reinterpret_cast<char*>(values.data()), values.size() * sizeof values[0]);
        } else {
            std::generate(values.begin(), values.end(), [this] { return number<typename List::value_type>(); });
        }
        return values;
    }
    /// Number of elements that the caller reads next.
    /// @param bytesOfEach that every element has at least, not 0.
    std::size_t length(std::size_t bytesOfEach);
    DataObjectPtr object();
    /// @throws Failure if the object is of another class.
    template <typename Object>
    std::shared_ptr<const Object> object() {
        auto value = std::dynamic_pointer_cast<const Object>(object());
        require(value != nullptr, "an object is of another class");
        return value;
    }

    std::string_view rest() { return std::exchange(bytes, {}); }
    /// For what the state itself knows about its numbers.
    /// @throws Failure if the condition does not hold.
    void require(bool condition, const char* otherwise) const {
        if (!condition) {
            fail(otherwise);
        }
    }
    [[noreturn]] void fail(const std::string& why) const;
    void mustBeAtEnd() const;

private:
    void take(char* target, std::size_t count);

    std::string kindName;
    std::string_view bytes;
};

/// @throws Failure if the state cannot be saved.
std::string savedState(const AccumulatorState& state, const std::string& kind);

/// Loads a new state of the same accumulation: same kind, schema and values.
/// @throws Failure if the bytes are not such a state; what the state then holds is unspecified.
void loadState(AccumulatorState& state, std::string_view bytes, const std::string& kind);

}  // namespace velmorak
