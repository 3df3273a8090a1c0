#pragma once

#include <velmorak/short/RowArgument.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

/// All parameters of a function of rows.
template <typename Tuple>
class RowArguments;
template <typename... Each>
class RowArguments<std::tuple<Each...>> {
public:
    static constexpr std::size_t count = sizeof...(Each);

    RowArguments(const std::vector<InputDescription>& inputs, const velmorak::Arguments& arguments,
                 const Schema& schema)
        : RowArguments(inputs, arguments, schema, std::index_sequence_for<Each...>()) {}

    static void addInputs(const std::vector<InputDescription>& about, std::vector<InputSpec>& inputs) {
        forEachPosition<count>([&](auto position) {
            inputs.push_back(RowArgument<std::tuple_element_t<position, std::tuple<Each...>>>::input(about[position]));
        });
    }
    static std::string refusal(const std::vector<InputDescription>& about, const std::string& input,
                               const std::string& value) {
        std::string reason;
        forEachPosition<count>([&](auto position) {
            if (RowArgument<std::tuple_element_t<position, std::tuple<Each...>>>::isExpression &&
                about[position].name == input) {
                reason = expressionRefusal(value);
            }
        });
        return reason;
    }
    void markColumns(std::vector<bool>& needed) const {
        std::apply([&](const auto&... each) { (each.markColumns(needed), ...); }, parameters);
    }
    /// Calls body(row, parameters ...) for each row.
    template <typename Body>
    void forEachRow(const Chunk& chunk, const Body& body) const {
        const auto cursors =
            std::apply([&](const auto&... each) { return std::make_tuple(each.cursor(chunk)...); }, parameters);
        std::apply(
            [&](const auto&... cursor) {
                for (std::size_t row = 0; row < chunk.rows; ++row) {
                    body(row, cursor[row]...);
                }
            },
            cursors);
    }

private:
    template <std::size_t... positions>
    RowArguments(const std::vector<InputDescription>& inputs, const velmorak::Arguments& arguments,
                 const Schema& schema, std::index_sequence<positions...>)
        : parameters(RowArgument<Each>(inputs[positions].name, arguments, schema)...) {}

    std::tuple<RowArgument<Each>...> parameters;
};

}  // namespace shortkinds

}  // namespace velmorak
