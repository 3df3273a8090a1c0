#include <velmorak/Kind.h>

using namespace velmorak;

namespace {

class Named : public Function {
public:
    explicit Named(std::string kindName) : kindName(std::move(kindName)) {}
    std::string name() const override { return kindName; }
    std::string summary() const override { return "Has a name."; }
    Ports ports(const ValueTexts&) const override { return {}; }
    void evaluate(const Arguments&, Results&, RunContext&) const override {}

private:
    std::string kindName;
};

}  // namespace

VELMORAK_COLLECTION(registry) {
    registry.add(std::make_unique<Named>("Single"));
    registry.add(std::make_unique<Named>("Single"));
    registry.add(std::make_unique<Named>("two words"));
}
