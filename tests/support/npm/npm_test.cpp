#include "Npm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace velmorak {
namespace {

const std::filesystem::path scripts = SCRIPTS;

TEST(Npm, namesTheFirstPackageThatIsNotInstalled) {
    EXPECT_THAT(npm::missing({"no-such-package-of-velmorak"}), testing::HasSubstr("not installed"));
}

TEST(Npm, packagesAreFoundByScriptsOfTests) {
    const std::vector<std::string> packages{"jsroot", "hyparquet", "hyparquet-compressors", "apache-arrow"};
    if (const std::string reason = npm::missing(packages); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    for (const std::string& package : packages) {
        EXPECT_EQ(npm::run(scripts / "names.mjs", {package, "it's here"}), package + " has names, it's here\n");
    }
}

TEST(Npm, aScriptThatFailsIsAnError) {
    if (const std::string reason = npm::missing({}); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    EXPECT_THROW(npm::run(scripts / "no-such-script.mjs", {}), std::runtime_error);
}

}  // namespace
}  // namespace velmorak
