#include <velmorak/ShortKinds.h>

VELMORAK_COLLECTION(registry) {
    registry.group("@NAME@");
    velmorak::fromValues(registry, {"Asymmetry", "Computes the asymmetry of two numbers."},
                         {{"a", "First number.", "1"}, {"b", "Second number.", "1"}},
                         {{"asymmetry", "(a - b) / (a + b)."}}, [](double a, double b) { return (a - b) / (a + b); });
}
