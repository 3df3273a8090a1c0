#include <root/tree/BasketCache.h>

#include <velmorak/Failure.h>

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace velmorak::root {
namespace {

Basket basketOf(std::size_t bytes) {
    Basket basket;
    basket.content.resize(bytes);
    return basket;
}

TEST(BasketCache, loadsABasketOnce) {
    BasketCache cache;
    int loads = 0;
    const int key = 0;
    const auto load = [&] {
        ++loads;
        return basketOf(10);
    };
    const BasketCache::BasketPtr first = cache.get(&key, load);
    EXPECT_EQ(cache.get(&key, load), first);
    EXPECT_EQ(loads, 1);
}

TEST(BasketCache, forgetsWhatWasUsedLongestAgo) {
    constexpr std::size_t bytes = BasketCache::maxBytes / 8;
    BasketCache cache;
    std::vector<int> keys(20);
    int loads = 0;
    const auto get = [&](std::size_t key) {
        return cache.get(&keys[key], [&] {
            ++loads;
            return basketOf(bytes);
        });
    };
    for (std::size_t i = 0; i < keys.size(); ++i) {
        get(i);
        get(0);
        EXPECT_LE(cache.bytes(), BasketCache::maxBytes);
    }
    EXPECT_EQ(loads, 20) << "the first is used all the time";
    get(19);
    EXPECT_EQ(loads, 20);
    get(1);
    EXPECT_EQ(loads, 21);
}

TEST(BasketCache, holdsABasketThatIsLargerThanItsLimitWhileItIsUsed) {
    BasketCache cache;
    const std::array<int, 2> keys{};
    const BasketCache::BasketPtr large = cache.get(&keys[0], [] { return basketOf(2 * BasketCache::maxBytes); });
    cache.get(&keys[1], [] { return basketOf(1); });
    EXPECT_EQ(large->content.size(), 2 * BasketCache::maxBytes);
    EXPECT_LT(cache.bytes(), BasketCache::maxBytes);
}

TEST(BasketCache, forgetsABasketWhoseEntriesHaveAllBeenUsed) {
    BasketCache cache;
    const std::array<int, 3> keys{};
    int loads = 0;
    const auto get = [&](std::size_t key, std::uint64_t used) {
        return cache.get(&keys[key],
                         [&] {
                             ++loads;
                             return basketOf(1000);
                         },
                         {.entries = 10, .used = used});
    };
    get(0, 10);
    EXPECT_EQ(cache.bytes(), 0U) << "nobody else needs it";
    get(1, 4);
    get(2, 1);
    EXPECT_EQ(loads, 3);
    const std::size_t ofTwo = cache.bytes();
    EXPECT_GT(ofTwo, 2000U);
    get(1, 6);
    EXPECT_EQ(loads, 3);
    EXPECT_EQ(cache.bytes(), ofTwo / 2);
    get(1, 4);
    EXPECT_EQ(loads, 4) << "it is read again";
    EXPECT_EQ(cache.bytes(), ofTwo);
}

TEST(BasketCache, failsForAllThatAskForADamagedBasket) {
    BasketCache cache;
    const int key = 0;
    const auto fail = []() -> Basket { throw Failure("damaged"); };
    EXPECT_THROW(cache.get(&key, fail), Failure);
    EXPECT_THROW(cache.get(&key, [] { return basketOf(1); }), Failure);
}

}  // namespace
}  // namespace velmorak::root
