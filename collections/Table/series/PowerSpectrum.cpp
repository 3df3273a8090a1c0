#include "Table/kinds.h"

#include "Table/series/Fourier.h"
#include "shared/StoredRows.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Dates.h>
#include <velmorak/Expression.h>
#include <velmorak/Points.h>
#include <velmorak/RowMemory.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t maxSamples = std::size_t{1} << 22U;
constexpr std::size_t bytesOfSample = 160;  ///< About, for the longest transform: four times as many complex numbers.

/// What is measured, and when.
struct Signal {
    Expression value;
    std::optional<Expression> time;
    double step = 1.0;  ///< Without times.
    bool hasWindow = false;
    bool keepsMean = false;
    std::string frequencyUnit;
    std::string valueUnit;

    void markColumns(std::vector<bool>& needed) const;
};

void Signal::markColumns(std::vector<bool>& needed) const {
    value.markColumns(needed);
    if (time) {
        time->markColumns(needed);
    }
}

/// The samples in the order of the rows.
struct Samples {
    std::vector<double> values;
    std::vector<double> times;  ///< Empty without times.

    void append(const Samples& next);
    /// @return the distance of the samples. @throws Failure unless they are evenly spaced.
    double evenStep() const;
    /// @throws Failure if one of them is NaN or infinite.
    void requireFinite() const;
};

void Samples::append(const Samples& next) {
    values.insert(values.end(), next.values.begin(), next.values.end());
    times.insert(times.end(), next.times.begin(), next.times.end());
}

double Samples::evenStep() const {
    constexpr double tolerance = 0.01;
    const double step = (times.back() - times.front()) / static_cast<double>(times.size() - 1);
    if (!(step > 0.0) || !std::isfinite(step)) {
        throw Failure("time", "the times of the rows do not rise from " + textOf(times.front()) + " to " +
                                  textOf(times.back()) + "; use Sort before");
    }
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double expected = times.front() + static_cast<double>(i) * step;
        if (!(std::abs(times[i] - expected) <= tolerance * step)) {
            throw Failure("time", "the rows are not evenly spaced: row " + std::to_string(i + 1) + " is at " +
                                      textOf(times[i]) + ", where steps of " + textOf(step) + " would be at " +
                                      textOf(expected) + "; use Resample before");
        }
    }
    return step;
}

void Samples::requireFinite() const {
    const auto strange = std::find_if(values.begin(), values.end(), [](double value) { return !std::isfinite(value); });
    if (strange != values.end()) {
        throw Failure("expression", "the value of row " + std::to_string(strange - values.begin() + 1) + " is " +
                                        textOf(*strange) +
                                        ", of which there is no spectrum; fill the gaps before, for example by "
                                        "Resample with the method interpolate");
    }
}

class SpectrumState : public AccumulatorState {
public:
    SpectrumState(const Signal& signal, std::shared_ptr<MemoryBudget> memory)
        : signal(signal), share(std::move(memory)) {}

    void fill(const Chunk& chunk) override;
    void merge(AccumulatorState& other) override;

    const Samples& all() const { return samples; }

private:
    const Signal& signal;
    MemoryShare share;
    Samples samples;
};

void SpectrumState::fill(const Chunk& chunk) {
    samples.values = asReals(signal.value.evaluate(chunk))->reals();
    if (signal.time) {
        samples.times = asReals(signal.time->evaluate(chunk))->reals();
    }
}

void SpectrumState::merge(AccumulatorState& other) {
    const Samples next = std::exchange(static_cast<SpectrumState&>(other).samples, {});
    if (samples.values.size() + next.values.size() > maxSamples) {
        throw Failure("table", "it has more than " + std::to_string(maxSamples) +
                                   " rows, the most of which a spectrum is computed; use Range, or Resample with a "
                                   "longer step");
    }
    if (!share.take(next.values.size() * bytesOfSample)) {
        throw Failure("table",
                      "the spectrum of its rows needs more memory than VELMORAK_MEMORY_LIMIT allows; set it to "
                      "more, or use Resample with a longer step");
    }
    samples.append(next);
}

/// A spectrum: densities at the frequencies 0, width, 2 width ...
struct Density {
    double width = 0.0;
    std::vector<double> values;

    double frequency(std::size_t i) const { return static_cast<double>(i) * width; }
    /// @return the frequency above 0 with the greatest density.
    double peak() const;
};

double Density::peak() const {
    return frequency(static_cast<std::size_t>(std::max_element(values.begin() + 1, values.end()) - values.begin()));
}

double meanOf(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    return sum / static_cast<double>(values.size());
}

