#include "store/CacheConfig.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

namespace velmorak::test {
namespace {

/// Restores the variables that it sets.
class CacheConfigTest : public testing::Test {
protected:
    ~CacheConfigTest() override {
        for (const auto& [name, value] : former) {
            if (value) {
                setenv(name.c_str(), value->c_str(), 1);
            } else {
                unsetenv(name.c_str());
            }
        }
    }
    void set(const std::string& name, const char* value) {
        const char* const old = std::getenv(name.c_str());
        former.emplace(name, old ? std::optional<std::string>(old) : std::nullopt);
        setenv(name.c_str(), value, 1);
    }

    std::map<std::string, std::optional<std::string>> former;
};

TEST_F(CacheConfigTest, isBelowTheCacheFolderOfTheUser) {
    set("VELMORAK_CACHE_LIMIT", "");
    set("XDG_CACHE_HOME", "/somewhere");
    EXPECT_EQ(cacheConfigFromEnvironment().folder, "/somewhere/velmorak");
    EXPECT_EQ(cacheConfigFromEnvironment().limitBytes, std::uint64_t{2048} << 20);
    set("XDG_CACHE_HOME", "relative");
    set("HOME", "/home/me");
    EXPECT_EQ(cacheConfigFromEnvironment().folder, "/home/me/.cache/velmorak");
    set("HOME", "");
    EXPECT_TRUE(cacheConfigFromEnvironment().folder.empty());
}

TEST_F(CacheConfigTest, hasTheLimitThatTheEnvironmentSets) {
    set("XDG_CACHE_HOME", "/somewhere");
    set("VELMORAK_CACHE_LIMIT", "3");
    EXPECT_EQ(cacheConfigFromEnvironment().limitBytes, 3U << 20);
    EXPECT_TRUE(cacheConfigFromEnvironment().warning.empty());
    set("VELMORAK_CACHE_LIMIT", "0");
    EXPECT_TRUE(cacheConfigFromEnvironment().folder.empty());
}

TEST_F(CacheConfigTest, warnsOfALimitThatIsNotANumber) {
    for (const char* const text : {"much", "-1", "1.5", "3 MiB", "99999999999999999999"}) {
        set("VELMORAK_CACHE_LIMIT", text);
        EXPECT_EQ(cacheConfigFromEnvironment().limitBytes, std::uint64_t{2048} << 20) << text;
        EXPECT_EQ(cacheConfigFromEnvironment().warning,
                  std::string("VELMORAK_CACHE_LIMIT=") + text + " is not a whole number of MiB; using 2048");
    }
}

TEST_F(CacheConfigTest, hasTheReadingTimeThatTheEnvironmentSets) {
    EXPECT_EQ(cacheConfigFromEnvironment().minReadingTime.count(), 10);
    set("VELMORAK_CACHE_FILES_FROM", "0");
    EXPECT_EQ(cacheConfigFromEnvironment().minReadingTime.count(), 0);
    set("VELMORAK_CACHE_FILES_FROM", "soon");
    set("VELMORAK_CACHE_LIMIT", "much");
    EXPECT_EQ(cacheConfigFromEnvironment().minReadingTime.count(), 10);
    EXPECT_EQ(cacheConfigFromEnvironment().warning,
              "VELMORAK_CACHE_LIMIT=much is not a whole number of MiB; using 2048; "
              "VELMORAK_CACHE_FILES_FROM=soon is not a whole number of ms; using 10");
}

}  // namespace
}  // namespace velmorak::test
