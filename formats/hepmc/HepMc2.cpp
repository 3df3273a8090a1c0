#include "hepmc/Event.h"
#include "hepmc/Words.h"

#include <map>

namespace velmorak::hepmc {

namespace {

/// IO_GenEvent: an event is a line E, then its vertices V, each followed by its particles P.
class HepMc2 : public EventReader {
public:
    explicit HepMc2(Lines& lines) : lines(lines) {}

    bool next(Event& event) override;

private:
    bool findEvent();

    /// The line begins another event, or ends the list.
    bool isEnd();

    /// Number, interactions, scale, two couplings, process, signal vertex, vertices, beams, random states, weights.
    void readEvent(Event& event);

    void readLine(Event& event);

    /// Barcode, type, momentum, energy, mass, status, polarisation, vertex where it ends.
    void readParticle(Event& event);

    void checkVertices() const;

    void addMothers(Event& event) const;

    Lines& lines;
    std::string_view line;
    bool hasLine = false;  ///< The line begins the next event.
    bool isComplete = false;
    double unit = 1.0;  ///< How many make a GeV.
    std::int64_t vertex = 0;
    std::int64_t orphans = 0;
    std::int64_t vertices = 0;
    std::int64_t verticesWanted = 0;
    std::vector<std::int64_t> productions;         ///< Vertex of each particle; 0 if there is none.
    std::map<std::int64_t, std::int64_t> endings;  ///< First particle that ends in a vertex.
};

bool HepMc2::next(Event& event) {
    event = {};
    if (!hasLine && !findEvent()) {
        return false;
    }
    productions.clear();
    endings.clear();
    vertices = 0;
    orphans = 0;
    unit = 1.0;
    readEvent(event);
    hasLine = false;
    while (lines.next(line) && !isEnd()) {
        readLine(event);
    }
    checkVertices();
    addMothers(event);
    return true;
}

bool HepMc2::findEvent() {
    while (lines.next(line)) {
        if (line.starts_with("E ")) {
            return true;
        }
    }
    return false;
}

bool HepMc2::isEnd() {
    hasLine = line.starts_with("E ");
    isComplete = hasLine || line.starts_with("HepMC::IO_GenEvent-END_EVENT_LISTING");
    return isComplete;
}

void HepMc2::readEvent(Event& event) {
    Words words(line.substr(1), lines);
    event.number = words.integer();
    words.skip(1);
    event.scale = words.real();
    words.skip(2);
    event.process = words.integer();
    words.skip(1);
    verticesWanted = words.integer();
    words.skip(2);
    words.skip(words.count());
    const std::size_t weights = words.count();
    for (std::size_t i = 0; i < weights; ++i) {
        event.weights.push_back(words.real());
    }
}

void HepMc2::readLine(Event& event) {
    if (line.starts_with("U ")) {
        Words words(line.substr(1), lines);
        const std::string_view name = words.word();
        if (name != "GEV" && name != "MEV") {
            throw Failure("file", lines.where() + ": the unit \"" + std::string(name) + "\" is neither GEV nor MEV");
        }
        unit = name == "MEV" ? 1000.0 : 1.0;
    } else if (line.starts_with("V ")) {
        Words words(line.substr(1), lines);
        vertex = words.integer();
        words.skip(5);
        orphans = words.integer();
        ++vertices;
    } else if (line.starts_with("P ")) {
        readParticle(event);
    }
}

void HepMc2::readParticle(Event& event) {
    Words words(line.substr(1), lines);
    words.skip(1);
    event.pdg.push_back(words.integer());
    for (std::vector<double>* column : {&event.px, &event.py, &event.pz, &event.e, &event.m}) {
        column->push_back(words.real() / unit);
    }
    event.status.push_back(words.integer());
    words.skip(2);
    const std::int64_t ending = words.integer();
    if (ending != 0) {
        endings.emplace(ending, static_cast<std::int64_t>(event.pdg.size()) - 1);
    }
    // A vertex first lists the particles that come in from nowhere.
    productions.push_back(orphans > 0 ? 0 : vertex);
    orphans -= orphans > 0 ? 1 : 0;
}

void HepMc2::checkVertices() const {
    if (vertices != verticesWanted) {
        throw Failure("file", lines.where() + ": the event before has " + std::to_string(vertices) +
                                  " vertices instead of " + std::to_string(verticesWanted) +
                                  (isComplete ? "" : "; the file ends in it"));
    }
}

void HepMc2::addMothers(Event& event) const {
    for (const std::int64_t production : productions) {
        const auto found = endings.find(production);
        event.mother.push_back(production == 0 || found == endings.end() ? -1 : found->second);
    }
}

}  // namespace

std::unique_ptr<EventReader> readHepMc2(Lines& lines) {
    return std::make_unique<HepMc2>(lines);
}

}  // namespace velmorak::hepmc
