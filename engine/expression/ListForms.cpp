#include "expression/Kernels.h"

#include <array>

namespace velmorak::expression {

namespace {

constexpr std::array lists{
    NamedForm{"sum", "sum(list)", "real, or integer for integers and booleans; 0 for an empty list"},
    NamedForm{"count", "count(list)", "number of elements"},
    NamedForm{"min", "min(list)", "real; NaN if any value is NaN, and for an empty list"},
    NamedForm{"max", "max(list)", "real; NaN if any value is NaN, and for an empty list"},
    NamedForm{"any", "any(list)", "boolean, of booleans or integers; false for an empty list"},
    NamedForm{"all", "all(list)", "boolean, of booleans or integers; true for an empty list"},
    NamedForm{"argmin", "argmin(list)",
              "position of the smallest number, the first of equal ones; -1 if there is none but NaN"},
    NamedForm{"argmax", "argmax(list)",
              "position of the largest number, the first of equal ones; -1 if there is none but NaN"},
    NamedForm{"first", "first(list, default)",
              "first value, or the default if there is none; `first(list)` is `list[0]`"},
    NamedForm{"second", "second(list, default)", "second value, likewise"},
    NamedForm{"third", "third(list, default)", "third value, likewise"},
    NamedForm{"last", "last(list, default)", "last value, likewise"},
    NamedForm{"sort", "sort(list)", "list in ascending order, NaN last"},
    NamedForm{"sort", "sort(list, by)",
              "list in the ascending order of another list of the same length; equal ones keep their order"},
    NamedForm{"order", "order(list)", "positions that sort the list: `list[order(list)]` is `sort(list)`"},
    NamedForm{"reverse", "reverse(list)", "list from its end to its beginning"},
    NamedForm{"unique", "unique(list)", "list without repeated values, in the order in which they appear"},
    NamedForm{"concat", "concat(a, b, ...)", "list of the values of a, then b; a single value counts as a list of one"},
    NamedForm{"pairs", "pairs(list)", "combinations of two different positions, in ascending order"},
    NamedForm{"pairs", "pairs(a, b)", "combinations of a position in a with one in b"},
    NamedForm{"triples", "triples(list)", "combinations of three different positions, in ascending order"},
    NamedForm{"nearest", "nearest(eta1, phi1, eta2, phi2)",
              "for each direction 1, the position of the nearest direction in the lists 2, by `deltaR`; -1 if they are "
              "empty"}};

constexpr std::array kinematics{
    NamedForm{"mass", "mass(pt, eta, phi, m)", "sqrt(max(E^2 - X^2 - Y^2 - Z^2, 0))"},
    NamedForm{"pt", "pt(pt, eta, phi, m)", "sqrt(X^2 + Y^2)"},
    NamedForm{"eta", "eta(pt, eta, phi, m)", "asinh(Z/sqrt(X^2 + Y^2))"},
    NamedForm{"phi", "phi(pt, eta, phi, m)", "atan2(Y, X)"},
    NamedForm{"energy", "energy(pt, eta, phi, m)", "E"},
    NamedForm{"rapidity", "rapidity(pt, eta, phi, m)", "atanh(Z/E)"},
    NamedForm{"deltaPhi", "deltaPhi(phi1, phi2)", "remainder(phi1 - phi2, 2*pi)"},
    NamedForm{"deltaR", "deltaR(eta1, phi1, eta2, phi2)", "sqrt((eta1 - eta2)^2 + deltaPhi(phi1, phi2)^2)"},
    NamedForm{"transverseMass", "transverseMass(pt1, phi1, pt2, phi2)", "2*sqrt(pt1*pt2)*abs(sin((phi1 - phi2)/2))"},
    NamedForm{"boostedPt", "boostedPt(pt, eta, phi, m, pt0, eta0, phi0, m0)",
              "transverse momentum in the rest frame of the system 0"},
    NamedForm{"boostedEta", "boostedEta(pt, eta, phi, m, pt0, eta0, phi0, m0)", "pseudorapidity there"},
    NamedForm{"boostedPhi", "boostedPhi(pt, eta, phi, m, pt0, eta0, phi0, m0)", "azimuth there"},
    NamedForm{"boostedEnergy", "boostedEnergy(pt, eta, phi, m, pt0, eta0, phi0, m0)", "energy there"},
    NamedForm{"helicityCosine", "helicityCosine(pt1, eta1, phi1, m1, pt2, eta2, phi2, m2)",
              "cosine of the angle between particle 1, in the rest frame of the pair, and the momentum of the pair"}};

}  // namespace

std::span<const NamedForm> listForms() {
    return lists;
}

std::span<const NamedForm> kinematicForms() {
    return kinematics;
}

}  // namespace velmorak::expression
