#include "GraphFixture.h"

#include "graph/ManagerExtensions.h"

#include <clocale>
#include <cstdlib>
#include <locale>

namespace velmorak::test {
namespace {

/// Everything of a program that has made the user's locale, one with a decimal comma, its own.
class CommaLocale : public Graph {
protected:
    CommaLocale() {
        setenv("LOCPATH", TEST_LOCALES, 1);
        before = setlocale(LC_ALL, nullptr);
        made = setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
        std::locale::global(std::locale("de_DE.UTF-8"));
    }
    ~CommaLocale() override {
        std::locale::global(std::locale::classic());
        setlocale(LC_ALL, before.c_str());
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    std::string before;
    bool made = false;
};

TEST_F(CommaLocale, isInForce) {
    ASSERT_TRUE(made);
    EXPECT_STREQ(localeconv()->decimal_point, ",");
}

TEST_F(CommaLocale, documentsAreTheSame) {
    manager.ReadDocument(TEST_DATA "/pipeline.zedra");
    EXPECT_EQ(lastReadError(manager), "");
    EXPECT_EQ(manager.DocumentText(), contentOf(TEST_DATA "/pipeline.zedra"));
    float x = 0.0F;
    float y = 0.0F;
    node("First").GetPosition(x, y);
    EXPECT_EQ(y, 0.1F);
}

TEST_F(CommaLocale, numbersInValuesHaveAPoint) {
    add("Pair", "P");
    setValue("P", "a", "1.5");
    EXPECT_EQ(input("P", "a").value, "1.5");
    const Errors errors;
    setValue("P", "a", "1,5");
    EXPECT_EQ(input("P", "a").value, "1.5");
    setValue("P", "b", "1e6");
    EXPECT_THAT(errors.text(), testing::HasSubstr("is above 10,"));
}

TEST_F(CommaLocale, namesGetPlainNumbers) {
    for (int i = 0; i < 1002; ++i) {
        add("Drain", "D");
    }
    EXPECT_EQ(manager.plugins.back()->name, "D1001");
}

}  // namespace
}  // namespace velmorak::test
