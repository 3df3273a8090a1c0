#include "expression/Kernels.h"
#include "expression/Tree.h"

#include <algorithm>
#include <array>
#include <utility>

namespace velmorak::expression {

namespace {

/// Values with names, from which a definition is made.
using Values = std::map<std::string, std::size_t, std::less<>>;

struct Definition {
    std::string_view name;
    std::string_view text;
};

/// A function whose arguments are these, letter for letter.
struct PlainFunction {
    std::string_view name;
    std::array<std::string_view, 4> parameters;
    std::string_view text;
};

constexpr std::array plainFunctions{
    PlainFunction{"deltaPhi", {"phi1", "phi2"}, "remainder(phi1 - phi2, 2*pi)"},
    PlainFunction{"deltaR", {"eta1", "phi1", "eta2", "phi2"}, "sqrt((eta1 - eta2)^2 + remainder(phi1 - phi2, 2*pi)^2)"},
    PlainFunction{"transverseMass", {"pt1", "phi1", "pt2", "phi2"}, "2*sqrt(pt1*pt2)*abs(sin((phi1 - phi2)/2))"}};

/// Of one particle, from pt, eta, phi and m.
constexpr std::array components{Definition{"X", "pt*cos(phi)"}, Definition{"Y", "pt*sin(phi)"},
                                Definition{"Z", "pt*sinh(eta)"},
                                Definition{"E", "sqrt(pt^2 + (pt*sinh(eta))^2 + m^2)"}};

/// Of the sum of particles, from its components.
constexpr std::array ofSums{Definition{"mass", "sqrt(max(E^2 - X^2 - Y^2 - Z^2, 0.0))"},
                            Definition{"pt", "sqrt(X^2 + Y^2)"},
                            Definition{"eta", "asinh(Z/sqrt(X^2 + Y^2))"},
                            Definition{"phi", "atan2(Y, X)"},
                            Definition{"energy", "E"},
                            Definition{"rapidity", "atanh(Z/E)"}};

/// Of a particle (x, y, z, e) in the rest frame of a system (X, Y, Z, E) of mass M. Each may use those before.
constexpr std::array boost{Definition{"dot", "x*X + y*Y + z*Z"}, Definition{"along", "dot/(M*(E + M)) - e/M"},
                           Definition{"bx", "x + along*X"},      Definition{"by", "y + along*Y"},
                           Definition{"bz", "z + along*Z"},      Definition{"be", "(e*E - dot)/M"}};

constexpr std::array ofBoosted{Definition{"boostedPt", "sqrt(bx^2 + by^2)"},
                               Definition{"boostedEta", "asinh(bz/sqrt(bx^2 + by^2))"},
                               Definition{"boostedPhi", "atan2(by, bx)"}, Definition{"boostedEnergy", "be"}};

constexpr Definition helicity{"helicityCosine", "(bx*X + by*Y + bz*Z)/sqrt((bx^2 + by^2 + bz^2)*(X^2 + Y^2 + Z^2))"};

template <typename Table>
auto* findIn(const Table& table, std::string_view name) {
    const auto found = std::find_if(table.begin(), table.end(), [&](const auto& entry) { return entry.name == name; });
    return found == table.end() ? nullptr : &*found;
}

/// Adds the expansion of one call.
class Expansion {
public:
    Expansion(TreeBuilder& tree, const Node& call) : tree(tree), call(call) {}

    std::size_t result();

private:
    std::size_t plain(const PlainFunction& function);
    std::size_t ofSum(const Definition& function);
    std::size_t boosted(const Definition& function);
    std::size_t helicityCosine();

    std::size_t defined(std::string_view text, const Values& values);
    template <typename Definitions>
    void define(const Definitions& definitions, Values& values);

    /// @return the components of the particle with these four arguments.
    Values particle(std::size_t first);
    std::optional<std::size_t> commonPositions(std::size_t first) const;
    bool areCombinations(std::size_t place) const;
    std::size_t checked(std::size_t argument);
    Values sumOf(const std::vector<Values>& particles);
    void wantArguments(const std::vector<std::size_t>& counts, std::string_view wanted) const;

