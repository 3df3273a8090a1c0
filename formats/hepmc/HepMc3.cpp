#include "hepmc/Event.h"
#include "hepmc/Words.h"

#include <map>

namespace velmorak::hepmc {

namespace {

/// Asciiv3: an event is a line E, then particles P and vertices V in any order.
class HepMc3 : public EventReader {
public:
    explicit HepMc3(Lines& lines) : lines(lines) {}

    bool next(Event& event) override;

private:
    bool findEvent();

    bool isEnd();

    void readLine(Event& event);

    static void readAttribute(Words& words, Event& event);

    /// Number, origin, type, momentum, energy, mass, status. The origin is a vertex (negative) or a particle.
    void readParticle(Words& words, Event& event);

    /// Number, status, [incoming particles], position.
    void readVertex(Words& words);

    void addMothers(Event& event) const;

    Lines& lines;
    std::string_view line;
    bool hasLine = false;  ///< The line begins the next event.
    bool isComplete = false;
    double unit = 1.0;  ///< How many make a GeV.
    std::vector<std::int64_t> parents;
    std::map<std::int64_t, std::int64_t> incoming;   ///< First particle of a vertex.
    std::map<std::int64_t, std::int64_t> positions;  ///< Of the particle of a number.
};

bool HepMc3::next(Event& event) {
    event = {};
    if (!hasLine && !findEvent()) {
        return false;
    }
    parents.clear();
    incoming.clear();
    positions.clear();
    unit = 1.0;
    Words words(line.substr(1), lines);
    event.number = words.integer();
    words.skip(1);
    const std::int64_t particles = words.integer();
    hasLine = false;
    while (lines.next(line) && !isEnd()) {
        readLine(event);
    }
    if (static_cast<std::int64_t>(event.pdg.size()) != particles) {
        throw Failure("file", lines.where() + ": the event before has " + std::to_string(event.pdg.size()) +
                                  " particles instead of " + std::to_string(particles) +
                                  (isComplete ? "" : "; the file ends in it"));
    }
    addMothers(event);
    return true;
}

bool HepMc3::findEvent() {
    while (lines.next(line)) {
        if (line.starts_with("E ")) {
            return true;
        }
    }
    return false;
}

bool HepMc3::isEnd() {
    hasLine = line.starts_with("E ");
    isComplete = hasLine || line.starts_with("HepMC::Asciiv3-END_EVENT_LISTING");
    return isComplete;
}

void HepMc3::readLine(Event& event) {
    Words words(line.substr(std::min<std::size_t>(1, line.size())), lines);
    if (line.starts_with("U ")) {
        const std::string_view name = words.word();
        if (name != "GEV" && name != "MEV") {
            throw Failure("file", lines.where() + ": the unit \"" + std::string(name) + "\" is neither GEV nor MEV");
        }
        unit = name == "MEV" ? 1000.0 : 1.0;
    } else if (line.starts_with("W ") && event.weights.empty()) {
        while (!words.isEmpty()) {
            event.weights.push_back(words.real());
        }
    } else if (line.starts_with("A 0 ")) {
        words.skip(1);
        readAttribute(words, event);
    } else if (line.starts_with("P ")) {
        readParticle(words, event);
    } else if (line.starts_with("V ")) {
        readVertex(words);
    }
}

void HepMc3::readAttribute(Words& words, Event& event) {
    const std::string_view name = words.word();
    if (name == "signal_process_id") {
        event.process = words.integer();
    } else if (name == "event_scale") {
        event.scale = words.real();
    }
}

void HepMc3::readParticle(Words& words, Event& event) {
    positions.emplace(words.integer(), static_cast<std::int64_t>(event.pdg.size()));
    parents.push_back(words.integer());
    event.pdg.push_back(words.integer());
    for (std::vector<double>* column : {&event.px, &event.py, &event.pz, &event.e, &event.m}) {
        column->push_back(words.real() / unit);
    }
    event.status.push_back(words.integer());
}

void HepMc3::readVertex(Words& words) {
    const std::int64_t vertex = words.integer();
    words.skip(1);
    const std::string_view list = words.word();
    if (!list.starts_with('[')) {
        throw Failure("file", lines.where() + ": the particles of a vertex are not in square brackets");
    }
    Words first(list.substr(1, std::min(list.find_first_of(",]"), list.size()) - 1), lines);
    if (!first.isEmpty()) {
        incoming.emplace(vertex, first.integer());
    }
}

void HepMc3::addMothers(Event& event) const {
    for (const std::int64_t parent : parents) {
        const auto vertex = incoming.find(parent);
        const std::int64_t particle = parent > 0 ? parent : vertex == incoming.end() ? 0 : vertex->second;
        const auto found = positions.find(particle);
        event.mother.push_back(found == positions.end() ? -1 : found->second);
    }
}

}  // namespace

std::unique_ptr<EventReader> readHepMc3(Lines& lines) {
    return std::make_unique<HepMc3>(lines);
}

}  // namespace velmorak::hepmc
