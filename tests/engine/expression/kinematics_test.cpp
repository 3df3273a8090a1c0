#include "SampleRows.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <numbers>
#include <random>

namespace velmorak {
namespace {

/// A momentum, as an oracle in the precision of long double.
struct Momentum {
    long double x, y, z, e;

    static Momentum of(long double pt, long double eta, long double phi, long double m) {
        const long double pz = pt * std::sinh(eta);
        return {pt * std::cos(phi), pt * std::sin(phi), pz, std::sqrt(pt * pt + pz * pz + m * m)};
    }
    Momentum operator+(const Momentum& other) const { return {x + other.x, y + other.y, z + other.z, e + other.e}; }
    long double mass() const { return std::sqrt(std::max(e * e - x * x - y * y - z * z, 0.0L)); }
    long double pt() const { return std::hypot(x, y); }
    long double eta() const { return std::asinh(z / pt()); }
    long double phi() const { return std::atan2(y, x); }
    long double momentum() const { return std::sqrt(x * x + y * y + z * z); }

    /// Lorentz transformation with the velocity of the system.
    Momentum seenFrom(const Momentum& system) const {
        const long double bx = system.x / system.e;
        const long double by = system.y / system.e;
        const long double bz = system.z / system.e;
        const long double square = bx * bx + by * by + bz * bz;
        const long double gamma = 1.0L / std::sqrt(1.0L - square);
        const long double along = bx * x + by * y + bz * z;
        const long double factor = (gamma - 1.0L) * along / square - gamma * e;
        return {x + factor * bx, y + factor * by, z + factor * bz, gamma * (e - along)};
    }
};

struct Event {
    std::vector<double> pt, eta, phi, m;