    TreeBuilder& tree;
    const Node& call;
};

std::size_t Expansion::result() {
    if (const PlainFunction* const function = findIn(plainFunctions, call.text)) {
        return plain(*function);
    }
    if (const Definition* const function = findIn(ofSums, call.text)) {
        return ofSum(*function);
    }
    const Definition* const function = findIn(ofBoosted, call.text);
    return function ? boosted(*function) : helicityCosine();
}

void Expansion::wantArguments(const std::vector<std::size_t>& counts, std::string_view wanted) const {
    if (std::find(counts.begin(), counts.end(), call.children.size()) == counts.end()) {
        tree.fail(call, "\"" + call.text + "\" takes " + std::string(wanted));
    }
}

std::size_t Expansion::plain(const PlainFunction& function) {
    Values values;
    std::string wanted;
    for (const std::string_view parameter : function.parameters) {
        if (!parameter.empty()) {
            values.emplace(parameter, call.children.size() > values.size() ? call.children[values.size()] : 0);
            wanted += (wanted.empty() ? "" : ", ") + std::string(parameter);
        }
    }
    wantArguments({values.size()}, wanted);
    for (auto& [name, value] : values) {
        value = checked(value);
    }
    return defined(function.text, values);
}

std::size_t Expansion::ofSum(const Definition& function) {
    wantArguments({4, 8, 12}, "pt, eta, phi and m of one, two or three particles, or lists of them");
    std::vector<Values> particles;
    for (std::size_t first = 0; first < call.children.size(); first += 4) {
        particles.push_back(particle(first));
    }
    return defined(function.text, sumOf(particles));
}

std::size_t Expansion::boosted(const Definition& function) {
    wantArguments({8}, "pt, eta, phi and m of a particle, and those of the system in whose rest frame it is seen");
    Values values = particle(4);
    values.emplace("M", checked(call.children[7]));
    const Values own = particle(0);
    for (const auto& [upper, lower] :
         {std::pair("X", "x"), std::pair("Y", "y"), std::pair("Z", "z"), std::pair("E", "e")}) {
        values.emplace(lower, own.at(upper));
    }
    define(boost, values);
    return defined(function.text, values);
}

std::size_t Expansion::helicityCosine() {
    wantArguments({8}, "pt, eta, phi and m of two particles");
    const Values own = particle(0);
    Values values = sumOf({own, particle(4)});
    values.emplace("M", defined(ofSums.front().text, values));
    for (const auto& [upper, lower] :
         {std::pair("X", "x"), std::pair("Y", "y"), std::pair("Z", "z"), std::pair("E", "e")}) {
        values.emplace(lower, own.at(upper));
    }
    define(boost, values);
    return defined(helicity.text, values);
}

template <typename Definitions>
void Expansion::define(const Definitions& definitions, Values& values) {
    for (const Definition& definition : definitions) {
        values.emplace(definition.name, defined(definition.text, values));
    }
}

/// @return the place of a formula with the values in place of its names.
std::size_t Expansion::defined(std::string_view text, const Values& values) {
    std::vector<std::size_t> places;
    for (const Node& node : parse(text)) {
        std::vector<std::size_t> children;
        for (const std::size_t child : node.children) {
            children.push_back(places[child]);
        }
        if (node.form == Form::Name) {
            const auto value = values.find(node.text);
            places.push_back(value == values.end() ? tree.number(call, *findConstant(node.text)) : value->second);
        } else if (node.form == Form::Call) {
            places.push_back(tree.call(call, node.text, std::move(children)));
        } else {
            const double number = node.form == Form::Integer ? static_cast<double>(node.integer) : node.real;
            places.push_back(tree.number(call, number));
        }
    }
    return places.back();
}

Values Expansion::particle(std::size_t first) {
    // Terms of single particles are computed before the particles are combined.
    const std::optional<std::size_t> positions = commonPositions(first);
    Values values;
    for (const auto& [name, place] :
         {std::pair("pt", 0), std::pair("eta", 1), std::pair("phi", 2), std::pair("m", 3)}) {
        const std::size_t argument = call.children[first + static_cast<std::size_t>(place)];
        const bool isCombined = positions && tree[argument].form == Form::Call;
        values.emplace(name, checked(isCombined ? tree[argument].children[0] : argument));
    }
    Values made;
    for (const Definition& component : components) {
        const std::size_t each = defined(component.text, values);
        made.emplace(component.name, positions ? tree.call(call, "#at", {each, *positions}) : each);
    }
    return made;
}

/// @return the positions of combinations at which all arguments but numbers are taken from lists.
std::optional<std::size_t> Expansion::commonPositions(std::size_t first) const {
    std::optional<std::size_t> common;
    for (std::size_t argument = first; argument < first + 4; ++argument) {
        const Node& node = tree[call.children[argument]];
        if (node.form == Form::Real || node.form == Form::Integer) {
            continue;
        }
        if (node.text != "#at" || !areCombinations(node.children[1]) ||
            node.children[1] != common.value_or(node.children[1])) {
            return std::nullopt;
        }
        common = node.children[1];
    }
    return common;
}

bool Expansion::areCombinations(std::size_t place) const {
    constexpr std::array<std::string_view, 6> followed{"#index", "#at", "first", "second", "third", "last"};
    const Node* node = &tree[place];
    while (node->form == Form::Call && std::find(followed.begin(), followed.end(), node->text) != followed.end() &&
           !node->children.empty()) {
        node = &tree[node->children[0]];
    }
    return node->form == Form::Call && (node->text == "pairs" || node->text == "triples");
}

std::size_t Expansion::checked(std::size_t argument) {
    return tree.call(tree[argument], "#number", {argument});
}

Values Expansion::sumOf(const std::vector<Values>& particles) {
    Values sum;
    for (const Definition& component : components) {
        std::size_t total = particles[0].at(std::string(component.name));
        if (particles.size() == 1) {
            total = tree.call(call, "#total", {total});
        }
        for (std::size_t i = 1; i < particles.size(); ++i) {
            total = tree.call(call, "+", {total, particles[i].at(std::string(component.name))});
        }
        sum.emplace(component.name, total);
    }
    return sum;
}

}  // namespace

bool isKinematic(std::string_view name) {
    return findIn(plainFunctions, name) != nullptr || findIn(ofSums, name) != nullptr ||
           findIn(ofBoosted, name) != nullptr || name == helicity.name;
}

std::size_t addKinematic(TreeBuilder& tree, const Node& call) {
    return Expansion(tree, call).result();
}

}  // namespace velmorak::expression
