/// The same scene and the same drag on Debian's Ganv canvas, for comparison. Ganv is another toolkit's generation and
/// under the GPL: a program of its own, built for the benchmark only, linked by nothing and not installed.
///
/// ganv_canvas NODES: prints, one "name value" a line, the median of a drag step with its repaint in ms, the time until
/// the first full picture in ms, and the peak of memory in MB.
#include "../canvas/Measure.h"
#include "../canvas/Scene.h"

#include <gdkmm/window.h>
#include <gtkmm/main.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/window.h>
#include <ganv/Canvas.hpp>
#include <ganv/Edge.hpp>
#include <ganv/Module.hpp>
#include <ganv/Port.hpp>

#include <gdk/gdkx.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

struct Node {
    std::unique_ptr<Ganv::Module> module;
    std::vector<std::unique_ptr<Ganv::Port>> inputs;
    std::vector<std::unique_ptr<Ganv::Port>> outputs;
};

/// Handles all events and repaints, down to the server.
void paint(Gtk::Window& window) {
    while (Gtk::Main::events_pending()) {
        Gtk::Main::iteration(false);
    }
    if (window.get_window()) {
        window.get_window()->process_updates(true);
    }
    gdk_flush();
}

class Graph {
public:
    Graph(Ganv::Canvas& canvas, const Scene& scene) : nodes(scene.boxes.size()) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const Scene::Box& box = scene.boxes[i];
            Node& node = nodes[i];
            node.module = std::make_unique<Ganv::Module>(canvas, box.name, box.x, box.y);
            for (std::size_t port = 0; port < Scene::ports; ++port) {
                node.inputs.push_back(makePort(*node.module, "in", port, true));
                node.outputs.push_back(makePort(*node.module, "out", port, false));
            }
        }
        for (const Scene::Wire& wire : scene.wires) {
            edges.push_back(std::make_unique<Ganv::Edge>(canvas, nodes[wire.from].outputs[wire.output].get(),
                                                         nodes[wire.to].inputs[wire.input].get(), 0xB22222FF));
        }
    }

    void move(std::size_t node, double dx, double dy) { nodes[node].module->move(dx, dy); }

private:
    static std::unique_ptr<Ganv::Port> makePort(Ganv::Module& module, const char* name, std::size_t number,
                                                bool isInput) {
        return std::make_unique<Ganv::Port>(module, name + std::to_string(number), isInput, 0x4A6A8AFF);
    }

    std::vector<Node> nodes;
    std::vector<std::unique_ptr<Ganv::Edge>> edges;
};

}  // namespace

int main(int argc, char** argv) {
    Gtk::Main toolkit(argc, argv);
    const Scene scene(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 200);
    const Clock opening;

    Gtk::Window window;
    window.set_default_size(Scene::viewWidth, Scene::viewHeight);
    Ganv::Canvas canvas(Scene::width, Scene::height);
    Gtk::ScrolledWindow scroller;
    scroller.add(canvas.widget());
    window.add(scroller);
    auto graph = std::make_unique<Graph>(canvas, scene);
    bool isShown = false;
    canvas.widget().signal_expose_event().connect(
        [&isShown](GdkEventExpose*) {
            isShown = true;
            return false;
        },
        true);
    window.show_all();
    while (!isShown) {
        Gtk::Main::iteration(true);
    }
    paint(window);
    report("open", opening.spent());

    // Ganv redraws only what touches the node. The second figure has it redraw all that is in view.
    report("drag", medianOf(Scene::steps, [&](int step) {
               const Clock clock;
               graph->move(scene.dragged(), Scene::stepX(step), Scene::stepY(step));
               paint(window);
               return clock.spent();
           }));
    report("drag-all", medianOf(Scene::steps, [&](int step) {
               const Clock clock;
               graph->move(scene.dragged(), Scene::stepX(step), Scene::stepY(step));
               canvas.widget().queue_draw();
               paint(window);
               return clock.spent();
           }));
    report("peak", peakMegabytes());
    // The canvas frees its items itself when it goes; the process ends here without unravelling them one by one.
    std::quick_exit(0);
}
