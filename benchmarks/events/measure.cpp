#include <velmorak/Expression.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>

#include "EventLoops.h"
#include "Row.h"
#include "Timing.h"

/// Eight analyses of events, one core, beside loops over the same columns in memory that are written by hand, and
/// beside numpy with offsets. All must find the same sum of their values.
namespace {

using namespace velmorak;
using bench::Events;
using bench::Particles;

constexpr std::size_t eventCount = 200'000;

struct Analysis {
    const char* name;
    std::vector<std::pair<const char*, const char*>> columns;  ///< Each with its expression, one after the other.
    std::string values;
    bench::EventLoop loop;
};

std::string indexedBy(const std::string& positions, const std::string& mass) {
    return "jet_pt[" + positions + "], jet_eta[" + positions + "], jet_phi[" + positions + "], " + mass;
}

std::vector<Analysis> analyses() {
    const std::string triples = "triples(jet_pt)";
    const std::string best = triples + "[argmin(abs(mass(" + indexedBy(triples, "5.0") + ") - 172.5))]";
    const std::string opposite = "pairs(lepton_pt)[sum(lepton_kind[pairs(lepton_pt)]) == 0]";
    const std::string mass = "mass(lepton_pt[" + opposite + "], lepton_eta[" + opposite + "], lepton_phi[" + opposite +
                             "], if(abs(lepton_kind) == 1, 0.1057, 0.000511)[" + opposite + "])";
    static const std::string pair = opposite + "[argmin(abs(" + mass + " - 91.2))]";
    const std::string others = "order(-lepton_pt)[order(-lepton_pt) != pair[0] and order(-lepton_pt) != pair[1]]";
    return {
        {"missing energy", {}, "met", bench::missingEnergy},
        {"jet momenta", {}, "jet_pt", bench::jetMomenta},
        {"central jets", {}, "jet_pt[abs(jet_eta) < 1]", bench::centralJets},
        {"two jets", {}, "if(sum(jet_pt > 40) >= 2, met, 0.0)", bench::twoJets},
        {"muon pairs",
         {{"masses", "mass(muon_pt[pairs(muon_pt)], muon_eta[pairs(muon_pt)], muon_phi[pairs(muon_pt)], 0.1057)"}},
         "if(any(sum(muon_charge[pairs(muon_pt)]) == 0 and masses > 60 and masses < 120), met, 0.0)",
         bench::muonPairs},
        {"top candidates", {}, "pt(" + indexedBy(best, "5.0") + ")", bench::topCandidates},
        {"jets beside leptons",
         {{"lepton_eta", "concat(muon_eta[muon_pt > 10], electron_eta[electron_pt > 10])"},
          {"lepton_phi", "concat(muon_phi[muon_pt > 10], electron_phi[electron_pt > 10])"},
          {"hard_eta", "jet_eta[jet_pt > 30]"},
          {"hard_phi", "jet_phi[jet_pt > 30]"},
          {"nearest_lepton", "nearest(hard_eta, hard_phi, lepton_eta, lepton_phi)"}},
         "sum(jet_pt[jet_pt > 30][not (deltaR(hard_eta, hard_phi, lepton_eta[nearest_lepton], "
         "lepton_phi[nearest_lepton]) < 0.4)])",
         bench::jetsBesideLeptons},
        {"third lepton",
         {{"lepton_pt", "concat(muon_pt, electron_pt)"},
          {"lepton_eta", "concat(muon_eta, electron_eta)"},
          {"lepton_phi", "concat(muon_phi, electron_phi)"},
          {"lepton_kind", "concat(muon_charge, 2 * electron_charge)"},
          {"pair", pair.c_str()}},
         "if(count(lepton_pt) >= 3 and count(pair) == 2, transverseMass(lepton_pt[first(" + others +
             ")], lepton_phi[first(" + others + ")], met, met_phi), 0.0)",
         bench::thirdLepton},
    };
}

void addParticles(std::mt19937_64& random, std::size_t count, bool areJets, Particles& particles) {
    std::uniform_real_distribution<double> unit;
    for (std::size_t i = 0; i < count; ++i) {
        particles.pt.push_back(10.0 - 30.0 * std::log(1.0 - unit(random)));
        particles.eta.push_back(5.0 * unit(random) - 2.5);
        particles.phi.push_back(6.28 * unit(random) - 3.14);
        particles.last.push_back(areJets ? unit(random) : unit(random) < 0.5 ? 1.0 : -1.0);
    }
    particles.offsets.push_back(particles.pt.size());
}

Events randomEvents() {
    std::mt19937_64 random(2026);
    Events events;
    for (std::size_t event = 0; event < eventCount; ++event) {
        events.met.push_back(static_cast<double>(random() % 100'000) / 1000.0);
        events.metPhi.push_back(static_cast<double>(random() % 6280) / 1000.0 - 3.14);
        addParticles(random, random() % 8, true, events.jets);
        addParticles(random, random() % 4, false, events.muons);
        addParticles(random, random() % 4, false, events.electrons);
    }
    return events;
}

Schema schemaOfEvents() {
    Schema schema({{"met"}, {"met_phi"}});
    for (const char* name : {"jet_pt", "jet_eta", "jet_phi", "jet_btag", "muon_pt", "muon_eta", "muon_phi",
                             "muon_charge", "electron_pt", "electron_eta", "electron_phi", "electron_charge"}) {
        schema.add({.name = name, .isList = true});
    }
    return schema;
}

ColumnPtr partOf(const std::vector<double>& values, std::uint64_t begin, std::uint64_t end) {
    const auto first = values.begin() + static_cast<std::ptrdiff_t>(begin);
    return std::make_shared<const Column>(
        Column{Column::Reals(first, first + static_cast<std::ptrdiff_t>(end - begin)), {}});
}

void addLists(const Particles& particles, std::size_t first, Chunk& chunk) {
    const auto begin = particles.offsets.begin() + static_cast<std::ptrdiff_t>(first);
    std::vector<std::uint64_t> offsets(begin, begin + static_cast<std::ptrdiff_t>(chunk.rows + 1));
    const std::uint64_t before = offsets.front();
    const std::uint64_t end = offsets.back();
    for (std::uint64_t& offset : offsets) {
        offset -= before;
    }
    for (const std::vector<double>* values : {&particles.pt, &particles.eta, &particles.phi, &particles.last}) {
        Column list = *partOf(*values, before, end);
        list.offsets = offsets;
        chunk.columns.push_back(std::make_shared<const Column>(std::move(list)));
    }
}

std::vector<Chunk> chunksOf(const Events& events) {
    std::vector<Chunk> chunks;
    for (std::size_t first = 0; first < events.size(); first += chunkRows) {
        Chunk chunk;
        chunk.firstRow = first;
        chunk.rows = std::min(chunkRows, events.size() - first);
        chunk.columns = {partOf(events.met, first, first + chunk.rows),
                         partOf(events.metPhi, first, first + chunk.rows)};
        addLists(events.jets, first, chunk);
        addLists(events.muons, first, chunk);
        addLists(events.electrons, first, chunk);
        chunks.push_back(std::move(chunk));
    }
    return chunks;
}

/// An analysis as a pipeline computes it: columns, then the values.
class Pipeline {
public:
    explicit Pipeline(const Analysis& analysis) {
        Schema schema = schemaOfEvents();
        for (const auto& [name, text] : analysis.columns) {
            steps.emplace_back(text, schema);
            schema.add({.name = name, .type = steps.back().type(), .isList = steps.back().isList()});
        }
        steps.emplace_back(analysis.values, schema);
    }

    double sum(const std::vector<Chunk>& chunks) const {
        double all = 0.0;
        for (Chunk chunk : chunks) {
            for (const Expression& step : steps) {
                chunk.columns.push_back(step.evaluate(chunk));
            }
            const Column::Reals& values = chunk.columns.back()->reals();
            all = std::accumulate(values.begin(), values.end(), all);
        }
        return all;
    }

private:
    std::vector<Expression> steps;
};

double sumByHand(const Analysis& analysis, const Events& events) {
    std::vector<double> values;
    analysis.loop(events, values);
    return std::accumulate(values.begin(), values.end(), 0.0);
}

struct Answer {
    double ms = 0.0;
    double sum = 0.0;
};

void write(std::ofstream& out, const std::vector<double>& values) {
    const std::uint64_t size = values.size();
    out.write(reinterpret_cast<const char*>(&size), sizeof size);
    out.write(reinterpret_cast<const char*>(values.data()), static_cast<std::streamsize>(8 * size));
}

/// @return for each analysis the processor time and the sum of numpy.
std::vector<Answer> askNumpy(const Events& events, std::size_t count) {
    const auto file = std::filesystem::temp_directory_path() / ("velmorak-bench-events-" + std::to_string(getpid()));
    {
        std::ofstream out(file, std::ios::binary);
        write(out, events.met);
        write(out, events.metPhi);
        for (const Particles* particles : {&events.jets, &events.muons, &events.electrons}) {
            write(out, std::vector<double>(particles->offsets.begin(), particles->offsets.end()));
            for (const auto* values : {&particles->pt, &particles->eta, &particles->phi, &particles->last}) {
                write(out, *values);
            }
        }
    }
    // The packages are those of the system's own Python.
    FILE* pipe = popen(("/usr/bin/python3 '" VELMORAK_BENCH_EVENTS "' '" + file.string() + "'").c_str(), "r");
    std::vector<Answer> answers(count);
    for (Answer& answer : answers) {
        if (!pipe || std::fscanf(pipe, "%lf %lf", &answer.ms, &answer.sum) != 2) {
            throw std::runtime_error("numpy gave no answer");
        }
    }
    pclose(pipe);
    std::filesystem::remove(file);
    return answers;
}

void expectSame(double ours, double theirs, const std::string& who) {
    if (!(std::fabs(ours - theirs) <= 1e-9 * std::fabs(ours))) {
        throw std::runtime_error(who + " finds " + std::to_string(theirs) + ", not " + std::to_string(ours));
    }
}

void measure() {
    const Events events = randomEvents();
    const std::vector<Chunk> chunks = chunksOf(events);
    const std::vector<Analysis> all = analyses();
    const std::vector<Answer> numpy = askNumpy(events, all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const Pipeline pipeline(all[i]);
        double ours = 0.0;
        double byHand = 0.0;
        const std::vector<double> times =
            bench::mediansOf({[&] { ours = pipeline.sum(chunks); }, [&] { byHand = sumByHand(all[i], events); }},
                             bench::Clock::Processor, 5);
        expectSame(ours, byHand, std::string(all[i].name) + ", by hand:");
        expectSame(ours, numpy[i].sum, std::string(all[i].name) + ", numpy:");
        const std::string work = std::string("events: ") + all[i].name + ", 200,000 events";
        bench::printNotSlower(work, "a loop in C++", times[0], times[1], 2.0);
        bench::printFaster(work, "numpy with offsets", times[0], numpy[i].ms, 3.0);
    }
}

}  // namespace

int main() {
    try {
        measure();
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
