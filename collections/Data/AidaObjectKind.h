#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Reads one object of an AIDA file that is no table. Its kinds differ in the type of the object.
class AidaObjectKind : public Function {
public:
    struct About {
        std::string name;
        std::string summary;
        std::string example;  ///< A path, for the description of the input.
        OutputSpec output;
    };
    explicit AidaObjectKind(About aboutKind) : about(std::move(aboutKind)) {}

    std::string name() const override { return about.name; }
    std::string summary() const override { return about.summary; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;

private:
    About about;
};

/// Histograms, profiles, points and functions.
std::vector<AidaObjectKind::About> aidaObjectKinds();

}  // namespace velmorak
