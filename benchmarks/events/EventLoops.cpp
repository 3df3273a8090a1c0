#include "EventLoops.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace velmorak::bench {

namespace {

struct Momentum {
    double x, y, z, e;

    Momentum operator+(const Momentum& other) const { return {x + other.x, y + other.y, z + other.z, e + other.e}; }
    double mass() const { return std::sqrt(std::max(e * e - x * x - y * y - z * z, 0.0)); }
};

Momentum momentumOf(double pt, double eta, double phi, double m) {
    const double z = pt * std::sinh(eta);
    return {pt * std::cos(phi), pt * std::sin(phi), z, std::sqrt(pt * pt + z * z + m * m)};
}

/// The momenta of one event's particles, which are computed once.
void momentaOf(const Particles& particles, std::size_t event, double m, std::vector<Momentum>& momenta) {
    momenta.clear();
    for (std::uint64_t i = particles.offsets[event]; i < particles.offsets[event + 1]; ++i) {
        momenta.push_back(momentumOf(particles.pt[i], particles.eta[i], particles.phi[i], m));
    }
}

double angleBetween(double a, double b) {
    return std::remainder(a - b, 2.0 * std::numbers::pi);
}

bool isNearLepton(const Particles& leptons, std::size_t event, double eta, double phi) {
    for (std::uint64_t i = leptons.offsets[event]; i < leptons.offsets[event + 1]; ++i) {
        const double inEta = eta - leptons.eta[i];
        const double inPhi = angleBetween(phi, leptons.phi[i]);
        if (leptons.pt[i] > 10.0 && inEta * inEta + inPhi * inPhi < 0.16) {
            return true;
        }
    }
    return false;
}

struct Lepton {
    double pt, phi;
    int kind;  ///< Charge of a muon, twice the charge of an electron.
    Momentum momentum;
};

void leptonsOf(const Particles& particles, std::size_t event, int factor, double m, std::vector<Lepton>& leptons) {
    for (std::uint64_t i = particles.offsets[event]; i < particles.offsets[event + 1]; ++i) {
        leptons.push_back({particles.pt[i], particles.phi[i], factor * static_cast<int>(particles.last[i]),
                           momentumOf(particles.pt[i], particles.eta[i], particles.phi[i], m)});
    }
}

/// The pair of opposite charge and equal flavour that is closest to the Z boson.
bool findPair(const std::vector<Lepton>& leptons, std::size_t (&pair)[2]) {
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < leptons.size(); ++i) {
        for (std::size_t j = i + 1; j < leptons.size(); ++j) {
            const double distance = std::fabs((leptons[i].momentum + leptons[j].momentum).mass() - 91.2);
            if (leptons[i].kind + leptons[j].kind == 0 && distance < least) {
                least = distance;
                pair[0] = i;
                pair[1] = j;
            }
        }
    }
    return std::isfinite(least);
}

}  // namespace

void missingEnergy(const Events& events, std::vector<double>& values) {
    values.insert(values.end(), events.met.begin(), events.met.end());
}

void jetMomenta(const Events& events, std::vector<double>& values) {
    values.insert(values.end(), events.jets.pt.begin(), events.jets.pt.end());
}

void centralJets(const Events& events, std::vector<double>& values) {
    for (std::size_t i = 0; i < events.jets.pt.size(); ++i) {
        if (std::fabs(events.jets.eta[i]) < 1.0) {
            values.push_back(events.jets.pt[i]);
        }
    }
}

void twoJets(const Events& events, std::vector<double>& values) {
    for (std::size_t event = 0; event < events.size(); ++event) {
        const auto* const pt = events.jets.pt.data();
        const auto hard = std::count_if(pt + events.jets.offsets[event], pt + events.jets.offsets[event + 1],
                                        [](double each) { return each > 40.0; });
        values.push_back(hard >= 2 ? events.met[event] : 0.0);
    }
}

void muonPairs(const Events& events, std::vector<double>& values) {
    std::vector<Momentum> momenta;
    for (std::size_t event = 0; event < events.size(); ++event) {
        momentaOf(events.muons, event, 0.1057, momenta);
        const auto* const charge = events.muons.last.data() + events.muons.offsets[event];
        bool isFound = false;
        for (std::size_t i = 0; i < momenta.size(); ++i) {
            for (std::size_t j = i + 1; j < momenta.size(); ++j) {
                const double mass = charge[i] + charge[j] == 0.0 ? (momenta[i] + momenta[j]).mass() : 0.0;
                isFound |= mass > 60.0 && mass < 120.0;
            }
        }
        values.push_back(isFound ? events.met[event] : 0.0);
    }
}

void topCandidates(const Events& events, std::vector<double>& values) {
    std::vector<Momentum> momenta;
    for (std::size_t event = 0; event < events.size(); ++event) {
        momentaOf(events.jets, event, 5.0, momenta);
        double least = std::numeric_limits<double>::infinity();
        Momentum best{0.0, 0.0, 0.0, 0.0};
        for (std::size_t i = 0; i < momenta.size(); ++i) {
            for (std::size_t j = i + 1; j < momenta.size(); ++j) {
                for (std::size_t k = j + 1; k < momenta.size(); ++k) {
                    const Momentum sum = momenta[i] + momenta[j] + momenta[k];
                    const double distance = std::fabs(sum.mass() - 172.5);
                    if (distance < least) {
                        least = distance;
                        best = sum;
                    }
                }
            }
        }
        values.push_back(std::hypot(best.x, best.y));
    }
}

void jetsBesideLeptons(const Events& events, std::vector<double>& values) {
    for (std::size_t event = 0; event < events.size(); ++event) {
        double sum = 0.0;
        for (std::uint64_t i = events.jets.offsets[event]; i < events.jets.offsets[event + 1]; ++i) {
            const double eta = events.jets.eta[i];
            const double phi = events.jets.phi[i];
            if (events.jets.pt[i] > 30.0 && !isNearLepton(events.muons, event, eta, phi) &&
                !isNearLepton(events.electrons, event, eta, phi)) {
                sum += events.jets.pt[i];
            }
        }
        values.push_back(sum);
    }
}

void thirdLepton(const Events& events, std::vector<double>& values) {
    std::vector<Lepton> leptons;
    for (std::size_t event = 0; event < events.size(); ++event) {
        leptons.clear();
        leptonsOf(events.muons, event, 1, 0.1057, leptons);
        leptonsOf(events.electrons, event, 2, 0.000511, leptons);
        std::size_t pair[2] = {0, 0};
        double mass = 0.0;
        if (leptons.size() >= 3 && findPair(leptons, pair)) {
            const Lepton* leading = nullptr;
            for (std::size_t i = 0; i < leptons.size(); ++i) {
                if (i != pair[0] && i != pair[1] && (!leading || leptons[i].pt > leading->pt)) {
                    leading = &leptons[i];
                }
            }
            mass = 2.0 * std::sqrt(leading->pt * events.met[event]) *
                   std::fabs(std::sin(0.5 * (leading->phi - events.metPhi[event])));
        }
        values.push_back(mass);
    }
}

}  // namespace velmorak::bench
