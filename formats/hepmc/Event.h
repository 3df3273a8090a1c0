#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace velmorak {
class Lines;
}

namespace velmorak::hepmc {

/// One event of a generator. The lists of the particles are equally long.
struct Event {
    std::int64_t number = 0;
    std::int64_t process = 0;
    double scale = std::numeric_limits<double>::quiet_NaN();  ///< In GeV; NaN if the file has none.
    std::vector<double> weights{};
    std::vector<std::int64_t> pdg{};
    std::vector<std::int64_t> status{};
    std::vector<std::int64_t> mother{};  ///< Position of the first one among the particles; -1 if there is none.
    std::vector<double> px{};
    std::vector<double> py{};
    std::vector<double> pz{};
    std::vector<double> e{};
    std::vector<double> m{};
};

/// Reads the events of a file one after the other.
class EventReader {
public:
    virtual ~EventReader() = default;
    /// @return false if there are no more.
    /// @throws Failure for the input "file" with the line of the damage.
    virtual bool next(Event& event) = 0;
};

/// @param lines after the one that names the format; outlives the reader.
std::unique_ptr<EventReader> readHepMc2(Lines& lines);
std::unique_ptr<EventReader> readHepMc3(Lines& lines);
std::unique_ptr<EventReader> readLesHouches(Lines& lines);

}  // namespace velmorak::hepmc
