#include "HandsTest.h"

#include <QzManager.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Wiring = HandsTest;

TEST_F(Wiring, aDragFromAnOutputToAnInputConnects) {
    addAt("Number", 50, 700);
    addAt("Adder", 300, 700);
    drag(outputOf("Number", "value"), inputOf("Adder", "b"));
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.Connect(b, Number, value)"));
    EXPECT_EQ(window->connectionMap.at({"Adder", "b"}), (PortRef{"Number", "value"}));
    EXPECT_TRUE(window->modified);
    expectNothingLeftBehind();
}
