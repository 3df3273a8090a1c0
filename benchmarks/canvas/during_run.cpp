/// velmorak_bench_during_run: drag steps with their repaint on the editor's window, without a run and while one is
/// going on that uses all processors.
#include "InputRobot.h"
#include "Scene.h"

#include <QzManager.h>
#include <Row.h>
#include <gtkmm/main.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int boxes = 200;
constexpr int rounds = 5;

/// A chain of boxes, behind a start that would not end by itself.
fs::path document(const fs::path& folder) {
    QzManager manager("QzAnalysisFactory");
    const auto add = [&](const std::string& kind, const std::string& name) {
        const auto& kinds = QzManager::GetPlugins();
        const auto found =
            std::find_if(kinds.begin(), kinds.end(), [&](const auto& each) { return each.name == kind; });
        return manager.CreatePlugin(static_cast<std::uint16_t>(found - kinds.begin()), name);
    };
    QzBase* const start = add("RandomTable", "Make");
    manager.SetInputValue(0, start->InputIndex("rows"), "9007199254740992");
    QzBase* const fill = add("Histogram1D", "Fill");
    manager.SetInputValue(1, fill->InputIndex("expression"), "x");
    fill->Connect("table", start, "table");
    QzBase* last = nullptr;
    for (int i = 0; i < boxes; ++i) {
        QzBase* const box = add("Adder", "B" + std::to_string(i));
        box->SetPosition(static_cast<float>(i % 10 * 140), static_cast<float>(i / 10 * 55));
        box->Connect("a", last, "sum");
        last = box;
    }
    const fs::path file = folder / "drag.zedra";
    std::ofstream(file) << manager.DocumentText();
    return file;
}

std::vector<double> drag(InputRobot& window) {
    std::vector<double> ms;
    for (int i = 0; i < Scene::steps; ++i) {
        window.movePointer(Scene::stepX(i), Scene::stepY(i));
        ms.push_back((window.step() + window.repaint()).wall);
    }
    return ms;
}

void append(std::vector<double>& all, const std::vector<double>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

void print(const std::string& work, const std::vector<double>& with, const std::vector<double>& without,
           double (*figure)(std::vector<double>), double maxRatio) {
    velmorak::bench::printNotSlower(work, "the same without a run", figure(with), figure(without), maxRatio);
}

double slowOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() * 95 / 100];
}

}  // namespace

int main(int argc, char** argv) {
    gdk_set_allowed_backends("x11");
    Gtk::Main toolkit(argc, argv);
    std::string name = (fs::temp_directory_path() / "velmorak-drag-XXXXXX").string();
    const fs::path folder = mkdtemp(name.data());
    setenv("XDG_CACHE_HOME", folder.c_str(), 1);
    std::vector<double> with;
    std::vector<double> without;
    {
        QzManager manager("QzAnalysisFactory");
        InputRobot window;
        window.resize(Scene::viewWidth, Scene::viewHeight);
        window.setManager(manager);
        window.open(document(folder).string());
        window.showFirstPicture();
        window.press("B105");
        drag(window);
        for (int i = 0; i < rounds; ++i) {
            append(without, drag(window));
            window.setRun();
            append(with, drag(window));
            window.setRun();
        }
    }
    fs::remove_all(folder);
    print(
        "drag step and repaint during a run, median", with, without, [](auto values) { return medianOf(values); }, 1.5);
    print("drag step and repaint during a run, 95 %", with, without, slowOf, 3);
    return 0;
}