    Momentum at(std::size_t i) const { return Momentum::of(pt[i], eta[i], phi[i], m[i]); }
};

constexpr std::size_t eventCount = 400;

std::vector<Event> randomEvents() {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> unit;
    std::vector<Event> events(eventCount);
    for (Event& event : events) {
        for (std::size_t i = 3 + random() % 5; i > 0; --i) {
            event.pt.push_back(5.0 + 95.0 * unit(random));
            event.eta.push_back(4.0 * unit(random) - 2.0);
            event.phi.push_back(std::numbers::pi * (2.0 * unit(random) - 1.0));
            event.m.push_back(10.0 * unit(random));
        }
    }
    return events;
}

Chunk chunkOf(const std::vector<Event>& events) {
    Chunk chunk;
    chunk.rows = events.size();
    for (const auto part : {&Event::pt, &Event::eta, &Event::phi, &Event::m}) {
        Column::Reals values;
        std::vector<std::uint64_t> offsets{0};
        for (const Event& event : events) {
            values.insert(values.end(), (event.*part).begin(), (event.*part).end());
            offsets.push_back(values.size());
        }
        chunk.columns.push_back(column(values, offsets));
    }
    return chunk;
}

const Schema& particles() {
    static const Schema all({{"pt", ColumnType::Real, true},
                             {"eta", ColumnType::Real, true},
                             {"phi", ColumnType::Real, true},
                             {"m", ColumnType::Real, true}});
    return all;
}

std::vector<double> computed(const std::string& text) {
    return Expression(text, particles()).evaluate(chunkOf(randomEvents()))->reals();
}

/// Compares an expression of one value per event with the oracle.
template <typename Oracle>
void expectInEachEvent(const std::string& text, const Oracle& oracle) {
    const std::vector<double> values = computed(text);
    const std::vector<Event> events = randomEvents();
    for (std::size_t i = 0; i < events.size(); ++i) {
        const auto wanted = static_cast<double>(oracle(events[i]));
        ASSERT_NEAR(values[i], wanted, 1e-12 * std::max(1.0, std::fabs(wanted))) << text << ", event " << i;
    }
}

constexpr const char* firstTwo = "pt[0], eta[0], phi[0], m[0], pt[1], eta[1], phi[1], m[1]";

TEST(Kinematics, ofTwoParticlesAreThoseOfTheirSum) {
    const auto pair = [](const Event& event) { return event.at(0) + event.at(1); };
    const std::string arguments = std::string("(") + firstTwo + ")";
    expectInEachEvent("mass" + arguments, [&](const Event& event) { return pair(event).mass(); });
    expectInEachEvent("pt" + arguments, [&](const Event& event) { return pair(event).pt(); });
    expectInEachEvent("eta" + arguments, [&](const Event& event) { return pair(event).eta(); });
    expectInEachEvent("phi" + arguments, [&](const Event& event) { return pair(event).phi(); });
    expectInEachEvent("energy" + arguments, [&](const Event& event) { return pair(event).e; });
    expectInEachEvent("rapidity" + arguments,
                      [&](const Event& event) { return std::atanh(pair(event).z / pair(event).e); });
}

TEST(Kinematics, ofThreeParticlesAreThoseOfTheirSum) {
    expectInEachEvent("mass(" + std::string(firstTwo) + ", pt[2], eta[2], phi[2], m[2])",
                      [](const Event& event) { return (event.at(0) + event.at(1) + event.at(2)).mass(); });
}

TEST(Kinematics, ofAListAreThoseOfTheSumOfItsParticles) {
    expectInEachEvent("mass(pt, eta, phi, m)", [](const Event& event) {
        Momentum sum{0, 0, 0, 0};
        for (std::size_t i = 0; i < event.pt.size(); ++i) {
            sum = sum + event.at(i);
        }
        return sum.mass();
    });
    EXPECT_EQ(computed("mass(pt[pt < 0], eta[pt < 0], phi[pt < 0], m[pt < 0])")[0], 0.0);
}

TEST(Kinematics, ofCombinationsAreThoseOfEach) {
    expectInEachEvent("max(mass(pt[pairs(pt)], eta[pairs(pt)], phi[pairs(pt)], m[pairs(pt)]))", [](const Event& event) {
        long double largest = 0.0;
        for (std::size_t i = 0; i < event.pt.size(); ++i) {
            for (std::size_t j = i + 1; j < event.pt.size(); ++j) {
                largest = std::max(largest, (event.at(i) + event.at(j)).mass());
            }
        }
        return largest;
    });
    expectInEachEvent("sum(pt(pt[triples(pt)], eta[triples(pt)], phi[triples(pt)], 0.0))", [](const Event& event) {
        long double sum = 0.0;
        for (std::size_t i = 0; i < event.pt.size(); ++i) {
            for (std::size_t j = i + 1; j < event.pt.size(); ++j) {
                for (std::size_t k = j + 1; k < event.pt.size(); ++k) {
                    sum += (event.at(i) + event.at(j) + event.at(k)).pt();
                }
            }
        }
        return sum;
    });
}

TEST(Kinematics, computeTheSameBitsForCombinationsAsForTheirParticles) {
    EXPECT_EQ(computed("sum(mass(pt[pairs(pt)], eta[pairs(pt)], phi[pairs(pt)], m[pairs(pt)]))"),
              computed("sum(mass(pt[first(pairs(pt))], eta[first(pairs(pt))], phi[first(pairs(pt))], "
                       "m[first(pairs(pt))], pt[second(pairs(pt))], eta[second(pairs(pt))], phi[second(pairs(pt))], "
                       "m[second(pairs(pt))]))"));
}

TEST(Kinematics, ofAnglesWrapAround) {
    EXPECT_EQ(real("deltaPhi(3.0, -3.0)"), std::remainder(6.0, 2.0 * std::numbers::pi));
    EXPECT_EQ(real("deltaPhi(1, 0.5)"), 0.5);
    EXPECT_DOUBLE_EQ(real("deltaR(1, 3.0, -1, -3.0)"), std::hypot(2.0, 2.0 * std::numbers::pi - 6.0));
    EXPECT_NEAR(real("transverseMass(40, 0, 30, 2.5)"), std::sqrt(2.0 * 40.0 * 30.0 * (1.0 - std::cos(2.5))), 1e-13);
    EXPECT_TRUE(std::isnan(real("remainder(0.0, 0)")));
    EXPECT_EQ(real("remainder(1.5, 3)"), 1.5);
    EXPECT_EQ(real("remainder(4.5, 3)"), -1.5);
}

TEST(Kinematics, haveTheBitsOfTheRemainder) {
    const Schema schema({{"x"}, {"y"}});
    Column::Reals x;
    Column::Reals y;
    std::mt19937_64 random(3);
    for (int i = 0; i < 20'000; ++i) {
        const double size = std::ldexp(1.0, static_cast<int>(random() % 2100) - 1074);
        y.push_back(size * (i % 3 == 0 ? -1.0 : 1.0) * (i % 7 == 0 ? 1.0 : static_cast<double>(1 + random() % 9)));
        x.push_back(y.back() * static_cast<double>(static_cast<int>(random() % 33) - 16) * 0.125);
    }
    Chunk chunk;
    chunk.rows = x.size();
    chunk.columns = {column(x), column(y)};
    const Column::Reals made = Expression("remainder(x, y)", schema).evaluate(chunk)->reals();
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double wanted = std::remainder(x[i], y[i]);
        ASSERT_TRUE((std::isnan(wanted) && std::isnan(made[i])) ||
                    std::bit_cast<std::uint64_t>(wanted) == std::bit_cast<std::uint64_t>(made[i]))
            << x[i] << " " << y[i];
    }
}

TEST(Kinematics, boostIntoARestFrame) {
    const auto boosted = [](const Event& event) { return event.at(0).seenFrom(event.at(0) + event.at(1)); };
    const std::string pair(firstTwo);
    const std::string system = "pt(" + pair + "), eta(" + pair + "), phi(" + pair + "), mass(" + pair + ")";
    const std::string arguments = "(pt[0], eta[0], phi[0], m[0], " + system + ")";
    expectInEachEvent("boostedEnergy" + arguments, [&](const Event& event) { return boosted(event).e; });
    expectInEachEvent("boostedPt" + arguments, [&](const Event& event) { return boosted(event).pt(); });
    expectInEachEvent("cos(boostedPhi" + arguments + ")",
                      [&](const Event& event) { return std::cos(boosted(event).phi()); });
    expectInEachEvent("tanh(boostedEta" + arguments + ")",
                      [&](const Event& event) { return std::tanh(boosted(event).eta()); });
    expectInEachEvent("helicityCosine(" + pair + ")", [&](const Event& event) {
        const Momentum sum = event.at(0) + event.at(1);
        const Momentum own = boosted(event);
        return (own.x * sum.x + own.y * sum.y + own.z * sum.z) / (own.momentum() * sum.momentum());
    });
}

TEST(Kinematics, nameWhatTheyTake) {
    EXPECT_NE(refusalOf("mass(x)").find("\"mass\" takes pt, eta, phi and m of one, two or three particles"),
              std::string::npos);
    EXPECT_NE(refusalOf("deltaR(x, y)").find("\"deltaR\" takes eta1, phi1, eta2, phi2"), std::string::npos);
    EXPECT_NE(refusalOf("deltaPhi()").find("\"deltaPhi\" takes phi1, phi2"), std::string::npos);
    EXPECT_NE(refusalOf("mass(x, y, tag, 0)").find("a number or a list of numbers is needed here"), std::string::npos);
    EXPECT_NE(refusalOf("boostedPt(x, y, x, y)").find("in whose rest frame"), std::string::npos);
    EXPECT_NE(refusalOf("helicityCosine(x)").find("pt, eta, phi and m of two particles"), std::string::npos);
    EXPECT_NE(refusalOf("maass(x)").find("did you mean \"mass\"?"), std::string::npos);
}

}  // namespace
}  // namespace velmorak
