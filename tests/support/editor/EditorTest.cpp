#include "EditorTest.h"

#include <goocanvas.h>
#include <gtkmm/messagedialog.h>

#include <chrono>

namespace {

constexpr const char* arithmetic = R"(
kind Number Arithmetic /kinds/arithmetic/
  in value 0 "the number"
  out value "the same number"
  about "A constant."
kind Adder Arithmetic /kinds/arithmetic/
  in a 1 "first number"
  in b 2 "second number"
  out sum "a + b"
  about "Adds two numbers."
kind Splitter Data /kinds/data/
  in x 0 "what is split"
  out low "below the limit"
  out high "above the limit"
  extent 200
kind Note Data /kinds/data/
  about "Has no ports."
example sum.zedra Basics /examples/basics
document chain.zedra
  plugin Number First 50 700
  plugin Adder Sum 300 600
  plugin Splitter Parts 600 500
  bind Sum a First value
  bind Sum b First value
  bind Parts x Sum sum
document other.zedra
  plugin Number Alone 10 20
document collapsed.zedra
  plugin Number First 50 700
  plugin Adder Sum 300 600 collapsed
  bind Sum b First value
run returns
)";

}  // namespace

bool pumpUntil(const std::function<bool()>& condition, const char* file, int line) {
    using std::chrono::steady_clock;
    const auto deadline = steady_clock::now() + std::chrono::seconds(60);
    sigc::connection tick = Glib::signal_timeout().connect([] { return true; }, 5);
    while (!condition() && steady_clock::now() < deadline) {
        Glib::MainContext::get_default()->iteration(true);
    }
    tick.disconnect();
    const bool holds = condition();
    if (!holds) {
        ADD_FAILURE_AT(file, line) << "this condition is still false after 60 s";
    }
    return holds;
}

std::string pathText(const Glib::RefPtr<Goocanvas::Path>& path) {
    const GooCanvasPathData* data = path->gobj()->path_data;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    for (guint i = 0; i < data->path_commands->len; ++i) {
        const auto& command = g_array_index(data->path_commands, GooCanvasPathCommand, i);
        if (i == 0) {
            text << "M " << command.simple.x << ' ' << command.simple.y;
        } else {
            text << " C " << command.curve.x1 << ' ' << command.curve.y1 << ' ' << command.curve.x2 << ' '
                 << command.curve.y2 << ' ' << command.curve.x << ' ' << command.curve.y;
        }
    }
    return text.str();
}

void pump() {
    while (Glib::MainContext::get_default()->iteration(false)) {
    }
}

std::string EditorTest::script() {
    return arithmetic;
}

EditorTest::EditorTest() {
    restart(script());
}

EditorTest::~EditorTest() {
    waiting.disconnect();
    recording::letRunEnd();
    closeWindow();
}

void EditorTest::restart(const std::string& text) {
    closeWindow();
    recording::setScript(text);
    manager.emplace("QzAnalysisFactory");
    window = std::make_unique<OpenWindow>();
    window->setManager(*manager);
    recording::forgetCalls();
}

void EditorTest::closeWindow() {
    window.reset();
    manager.reset();
}

plugin& EditorTest::add(const std::string& kind) {
    window->addPlugin(nullptr, kind);
    return node(manager->plugins.back()->name);
}

plugin& EditorTest::node(const std::string& name) {
    return *window->pluginMap.at(name);
}

QzBase& EditorTest::object(const std::string& name) {
    return *node(name).GetPlugin();
}

std::string EditorTest::pathInto(const std::string& name, const std::string& input) {
    const auto entry = window->pathMap.find({name, input});
    if (entry == window->pathMap.end()) {
        return "";
    }
    return pathText(entry->second);
}

std::vector<std::string> EditorTest::boxesOnCanvas() {
    std::vector<std::string> names;
    const auto root = window->canvas.get_root_item();
    for (int i = 0; i < root->get_n_children(); ++i) {
        if (auto box = Glib::RefPtr<Goocanvas::Rect>::cast_dynamic(root->get_child(i))) {
            names.push_back(propertyOf<Glib::ustring>(box, "title"));
        }
    }
    return names;
}

int EditorTest::pathsOnCanvas() {
    int count = 0;
    const auto root = window->canvas.get_root_item();
    for (int i = 0; i < root->get_n_children(); ++i) {
        count += Glib::RefPtr<Goocanvas::Path>::cast_dynamic(root->get_child(i)) ? 1 : 0;
    }
    return count;
}

void EditorTest::answerNext(int response, std::function<void(Gtk::Dialog&)> look) {
    waiting = Glib::signal_idle().connect([this, response, look] {
        for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
            auto* dialog = dynamic_cast<Gtk::Dialog*>(shown);
            if (dialog && dialog->is_visible()) {
                const auto* question = dynamic_cast<Gtk::MessageDialog*>(dialog);
                lastQuestion = question ? question->property_text().get_value() : dialog->get_title();
                if (look) {
                    look(*dialog);
                }
                dialog->response(response);
                return false;
            }
        }
        return true;
    });
}

void EditorTest::activate(const std::string& action) {
    window->actionGroup->get_action(action)->activate();
}

void EditorTest::select(const std::string& name) {
    GdkEventButton event{};
    event.button = 2;  // only selects: no drag, no menu
    window->click(node(name).box, &event);
}
