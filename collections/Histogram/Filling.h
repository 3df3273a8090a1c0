#pragma once

#include "Fillers.h"
#include "LateState.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Kind.h>
#include <velmorak/OrderedAccumulation.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Accumulations that fill an object from the rows of a table.
namespace velmorak {

inline std::string titleOr(const Arguments& arguments, const std::string& input, const std::string& otherwise) {
    return arguments.text(input).empty() ? otherwise : arguments.text(input);
}

template <typename Object>
void entitle(Object& object, const std::vector<std::string>& titles) {
    for (std::size_t direction = 0; direction < Object::dimensions; ++direction) {
        object.setAxisTitle(direction, titles[direction]);
    }
}

/// Name and titles of the filled object.
class Naming {
public:
    Naming(const Arguments& arguments, RunContext& context, std::vector<std::string> axisTitles);

    template <typename Object>
    void deliver(Object filled, const std::string& output, Results& results) const {
        auto object = std::make_shared<Object>(std::move(filled));
        warnIfEmpty(*object);
        object->name = name;
        object->title = title;
        entitle(*object, axisTitles);
        results.set(output, DataObjectPtr(std::move(object)));
    }

private:
    template <typename Object>
    void warnIfEmpty(const Object& object) const;

    RunContext* context;
    std::string name;
    std::string title;
    std::vector<std::string> axisTitles;
};

inline Naming::Naming(const Arguments& arguments, RunContext& context, std::vector<std::string> axisTitles)
    : context(&context),
      name(context.pluginName()),
      title(titleOr(arguments, "title", name)),
      axisTitles(std::move(axisTitles)) {}

template <typename Object>
void Naming::warnIfEmpty(const Object& object) const {
    constexpr std::size_t manyCells = 1000000;
    const auto isFilled = [](const auto& cell) { return cell.entries > 0; };
    const bool isFound = object.cells().size() > manyCells  // Looked at only up to the first entry.
                             ? std::any_of(object.cells().begin(), object.cells().end(), isFilled)
                             : object.inRange().entries > 0;
    if (isFound) {
        return;
    }
    std::int64_t outside = 0;
    for (const auto& cell : object.cells()) {
        outside += cell.entries;
    }
    if (outside == 0 && object.nanEntries() == 0) {
        context->warn("it has no entries");
        return;
    }
    context->warn("it has no entries in its range: " + std::to_string(outside) + " outside, " +
                  std::to_string(object.nanEntries()) + " with NaN");
}

/// Fills copies of an empty filler.
template <typename Filler>
class Filling : public Accumulation {
public:
    Filling(FillExpression quantity, Filler empty, Naming naming, std::string output)
        : quantity(std::move(quantity)),
          empty(std::move(empty)),
          naming(std::move(naming)),
          output(std::move(output)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<FillingState<Filler>>(quantity, empty);
    }
    void markColumns(std::vector<bool>& needed) const override { quantity.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override {
        naming.deliver(static_cast<FillingState<Filler>&>(state).result(), output, results);
    }

private:
    FillExpression quantity;
    Filler empty;
    Naming naming;
    std::string output;
};

template <typename Filler>
std::unique_ptr<Accumulation> filling(FillExpression quantity, Filler empty, Naming naming, const std::string& output) {
    return std::make_unique<Filling<Filler>>(std::move(quantity), std::move(empty), std::move(naming), output);
}

/// Fills a single object in the order of the rows.
template <typename Object>
class LateFilling : public OrderedAccumulation {
public:
    LateFilling(FillExpression quantity, std::function<Object()> make, Naming naming, std::string output)
        : quantity(std::move(quantity)), make(std::move(make)), naming(std::move(naming)), output(std::move(output)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<LateState<Object>>(quantity, make);
    }
    void markColumns(std::vector<bool>& needed) const override { quantity.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override {
        naming.deliver(static_cast<LateState<Object>&>(state).result(), output, results);
    }

private:
    FillExpression quantity;
    std::function<Object()> make;
    Naming naming;
    std::string output;
};

/// An object with more cells than a chunk has rows is not copied for each chunk.
template <typename Object>
std::unique_ptr<Accumulation> givenFilling(FillExpression quantity, std::size_t cells, std::function<Object()> make,
                                           Naming naming, const std::string& output) {
    if (cells > chunkRows) {
        return std::make_unique<LateFilling<Object>>(std::move(quantity), std::move(make), std::move(naming), output);
    }
    return filling(std::move(quantity), GivenRange<Object>(make()), std::move(naming), output);
}

}  // namespace velmorak