Density densityOf(const Samples& samples, double step, const Signal& signal, const RunContext& context) {
    const std::size_t count = samples.values.size();
    const double mean = signal.keepsMean ? 0.0 : meanOf(samples.values);
    std::vector<ComplexNumber> numbers;
    numbers.reserve(count);
    double squares = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double weight = signal.hasWindow ? 0.5 - 0.5 * rootOfUnity(i, count).re : 1.0;
        numbers.push_back({weight * (samples.values[i] - mean), 0.0});
        squares += weight * weight;
    }
    numbers = fourierTransform(std::move(numbers), context);
    Density density{.width = 1.0 / (static_cast<double>(count) * step), .values = {}};
    for (std::size_t k = 0; k <= count / 2; ++k) {
        const bool isSingle = k == 0 || 2 * k == count;  // The others are there a second time at -k.
        density.values.push_back((isSingle ? 1.0 : 2.0) * step * numbers[k].squared() / squares);
    }
    return density;
}

/// @param power "^2" or as a label.
std::string densityUnit(const Signal& signal, const std::string& power) {
    std::string value = signal.valueUnit.empty() ? std::string() : signal.valueUnit + power;
    if (signal.frequencyUnit.empty()) {
        return value;
    }
    return (value.empty() ? "1" : value) + "/" + signal.frequencyUnit;
}

std::string withUnit(const std::string& title, const std::string& unit) {
    return unit.empty() ? title : title + " [" + unit + "]";
}

