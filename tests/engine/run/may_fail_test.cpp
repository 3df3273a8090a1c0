#include "RunFixture.h"

namespace velmorak::test {
namespace {

InputSpec failingInput(const std::string& name) {
    InputSpec input = wireInput(name, ValueType::Any);
    input.mayFail = true;
    return input;
}

/// "gather" takes "one" and "two", which may fail, and says what came.
class InputsThatMayFail : public RunTest {
protected:
    InputsThatMayFail() {
        add(begin, "begin");
        add(pass, "one");
        add(last, "two");
        add(gather, "gather");
        wire("begin", "number", "one", "value");
        wire("begin", "number", "two", "value");
        wire("one", "number", "gather", "one");
        wire("two", "number", "gather", "two");
        set("two", "fails", "0");
    }

    static std::string seen(const Arguments& arguments, const std::string& input) {
        const auto* number = std::get_if<double>(&arguments.value(input));
        return input + "=" + (number ? textOf(*number) : "nothing") + " (" + arguments.whyMissing(input) + ")";
    }

    PassKind begin;
    PassKind pass;
    /// Fails after it has left the number 7, unless "fails" is 0.
    FreeFunction last{"Last",
                      {{numberInput("value"), numberInput("fails")}, {output("number", ValueType::Number)}},
                      [](const Arguments& arguments, Results& results, RunContext&) {
                          if (arguments.number("fails") != 0.0) {
                              results.leave("number", 7.0);
                              throw Failure("it did not converge");
                          }
                          results.set("number", arguments.number("value"));
                      }};
    FreeFunction gather{"Gather",
                        {{failingInput("one"), failingInput("two")}, {output("seen", ValueType::Text)}},
                        [](const Arguments& arguments, Results& results, RunContext&) {
                            results.set("seen", seen(arguments, "one") + ", " + seen(arguments, "two"));
                        }};
};

TEST_F(InputsThatMayFail, areLikeOthersWhileNothingFails) {
    run();
    EXPECT_EQ(text("gather"), "one=0 (), two=0 ()");
}

TEST_F(InputsThatMayFail, letThePlugInRunWithTheOthersAndSayWhy) {
    inputOf("one", "value").wire.reset();
    set("one", "value", "13");
    run();
    EXPECT_EQ(status("one"), NodeStatus::Failed);
    EXPECT_EQ(text("gather"), "one=nothing (input \"value\": 13 brings bad luck), two=0 ()") << sentence("gather");
}

TEST_F(InputsThatMayFail, bringWhatAFailedPlugInHasLeft) {
    set("two", "fails", "1");
    run();
    EXPECT_EQ(status("two"), NodeStatus::Failed);
    EXPECT_EQ(text("gather"), "one=0 (), two=7 (it did not converge)");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(of("two").outputs.at(0))) << "partial values are no result";
}

TEST_F(InputsThatMayFail, areSkippedLikeOthersWhenAllFail) {
    set("begin", "value", "13");
    run();
    EXPECT_EQ(sentence("gather"), "not run because of \"begin\"");
}

TEST_F(InputsThatMayFail, giveAResultThatIsNotReused) {
    set("two", "fails", "1");
    run();
    run();
    EXPECT_EQ(status("gather"), NodeStatus::Done);
    EXPECT_EQ(status("one"), NodeStatus::Reused);
    EXPECT_EQ(gather.evaluated, 2);
}

}  // namespace
}  // namespace velmorak::test
