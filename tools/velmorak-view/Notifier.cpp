#include "Notifier.h"

#include <gio/gio.h>

#include <thread>
#include <utility>

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";

struct Freed {
    void operator()(gchar* text) const { g_free(text); }
};

}  // namespace

struct Notifier::Desktop {
    GMainContext* context = nullptr;
    GMainLoop* loop = nullptr;
    GDBusConnection* connection = nullptr;
    std::function<void()> clicked;
    std::thread thread;
};

namespace {

/// The service tells every listener of each click; our own notifications have the only action of this key.
// GLib determines the parameters. NOLINTNEXTLINE(readability-function-size)
void onAction(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*object*/,
              const gchar* /*interface*/, const gchar* /*signal*/, GVariant* parameters, gpointer clicked) {
    const gchar* action = nullptr;
    guint32 number = 0;
    g_variant_get(parameters, "(u&s)", &number, &action);
    if (std::string(action) == "velmorak-view") {
        (*static_cast<std::function<void()>*>(clicked))();
    }
}

}  // namespace

Notifier::Notifier(std::function<void()> clicked) {
    GDBusConnection* const connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (!connection) {
        return;
    }
    g_dbus_connection_set_exit_on_close(connection, FALSE);
    desktop = std::make_unique<Desktop>();
    desktop->connection = connection;
    desktop->clicked = std::move(clicked);
    desktop->context = g_main_context_new();
    desktop->loop = g_main_loop_new(desktop->context, FALSE);
    desktop->thread = std::thread([it = desktop.get()] {
        g_main_context_push_thread_default(it->context);
        g_dbus_connection_signal_subscribe(it->connection, service, service, "ActionInvoked", path, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, onAction, &it->clicked, nullptr);
        g_main_loop_run(it->loop);
        g_main_context_pop_thread_default(it->context);
    });
}

Notifier::~Notifier() {
    if (!desktop) {
        return;
    }
    // The loop may not run yet: it ends itself as soon as it does.
    GSource* const end = g_idle_source_new();
    g_source_set_callback(
        end,
        [](gpointer loop) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(loop));
            return G_SOURCE_REMOVE;
        },
        desktop->loop, nullptr);
    g_source_attach(end, desktop->context);
    g_source_unref(end);
    desktop->thread.join();
    g_main_loop_unref(desktop->loop);
    g_main_context_unref(desktop->context);
    g_object_unref(desktop->connection);
}

void Notifier::show(const std::string& title, const std::string& sentence) {
    if (!desktop) {
        return;
    }
    // The body is markup: what a plug-in says must not become a link.
    const std::unique_ptr<gchar, Freed> body(g_markup_escape_text(sentence.c_str(), -1));
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&actions, "s", "velmorak-view");
    g_variant_builder_add(&actions, "s", "Show");
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_dbus_connection_call(
        desktop->connection, service, path, service, "Notify",
        g_variant_new("(susssasa{sv}i)", "Velmorak", 0U, "velmorak", title.c_str(), body.get(), &actions, &hints, -1),
        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}
