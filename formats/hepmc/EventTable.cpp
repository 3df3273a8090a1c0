#include "hepmc/EventTable.h"

#include "hepmc/Event.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Lines.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

using hepmc::Event;
using hepmc::EventReader;
using hepmc::readHepMc2;
using hepmc::readHepMc3;
using hepmc::readLesHouches;

Schema columnsOfEvents() {
    std::vector<ColumnInfo> columns = {{.name = "event", .type = ColumnType::Integer},
                                       {.name = "process", .type = ColumnType::Integer},
                                       {.name = "scale", .unit = "GeV"},
                                       {.name = "weight"},
                                       {.name = "weights", .isList = true},
                                       {.name = "pdg", .type = ColumnType::Integer, .isList = true},
                                       {.name = "status", .type = ColumnType::Integer, .isList = true},
                                       {.name = "mother", .type = ColumnType::Integer, .isList = true}};
    for (const std::string name : {"px", "py", "pz", "e", "m"}) {
        columns.push_back({.name = name, .isList = true, .unit = "GeV"});
    }
    return Schema(std::move(columns));
}

std::optional<EventFormat> formatNamedIn(std::string_view line) {
    if (line.starts_with("HepMC::IO_GenEvent-START_EVENT_LISTING")) {
        return EventFormat::HepMc2;
    }
    if (line.starts_with("HepMC::Asciiv3-START_EVENT_LISTING")) {
        return EventFormat::HepMc3;
    }
    return line.starts_with("<LesHouchesEvents") ? std::optional(EventFormat::LesHouches) : std::nullopt;
}

/// Whether the line may come before the one that names the format.
bool mayComeBefore(std::string_view line) {
    return line.empty() || line.starts_with("HepMC::") || line.starts_with('<');
}

std::unique_ptr<EventReader> readerOf(EventFormat format, Lines& lines) {
    switch (format) {
        case EventFormat::HepMc2:
            return readHepMc2(lines);
        case EventFormat::HepMc3:
            return readHepMc3(lines);
        default:
            return readLesHouches(lines);
    }
}

std::unique_ptr<EventReader> readerOf(Lines& lines, const std::filesystem::path& file) {
    std::string_view line;
    constexpr std::size_t linesToLookAt = 1000;
    for (std::size_t i = 0; i < linesToLookAt && lines.next(line); ++i) {
        if (const std::optional<EventFormat> format = formatNamedIn(trimmed(line))) {
            return readerOf(*format, lines);
        }
        if (!mayComeBefore(trimmed(line))) {
            break;
        }
    }
    throw Failure("file", velmorak::quoted(file.string()) +
                              " holds neither HepMC events in ASCII (version 2 or 3) nor Les Houches events");
}

/// The columns of a chunk while they grow.
class Builder {
public:
    void add(Event&& event);

    std::size_t rows() const { return number.size(); }
    std::size_t bytes() const { return listBytes; }

    std::vector<ColumnPtr> take();

private:
    template <typename Number>
    struct List {
        std::vector<Number> values{};
        std::vector<std::uint64_t> offsets{0};
    };

    template <typename Number>
    static void append(List<Number>& list, const std::vector<Number>& values) {
        list.values.insert(list.values.end(), values.begin(), values.end());
        list.offsets.push_back(list.values.size());
    }

    Column::Integers number;
    Column::Integers process;
    Column::Reals scale;
    Column::Reals weight;
    std::array<List<double>, 6> reals{};
    std::array<List<std::int64_t>, 3> integers{};
    std::size_t listBytes = 0;
};

void Builder::add(Event&& event) {
    number.push_back(event.number);
    process.push_back(event.process);
    scale.push_back(event.scale);
    weight.push_back(event.weights.empty() ? 1.0 : event.weights.front());
    append(reals[0], event.weights);
    append(integers[0], event.pdg);
    append(integers[1], event.status);
    append(integers[2], event.mother);
    append(reals[1], event.px);
    append(reals[2], event.py);
    append(reals[3], event.pz);
    append(reals[4], event.e);
    append(reals[5], event.m);
    listBytes += sizeof(double) * (event.weights.size() + 8 * event.pdg.size());
}

std::vector<ColumnPtr> Builder::take() {
    std::vector<ColumnPtr> columns;
    const auto add = [&]<typename Values>(Values&& values, std::vector<std::uint64_t> offsets) {
        columns.push_back(std::make_shared<const Column>(Column{std::forward<Values>(values), std::move(offsets)}));
    };
    add(std::move(number), {});
    add(std::move(process), {});
    add(std::move(scale), {});
    add(std::move(weight), {});
    add(std::move(reals[0].values), std::move(reals[0].offsets));
    for (auto& list : integers) {
        add(std::move(list.values), std::move(list.offsets));
    }
    for (std::size_t i = 1; i < reals.size(); ++i) {
        add(std::move(reals[i].values), std::move(reals[i].offsets));
    }
    return columns;
}

class EventTable : public TableReader {
public:
    EventTable(const std::filesystem::path& file, RunContext& context);

    const Schema& schema() const override { return columns; }
    std::optional<double> fraction() const override { return lines.fraction(); }

    bool next(Chunk& chunk) override;

private:
    /// Four numbers, and where each of nine lists begins.
    static constexpr std::size_t rowBytes = 13 * sizeof(double);

    bool isFull(const Builder& builder) const;

    const Schema columns = columnsOfEvents();
    Lines lines;
    std::unique_ptr<EventReader> reader;
    Event event;
    std::optional<Failure> failure;  ///< Thrown after the events.
};

EventTable::EventTable(const std::filesystem::path& file, RunContext& context)
    : lines(file, context), reader(readerOf(lines, file)) {}

bool EventTable::next(Chunk& chunk) {
    Builder builder;
    try {
        while (!failure && !isFull(builder) && reader->next(event)) {
            builder.add(std::move(event));
        }
    } catch (const Failure& damage) {
        failure = damage;
    }
    // Complete events before the damage are returned first.
    if (failure && builder.rows() == 0) {
        throw Failure(*failure);
    }
    chunk.rows = builder.rows();
    chunk.columns = builder.take();
    return chunk.rows > 0;
}

bool EventTable::isFull(const Builder& builder) const {
    return builder.rows() >= rowsInChunk(columns) || builder.rows() * rowBytes + builder.bytes() >= maxChunkBytes;
}

}  // namespace

std::optional<EventFormat> eventFormatOf(std::string_view head) {
    while (!head.empty()) {
        const std::size_t end = std::min(head.find('\n'), head.size());
        const std::string_view line = trimmed(head.substr(0, end));
        if (const std::optional<EventFormat> format = formatNamedIn(line)) {
            return format;
        }
        if (!mayComeBefore(line)) {
            break;
        }
        head.remove_prefix(std::min(end + 1, head.size()));
    }
    return std::nullopt;
}

std::unique_ptr<TableReader> openEvents(const std::filesystem::path& file, RunContext& context) {
    return std::make_unique<EventTable>(file, context);
}

}  // namespace velmorak
