#include "hepmc/Event.h"
#include "hepmc/Words.h"

#include <velmorak/Text.h>

namespace velmorak::hepmc {

namespace {

/// Les Houches events: the element event holds a line about it and one for each particle (J. Alwall et al.,
/// Comput. Phys. Commun. 176 (2007) 300).
class LesHouches : public EventReader {
public:
    explicit LesHouches(Lines& lines) : lines(lines) {}

    bool next(Event& event) override;

private:
    bool findEvent();

    /// @return the next line with numbers.
    std::string_view mustHaveLine();

    /// Type, status, two mothers, two colours, momentum, energy, mass.
    void readParticle(Event& event);

    /// Takes further weights up to the end of the event.
    void readRest(Event& event);

    Lines& lines;
    bool isInBody = false;
    std::int64_t number = 0;
};

bool LesHouches::next(Event& event) {
    event = {};
    if (!findEvent()) {
        return false;
    }
    event.number = number++;
    Words words(mustHaveLine(), lines);
    const std::int64_t particles = words.integer();
    event.process = words.integer();
    event.weights.push_back(words.real());
    event.scale = words.real();
    for (std::int64_t i = 0; i < particles; ++i) {
        readParticle(event);
    }
    readRest(event);
    return true;
}

bool LesHouches::findEvent() {
    std::string_view line;
    while (lines.next(line)) {
        const std::string_view text = trimmed(line);
        isInBody = isInBody || text.starts_with("</init>");
        if (isInBody && (text == "<event>" || text.starts_with("<event "))) {
            return true;
        }
    }
    return false;
}

std::string_view LesHouches::mustHaveLine() {
    std::string_view line;
    while (lines.next(line)) {
        line = trimmed(line);
        if (!line.empty() && !line.starts_with('#')) {
            if (line.starts_with('<')) {
                throw Failure("file", lines.where() + ": the event has too few particles");
            }
            return line;
        }
    }
    throw Failure("file", lines.where() + ": the file ends in an event");
}

void LesHouches::readParticle(Event& event) {
    Words words(mustHaveLine(), lines);
    event.pdg.push_back(words.integer());
    event.status.push_back(words.integer());
    const std::int64_t mother = words.integer();
    event.mother.push_back(mother > 0 ? mother - 1 : -1);
    words.skip(3);
    for (std::vector<double>* column : {&event.px, &event.py, &event.pz, &event.e, &event.m}) {
        column->push_back(words.real());
    }
}

void LesHouches::readRest(Event& event) {
    std::string_view line;
    while (lines.next(line)) {
        const std::string_view text = trimmed(line);
        if (text.starts_with("</event>")) {
            return;
        }
        const std::size_t begin = text.find('>');
        if (text.starts_with("<wgt") && begin != std::string_view::npos) {
            const std::size_t end = std::min(text.find('<', begin), text.size());
            event.weights.push_back(Words(text.substr(begin + 1, end - begin - 1), lines).real());
        }
    }
    throw Failure("file", lines.where() + ": the file ends in an event");
}

}  // namespace

std::unique_ptr<EventReader> readLesHouches(Lines& lines) {
    return std::make_unique<LesHouches>(lines);
}

}  // namespace velmorak::hepmc
