#include <velmorak/ElementaryFunctions.h>
#include <velmorak/ShortKinds.h>

namespace elementary = velmorak::elementary;

VELMORAK_COLLECTION(registry) {
    registry.group("@NAME@");
    velmorak::rowSource(registry, {"Wave", "Samples a sine wave."},
                        {{"frequency", "Frequency in Hz.", "50"}, {"rate", "Samples in each second.", "1000"}},
                        {{"t", "s"}, {"amplitude"}}, [](std::uint64_t row, double frequency, double rate) {
                            const double t = static_cast<double>(row) / rate;
                            return std::array{t, elementary::sin(6.283185307179586 * frequency * t)};
                        });
}
