/// velmorak_bench_canvas ours|lowered NODES: the editor's own figures, one "name value" a line: a drag step (the
/// handler alone, and with its repaint) in ms, the time from nothing to the first full picture of a document in ms, and
/// the peak of memory in MB. `lowered` makes each path as ours does not: on top, then lowered to the bottom one by one.
#include "Measure.h"
#include "InputRobot.h"
#include "Scene.h"
#include "toolkit.h"

#include <QzManager.h>
#include <gtkmm/settings.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include <unistd.h>

namespace {

constexpr float canvasHeight = 1200;

/// Number of a kind that can be wired as the scene asks for.
std::uint16_t wiredKind(QzManager& manager) {
    for (std::size_t number = 0; number < QzManager::GetPlugins().size(); ++number) {
        const auto kind = static_cast<std::uint16_t>(number);
        QzBase* object = manager.CreatePlugin(kind, "Probe");
        const bool isWired = object->Inputs().size() >= Scene::ports && !object->Outputs().empty();
        manager.DeletePlugin(manager.IndexOf("Probe"));
        if (isWired) {
            return kind;
        }
    }
    throw std::runtime_error("no kind with two inputs and an output");
}

/// The scene as a document, written by the library itself.
std::filesystem::path documentOf(const Scene& scene) {
    QzManager manager("QzAnalysisFactory");
    const std::uint16_t kind = wiredKind(manager);
    for (const Scene::Box& box : scene.boxes) {
        QzBase* object = manager.CreatePlugin(kind, box.name);
        float width = 0;
        float height = 0;
        object->GetOuterExtent(width, height);
        object->SetPosition(static_cast<float>(box.x), canvasHeight - static_cast<float>(box.y) - height);
    }
    for (const Scene::Wire& wire : scene.wires) {
        QzBase* sender = manager.plugins[wire.from];
        QzBase* receiver = manager.plugins[wire.to];
        receiver->Connect(receiver->Inputs()[wire.input].name, sender,
                          sender->Outputs()[wire.output % sender->Outputs().size()].name);
    }
    const auto file =
        std::filesystem::temp_directory_path() / ("velmorak-bench-" + std::to_string(getpid()) + ".zedra");
    std::ofstream(file) << manager.DocumentText();
    return file;
}

void measure(const Scene& scene, bool isLowered) {
    const std::filesystem::path file = documentOf(scene);
    const Clock opening;
    QzManager manager("QzAnalysisFactory");
    manager.SetFontSize(9, 11);
    InputRobot window;
    window.resize(Scene::viewWidth, Scene::viewHeight);
    window.setManager(manager);
    window.open(file.string());
    window.showFirstPicture();
    report("open", opening.spent());
    std::filesystem::remove(file);

    window.press(scene.boxes[scene.dragged()].name);
    const auto step = [&](int number) {
        window.movePointer(Scene::stepX(number), Scene::stepY(number));
        return isLowered ? window.loweredStep() : window.step();
    };
    report("handler", medianOf(Scene::steps, [&](int number) { return step(number); }));
    report("drag", medianOf(Scene::steps, [&](int number) { return step(number) + window.repaint(); }));
    report("peak", peakMegabytes());
}

}  // namespace

int main(int argc, char** argv) {
    const auto toolkit = startToolkit(argc, argv);
    Gtk::Settings::get_default();  // Reads the theme, as the peer's toolkit does when it starts.
    if (argc != 3) {
        std::cerr << "usage: velmorak_bench_canvas ours|lowered NODES" << std::endl;
        return 2;
    }
    measure(Scene(std::strtoul(argv[2], nullptr, 10)), std::string_view(argv[1]) == "lowered");
    return 0;
}
