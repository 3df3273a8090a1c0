#include "Xvfb.h"

#include <gmock/gmock.h>
#include <gtkmm/main.h>

#include <cstdlib>
#include <optional>

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    std::optional<Xvfb> server;
    if (!std::getenv("DISPLAY")) {
        server.emplace();
    }
    // The toolkit's complaints end a test; nothing of the user's desktop comes in.
    setenv("G_DEBUG", "fatal-criticals", 1);
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("NO_AT_BRIDGE", "1", 1);
    gdk_set_allowed_backends("x11");
    Gtk::Main kit(argc, argv, true);
    return RUN_ALL_TESTS();
}
