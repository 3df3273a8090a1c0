#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "expression/Kernels.h"

namespace velmorak::expression {
namespace {

std::string documentation() {
    std::ifstream file(TEST_DOCUMENTATION "/expressions.md");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The table of functions as docs/expressions.md shows it.
std::string tableOfFunctions() {
    std::string text = "| | |\n|---|---|\n";
    std::string_view subject;
    for (const Function& function : allFunctions()) {
        if (function.documentation.subject.empty()) {
            continue;
        }
        if (function.documentation.subject != subject) {
            text += subject.empty() ? "| " : " |\n| ";
            subject = function.documentation.subject;
            text += std::string(subject) + " |";
        }
        text += " " + std::string(function.documentation.text);
    }
    return text + " |\n";
}

TEST(ExpressionsPage, hasTheTableOfFunctions) {
    EXPECT_NE(documentation().find("## Functions\n\n" + tableOfFunctions()), std::string::npos) << tableOfFunctions();
}

TEST(ExpressionsPage, hasTheConstants) {
    std::string all;
    for (const Constant& constant : allConstants()) {
        all += "| `" + std::string(constant.name) + "` | " + std::string(constant.meaning) + " |\n";
    }
    EXPECT_NE(documentation().find("| constant | |\n|---|---|\n" + all), std::string::npos) << all;
}

/// A table of functions with one in each row.
std::string tableOf(std::span<const NamedForm> forms, const std::string& title) {
    std::string text = "| function | " + title + " |\n|---|---|\n";
    for (const NamedForm& form : forms) {
        text += "| `" + std::string(form.usage) + "` | " + std::string(form.result) + " |\n";
    }
    return text;
}

TEST(ExpressionsPage, hasTheTablesOfTheFunctionsOfListsAndMomenta) {
    EXPECT_NE(documentation().find(tableOf(listForms(), "result")), std::string::npos)
        << tableOf(listForms(), "result");
    EXPECT_NE(documentation().find(tableOf(kinematicForms(), "result")), std::string::npos)
        << tableOf(kinematicForms(), "result");
}

TEST(ExpressionsPage, namesTheFunctionsOfLists) {
    for (const std::string& name : functionNames()) {
        EXPECT_NE(documentation().find("`" + name), std::string::npos) << name;
    }
}

}  // namespace
}  // namespace velmorak::expression
