#pragma once

#include <cstdint>
#include <vector>

/// The eight analyses of events as loops over columns, written by hand.
namespace velmorak::bench {

/// Lists of all events, one after the other: event i has the values from offsets[i] to offsets[i + 1].
struct Particles {
    std::vector<std::uint64_t> offsets{0};
    std::vector<double> pt, eta, phi, last;  ///< last: b-tag discriminant or charge.
};

struct Events {
    std::vector<double> met, metPhi;
    Particles jets, muons, electrons;

    std::size_t size() const { return met.size(); }
};

/// An analysis; its values are those that a histogram is filled with.
using EventLoop = void (*)(const Events& events, std::vector<double>& values);

void missingEnergy(const Events& events, std::vector<double>& values);
void jetMomenta(const Events& events, std::vector<double>& values);
void centralJets(const Events& events, std::vector<double>& values);
void twoJets(const Events& events, std::vector<double>& values);
void muonPairs(const Events& events, std::vector<double>& values);
void topCandidates(const Events& events, std::vector<double>& values);
void jetsBesideLeptons(const Events& events, std::vector<double>& values);
void thirdLepton(const Events& events, std::vector<double>& values);

}  // namespace velmorak::bench