class SpectrumAccumulation : public Accumulation {
public:
    SpectrumAccumulation(Signal signal, std::string title, RunContext& context)
        : signal(std::move(signal)), title(std::move(title)), context(context), memory(memoryOf(context)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<SpectrumState>(signal, memory);
    }
    void markColumns(std::vector<bool>& needed) const override { signal.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override;

private:
    DataObjectPtr pointsOf(const Density& density) const;
    DataObjectPtr tableOf(const Density& density) const;

    Signal signal;
    std::string title;
    RunContext& context;
    std::shared_ptr<MemoryBudget> memory;
};

void SpectrumAccumulation::finish(AccumulatorState& state, Results& results) {
    const Samples& samples = static_cast<SpectrumState&>(state).all();
    if (samples.values.size() < 2) {
        throw Failure("table", "a spectrum needs at least two rows, but there " +
                                   std::string(samples.values.empty() ? "is none" : "is one"));
    }
    samples.requireFinite();
    const double step = signal.time ? samples.evenStep() : signal.step;
    const Density density = densityOf(samples, step, signal, context);
    results.set("spectrum", pointsOf(density));
    results.set("table", tableOf(density));
    results.set("peak", density.peak());
}

DataObjectPtr SpectrumAccumulation::pointsOf(const Density& density) const {
    std::vector<Measurement> all;
    all.reserve(2 * density.values.size());
    for (std::size_t i = 0; i < density.values.size(); ++i) {
        all.push_back({.value = density.frequency(i)});
        all.push_back({.value = density.values[i]});
    }
    auto points = std::make_shared<Points>(2, std::move(all));
    points->name = context.pluginName();
    points->title = title;
    points->axisTitles = {withUnit("frequency", signal.frequencyUnit),
                          withUnit("power density", densityUnit(signal, "^{2}"))};
    return points;
}

DataObjectPtr SpectrumAccumulation::tableOf(const Density& density) const {
    Schema schema;
    schema.add({.name = "frequency", .type = ColumnType::Real, .isList = false, .unit = signal.frequencyUnit});
    schema.add({.name = "power", .type = ColumnType::Real, .isList = false, .unit = densityUnit(signal, "^2")});
    const std::size_t most = rowsInChunk(schema);
    std::vector<StoredRows::Piece> pieces;
    for (std::size_t first = 0; first < density.values.size(); first += most) {
        const std::size_t last = std::min(density.values.size(), first + most);
        Column::Reals frequencies;
        Column::Reals powers;
        for (std::size_t i = first; i < last; ++i) {
            frequencies.push_back(density.frequency(i));
            powers.push_back(density.values[i]);
        }
        pieces.push_back({last - first,
                          {std::make_shared<const Column>(Column{std::move(frequencies), {}}),
                           std::make_shared<const Column>(Column{std::move(powers), {}})}});
    }
    return std::make_shared<const StoredRows>(std::move(schema), std::move(pieces));
}

/// Computes the power spectrum of an evenly sampled quantity.
class PowerSpectrumKind : public Accumulator {
public:
    std::string name() const override { return "PowerSpectrum"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

Expression numberFrom(const std::string& input, const Arguments& arguments, const Schema& schema) {
    const std::string& text = arguments.text(input);
    if (text.empty()) {
        throw Failure(input, "the expression is empty");
    }
    try {
        Expression expression(text, schema);
        if (expression.isList() || expression.type() == ColumnType::Text) {
            throw Failure("\"" + text + "\" is not a number in each row");
        }
        return expression;
    } catch (const Failure& failure) {
        throw Failure(input, failure.what());
    }
}

std::string unitOf(const std::string& expression, const Schema& schema) {
    const std::optional<std::size_t> column = schema.find(expression);
    return column ? schema[*column].unit : std::string();
}

/// The unit of the inverse of a time, or of another quantity.
std::string frequencyUnit(const std::string& unit) {
    const std::map<std::string, std::string> hertz = {{"s", "Hz"},        {"ms", "kHz"}, {"us", "MHz"},
                                                      {"\u00b5s", "MHz"}, {"ns", "GHz"}, {std::string(dateUnit), "Hz"}};
    const auto found = hertz.find(unit);
    if (found != hertz.end()) {
        return found->second;
    }
    return unit.empty() ? "" : "1/" + unit;
}

Signal signalFrom(const Arguments& arguments, const Schema& schema) {
    Signal signal{.value = numberFrom("expression", arguments, schema),
                  .time = std::nullopt,
                  .step = arguments.number("step"),
                  .hasWindow = arguments.text("window") == "Hann",
                  .keepsMean = arguments.text("mean") == "keep",
                  .frequencyUnit = {},
                  .valueUnit = unitOf(arguments.text("expression"), schema)};
    if (!arguments.text("time").empty()) {
        signal.time.emplace(numberFrom("time", arguments, schema));
        signal.frequencyUnit = frequencyUnit(unitOf(arguments.text("time"), schema));
    } else if (!(signal.step > 0.0) || !std::isfinite(signal.step)) {
        throw Failure("step", "the distance of the rows must be finite and larger than 0");
    }
    return signal;
}

}  // namespace

std::string PowerSpectrumKind::summary() const {
    return "Computes the power spectrum of an evenly sampled column.";
}

std::string PowerSpectrumKind::notes() const {
    return R"(The spectrum is one-sided: with N values x at times of distance d and weights w of the window, the density at the
frequency f = k / (N d), for k from 0 to N / 2, is

    P(k) = c d |sum over j of w(j) (x(j) - mean) exp(-2 pi i j k / N)|² / sum over j of w(j)²

where c is 1 for k = 0 and k = N / 2, and else 2. By Parseval's theorem, the sum of all P, times the distance 1 / (N d) of the
frequencies, is the mean of (x - mean)² if there is no window. `Hann` has w(j) = (1 - cos(2 pi j / N)) / 2; lines are wider by
half with it, and what leaks into distant frequencies is far less. If the mean is kept, it appears at the frequency 0.

The rows must come in the order of their times and be evenly spaced to 1 % of a step; `Resample` makes them so, and `Sort`
sorts them. Values that are NaN or infinite are refused. N may be any number up to 4194304; the time for a transform is that
of N log N operations. Units are known if value and time are columns: of a time in s, frequencies are in Hz.

The spectrum has the same bits on every processor and any number of threads. A planned run computes it while its parts are
merged, because every row is needed.)";
}

Ports PowerSpectrumKind::ports(const ValueTexts&) const {
    return {
        {{.name = "table", .description = "Table of samples, in the order of their times.", .type = ValueType::Table},
         {.name = "expression",
          .description = "Number in each row whose spectrum is computed, for example a column.",
          .type = ValueType::Text},
         {.name = "time",
          .description = "Time of each row, for example a column; the times must be evenly spaced. Empty: the "
                         "input step is the distance of all rows.",
          .type = ValueType::Text},
         {.name = "step",
          .description = "Distance of the rows in time where there is no column of times.",
          .value = "1"},
         {.name = "window",
          .description = "Weights of the samples. Hann: 0 at both ends, so that a strong line leaks less into "
                         "distant frequencies.",
          .type = ValueType::Choice,
          .value = "none",
          .choices = {"none", "Hann"}},
         {.name = "mean",
          .description = "Whether the mean of all values is subtracted first.",
          .type = ValueType::Choice,
          .value = "subtract",
          .choices = {"subtract", "keep"}},
         {.name = "title",
          .description = "Title shown above a plot. Empty: the name of this plug-in.",
          .type = ValueType::Text}},
        {{.name = "spectrum",
          .description = "Points of frequency and power density, in the unit of the value squared per unit of the "
                         "frequency.",
          .type = ValueType::Points},
         {.name = "table", .description = "The same as columns: frequency and power.", .type = ValueType::Table},
         {.name = "peak",
          .description = "Frequency above 0 at which the density is greatest.",
          .type = ValueType::Number}}};
}

std::string PowerSpectrumKind::refusal(const std::string& input, const std::string& value) const {
    return input == "expression" || input == "time" ? expressionRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> PowerSpectrumKind::prepare(const Arguments& arguments, const Schema* schema,
                                                         RunContext& context) const {
    if (!schema) {
        throw Failure("table", "nothing is wired");
    }
    const std::string& title = arguments.text("title");
    return std::make_unique<SpectrumAccumulation>(signalFrom(arguments, *schema),
                                                  title.empty() ? context.pluginName() : title, context);
}

std::unique_ptr<Kind> makePowerSpectrum() {
    return std::make_unique<PowerSpectrumKind>();
}

}  // namespace velmorak
