#include "NamedFunctions.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace velmorak::elementary {
namespace {

/// How many random values each function gets; scripts/test --long sets more.
std::size_t valueCount() {
    const char* const given = std::getenv("VELMORAK_TEST_VALUES");
    return given ? std::strtoull(given, nullptr, 10) : 1'000'000;
}

/// Arguments in arrays of every length up to maxLength, so that there are remainders of all lengths.
class Arrays {
public:
    static constexpr std::size_t maxLength = 1029;

    Arrays() : x(maxLength), y(maxLength), expected(maxLength), out(maxLength) {}
    void refill();

    std::size_t length = 0;
    std::vector<double> x, y, expected, out;

private:
    std::mt19937_64 random{4711};
};

void Arrays::refill() {
    length = 1 + random() % maxLength;
    for (std::size_t i = 0; i < length; ++i) {
        x[i] = randomValue(random);
        y[i] = randomValue(random);
    }
}

std::size_t differences(const Arrays& arrays) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < arrays.length; ++i) {
        if (!haveSameBits(arrays.out[i], arrays.expected[i]) && ++count == 1) {
            ADD_FAILURE() << "of " << std::hexfloat << arrays.x[i] << ", " << arrays.y[i] << ": " << arrays.out[i]
                          << ", scalar " << arrays.expected[i];
        }
    }
    return count;
}

std::size_t differencesOf(const OfOne& function, Arrays& arrays, const std::vector<const Loops*>& runnable) {
    for (std::size_t i = 0; i < arrays.length; ++i) {
        arrays.expected[i] = function.scalar(arrays.x[i]);
    }
    std::size_t count = 0;
    for (const Loops* const loops : runnable) {
        (loops->*function.loop)(arrays.x.data(), arrays.length, arrays.out.data());
        count += differences(arrays);
    }
    return count;
}

std::size_t differencesOf(const OfTwo& function, Arrays& arrays, const std::vector<const Loops*>& runnable) {
    for (std::size_t i = 0; i < arrays.length; ++i) {
        arrays.expected[i] = function.scalar(arrays.x[i], arrays.y[i]);
    }
    std::size_t count = 0;
    for (const Loops* const loops : runnable) {
        (loops->*function.loop)(arrays.x.data(), arrays.y.data(), arrays.length, arrays.out.data());
        count += differences(arrays);
    }
    return count;
}

template <typename Function>
void expectSameBits(const Function& function) {
    const std::vector<const Loops*> runnable = runnableLoops();
    Arrays arrays;
    std::size_t values = 0;
    while (values < valueCount()) {
        arrays.refill();
        values += arrays.length;
        ASSERT_EQ(differencesOf(function, arrays, runnable), 0U) << function.name;
    }
    std::cout << function.name << ": " << values << " values, " << runnable.size() << " loops, 0 differ\n";
}

class ElementaryLoopOfOne : public testing::TestWithParam<OfOne> {};
class ElementaryLoopOfTwo : public testing::TestWithParam<OfTwo> {};

constexpr auto nameOf = [](const auto& info) { return std::string(info.param.name); };

TEST_P(ElementaryLoopOfOne, hasTheBitsOfTheScalarFunction) {
    expectSameBits(GetParam());
}

TEST_P(ElementaryLoopOfTwo, hasTheBitsOfTheScalarFunction) {
    expectSameBits(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Elementary, ElementaryLoopOfOne, testing::ValuesIn(functionsOfOne), nameOf);
INSTANTIATE_TEST_SUITE_P(Elementary, ElementaryLoopOfTwo, testing::ValuesIn(functionsOfTwo), nameOf);

TEST(ElementaryLoops, writeNothingBeyondTheLastValue) {
    for (const Loops* const loops : runnableLoops()) {
        for (std::size_t count = 0; count < 20; ++count) {
            const std::vector<double> x(20, 0.5);
            std::vector<double> out(20, -7.0);
            loops->sin(x.data(), count, out.data());
            EXPECT_EQ(out[count], -7.0);
            loops->pow(x.data(), x.data(), count, out.data());
            EXPECT_EQ(out[count], -7.0);
            loops->tan(x.data(), count, out.data());
            EXPECT_EQ(out[count], -7.0);
        }
    }
}

}  // namespace
}  // namespace velmorak::elementary
