#include "KindHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace velmorak;
using test::KindHarness;
using testing::HasSubstr;

bool takesAFileAlone(const Kind& kind) {
    const std::vector<InputSpec> inputs = kind.ports({}).inputs;
    const auto isFile = [](const InputSpec& input) { return input.name == "file"; };
    const auto isWire = [](const InputSpec& input) {
        return input.type != ValueType::Number && input.type != ValueType::Text && input.type != ValueType::Choice;
    };
    return std::ranges::any_of(inputs, isFile) && std::ranges::none_of(inputs, isWire);
}

/// Every kind that reads a file.
std::vector<std::string> readers() {
    std::vector<std::string> names;
    for (const auto& group : test::shippedGroups()) {
        for (const auto& kind : group.kinds) {
            if (takesAFileAlone(*kind)) {
                names.push_back(kind->name());
            }
        }
    }
    return names;
}

std::string failureOf(const std::string& reader, const std::filesystem::path& file) {
    KindHarness bench(reader);
    bench.expectWarnings();
    return bench.set("file", file.string()).failure();
}

TEST(SpecialFiles, areRefusedByNameByEveryReader) {
    ASSERT_GE(readers().size(), 20U);
    const TemporaryFolder folder("special");
    const std::filesystem::path pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& reader : readers()) {
        // A reader that opens it finds an empty file; one that opens the pipe would never come back.
        const std::string failure = failureOf(reader, "/dev/null");
        EXPECT_THAT(failure, HasSubstr("/dev/null is not a regular file (a character device)")) << reader;
        if (failure.find("regular") != std::string::npos) {
            EXPECT_THAT(failureOf(reader, pipe), HasSubstr("pipe is not a regular file (a FIFO)")) << reader;
        }
    }
}

}  // namespace
