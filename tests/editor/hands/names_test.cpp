#include "HandsTest.h"
#include "ShownPipeline.h"
#include "Widgets.h"
#include "varWindow.h"

#include <QzManager.h>
#include <gtkmm/entry.h>

#include <cstdio>
#include <fstream>
#include <iterator>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// Two names with different bytes that every language's collation treats as equal.
struct TwinNames {
    std::string one, other;
};

std::vector<TwinNames> twinNames() {
    const std::vector<TwinNames> spellings = {
        {"2", "\u00B2"},        // superscript two
        {"3", "\u00B3"},        // superscript three
        {"\u03BC", "\u00B5"},   // Greek mu, micro sign
        {"\u00E9", "e\u0301"},  // e acute, composed and decomposed
        {"a b", "a\u00A0b"},    // blank, no-break space
        {"\u00C5", "\u212B"},   // A ring, angstrom sign
        {"\u03A9", "\u2126"},   // Omega, ohm sign
        {"fi", "\uFB01"},       // ligature
        {"n", "\uFF4E"},        // full width
        {"IV", "\u2163"},       // Roman numeral
    };
    const std::vector<TwinNames> stems = {{"chi", ""},   {"x", ""},      {"m", "GeV"},   {"", "eta"},  {"pt", "miss"},
                                          {"input", ""}, {"", "input"},  {"E", "T"},     {"cos", "*"}, {"dN", "/dx"},
                                          {"Fit", "1"},  {"Zulu", "Z"},  {"-", "-"},     {"()", ""},   {"q.", ".r"},
                                          {"0", "9"},    {"\u00DF", ""}, {"", "\u0416"}, {"~", "!"},   {"A", "a"}};
    std::vector<TwinNames> all;
    for (const TwinNames& stem : stems) {
        for (const TwinNames& spelling : spellings) {
            all.push_back({stem.one + spelling.one + stem.other, stem.one + spelling.other + stem.other});
        }
    }
    return all;
}

std::string inQuotes(const std::string& word) {
    return '"' + word + '"';
}

/// Plug-ins, inputs and outputs all have two such names.
class TwinNamesByHand : public HandsTest, public testing::WithParamInterface<int> {
protected:
    TwinNamesByHand() { std::remove(file.c_str()); }
    ~TwinNamesByHand() override { std::remove(file.c_str()); }

    void openPipelineOf(const TwinNames& names) {
        one = names.one;
        other = names.other;
        const std::string first = inQuotes(one);
        const std::string second = inQuotes(other);
        restart("kind Kind Group\n in " + first + " 1\n in " + second + " 2\n out " + first + "\n out " + second +
                "\ndocument twins.zedra\n plugin Kind " + first + " 50 400\n plugin Kind " + second +
                " 300 400\n plugin Kind Third 550 400\n bind Third " + first + ' ' + first + ' ' + first +
                "\n bind Third " + second + ' ' + second + ' ' + second + "\nrun returns\n");
        showWindow();
        window->open("twins.zedra");
        scrollTo({0, 560});
        recording::forgetCalls();
    }

    void rename(const std::string& oldName, const std::string& newName) {
        clickOn(headOf(oldName));
        window->on_var();
        widgetsIn<Gtk::Entry>(*window->lastDialog).front()->set_text(newName);
        buttonIn(*window->lastDialog, "OK").clicked();
    }

    std::string saved() {
        manager->SetFileName(file);
        activate("Save");
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// The state of the plug-in: its position, then its inputs with their sources.
    std::string contents(const std::string& name) { return contentsOf(*manager)[name]; }
    std::string at(const std::string& place, const std::string& firstSource = "",
                   const std::string& secondSource = "") {
        return place + ' ' + one + '=' + firstSource + ' ' + other + '=' + secondSource;
    }
    void expectAsOne() { EXPECT_EQ(differencesBetween(*window, *manager), ""); }

    void opens();
    void drags();
    void wires();
    void renames();
    void pullsOff();
    void deletes();

    std::string one, other;
    const std::string file = testing::TempDir() + "twins-" + std::to_string(GetParam()) + ".zedra";
};

void TwinNamesByHand::opens() {
    EXPECT_EQ(boxesOnCanvas().size(), 3);
    EXPECT_EQ(contents("Third"), at("550 730", one + '.' + one, other + '.' + other));
    expectAsOne();
}

void TwinNamesByHand::drags() {
    for (const std::string& name : {one, other, std::string("Third")}) {
        const CanvasPoint head = headOf(name);
        drag(head, {head.x + 10, head.y + 20});
    }
    EXPECT_THAT(recording::callsOf("Connect"), IsEmpty());
    EXPECT_EQ(contents(one), at("60 750"));
    EXPECT_EQ(contents(other), at("310 750"));
    EXPECT_EQ(contents("Third"), at("560 750", one + '.' + one, other + '.' + other));
    expectAsOne();
}

void TwinNamesByHand::wires() {
    drag(outputOf(one, other), inputOf(other, one));
    drag(outputOf(one, one), inputOf(other, other));
    EXPECT_EQ(contents(other), at("310 750", one + '.' + other, one + '.' + one));
    expectAsOne();
}

// The first plug-in takes over a name that looks like the second's.
void TwinNamesByHand::renames() {
    rename(one, one + one);
    rename(other, other + other);
    rename(other + other, one);
    rename(one + one, other);
    EXPECT_EQ(contents(other), at("60 750"));
    EXPECT_EQ(contents(one), at("310 750", other + '.' + other, other + '.' + one));
    EXPECT_EQ(contents("Third"), at("560 750", other + '.' + one, one + '.' + other));
    expectAsOne();
}

void TwinNamesByHand::pullsOff() {
    recording::forgetCalls();
    drag(inputOf("Third", other), nowhere());
    EXPECT_THAT(recording::edits(), ElementsAre(one + ".Disconnect(" + other + ", Third, " + other + ")"));
    EXPECT_EQ(contents("Third"), at("560 750", other + '.' + one));
    drag(inputOf(one, one), inputOf("Third", other));
    EXPECT_EQ(contents(one), at("310 750", "", other + '.' + one));
    EXPECT_EQ(contents("Third"), at("560 750", other + '.' + one, other + '.' + other));
    expectAsOne();
}

void TwinNamesByHand::deletes() {
    clickOn(headOf(one));
    activate("Del");
    EXPECT_THAT(boxesOnCanvas(), testing::UnorderedElementsAre(other, "Third"));
    EXPECT_EQ(saved(), other + " at 60 380, " + one + " = 1, " + other + " = 2\nThird at 560 380, " + one + " = " +
                           other + ", " + other + " = " + other + "\n");
    expectAsOne();
}

TEST_P(TwinNamesByHand, stayApartInEveryGesture) {
    const std::vector<TwinNames> names = twinNames();
    for (std::size_t i = static_cast<std::size_t>(GetParam()); i < names.size(); i += 10) {
        SCOPED_TRACE(names[i].one + " and " + names[i].other);
        ASSERT_NE(names[i].one, names[i].other);
        ASSERT_EQ(Glib::ustring(names[i].one).compare(names[i].other), 0);
        openPipelineOf(names[i]);
        opens();
        drags();
        wires();
        renames();
        pullsOff();
        deletes();
        ASSERT_FALSE(HasFailure());
    }
}

INSTANTIATE_TEST_SUITE_P(Spellings, TwinNamesByHand, testing::Range(0, 10));

}  // namespace
