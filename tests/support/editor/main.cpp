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
    // The toolkit's warnings end a test, and the user's desktop settings have no effect.
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_FATAL_MASK));
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("NO_AT_BRIDGE", "1", 1);
    gdk_set_allowed_backends("x11");
    Gtk::Main kit(argc, argv, true);
    return RUN_ALL_TESTS();
}
