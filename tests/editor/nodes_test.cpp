#include "EditorTest.h"

using ::testing::ElementsAre;

TEST_F(EditorTest, theSameKindThreeTimesGetsNumbers) {
    add("Adder");
    add("Adder");
    add("Adder");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder", "Adder1", "Adder2"));
}

TEST_F(EditorTest, openDrawsEveryBoundInput) {
    window->open("/somewhere/chain.zedra");
    EXPECT_EQ(pathsOnCanvas(), 3);
    EXPECT_EQ(pathInto("Sum", "a"), "M 208 480 C 258 480 252 560 302 560");
}
