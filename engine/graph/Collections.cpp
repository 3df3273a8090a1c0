#include "Collections.h"

#include "Json.h"
#include "Say.h"

#include <dlfcn.h>
#include <algorithm>
#include <set>
#include <stdexcept>
#include <tuple>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

using Factory = void (*)(Registry&);

/// Takes in the kinds of one collection.
class Intake : public Registry {
public:
    Intake(fs::path sharedObject, std::string firstGroup)
        : object(std::move(sharedObject)), currentGroup(std::move(firstGroup)) {}

    void group(const std::string& name) override { currentGroup = name; }
    void add(std::unique_ptr<Kind> kind) override;

    std::vector<OfferedKind> takeKinds() { return std::move(kinds); }

private:
    fs::path object;
    std::string currentGroup;
    std::vector<OfferedKind> kinds;
};

void Intake::add(std::unique_ptr<Kind> kind) {
    if (!kind)
        throw std::invalid_argument("a kind that it adds is null");
    QzKind record;
    record.group = validUtf8(currentGroup);
    record.library = object.string();
    record.directory = object.parent_path().string() + '/';
    record.name = validUtf8(kind->name());
    record.summary = validUtf8(kind->summary());
    record.id = record.group + '/' + record.name;
    kinds.push_back({std::move(record), std::move(kind)});
}

/// @throws std::runtime_error with a reason.
void* symbolIn(void* library, const std::string& name) {
    void* const symbol = dlsym(library, name.c_str());
    if (symbol == nullptr)
        throw std::runtime_error("it does not offer " + name);
    return symbol;
}

/// The library stays loaded to the end of the program, also when it is refused: what it has started may still run.
std::vector<OfferedKind> kindsOf(const fs::path& object, const std::string& factory) {
    void* const library = dlopen(object.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(dlerror());
    const std::string madeWith = static_cast<const char*>(symbolIn(library, "velmorakSdkHeaders"));
    if (madeWith != VELMORAK_SDK_VERSION) {
        throw std::runtime_error("it is made with version " + madeWith +
                                 " of the kit, and this library with " VELMORAK_SDK_VERSION "; build it again");
    }
    const auto call = reinterpret_cast<Factory>(symbolIn(library, factory));
    Intake intake(object, object.stem().string());
    call(intake);
    return intake.takeKinds();
}

bool isWord(const std::string& name) {
    return !name.empty() && name.find_first_of(" \t\r\n") == std::string::npos;
}

/// Shared objects `<folder>/<Name>/<Name>.so`, by name.
std::vector<fs::path> objectsIn(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const fs::path object = at->path() / (at->path().filename().string() + ".so");
        std::error_code missing;
        if (fs::is_regular_file(object, missing))
            found.push_back(fs::absolute(object));
    }
    std::ranges::sort(found);
    return found;
}

class Loader {
public:
    explicit Loader(std::string factoryName) : factory(std::move(factoryName)) {}

    void load(const fs::path& object);
    std::vector<OfferedKind> takeSorted();

private:
    void take(OfferedKind offered);

    std::string factory;
    std::set<fs::path> loaded;
    std::set<std::string> names;
    std::vector<OfferedKind> kinds;
};

void Loader::load(const fs::path& object) {
    if (!loaded.insert(fs::weakly_canonical(object)).second)
        return;
    std::vector<OfferedKind> offered;
    try {
        offered = kindsOf(object, factory);
    } catch (const std::exception& error) {
        say("The collection " + object.string() + " is skipped: " + withoutFullStop(error.what()) + ".");
    } catch (...) {
        say("The collection " + object.string() + " is skipped: its " + factory + " throws what is no exception.");
    }
    for (OfferedKind& each : offered)
        take(std::move(each));
}

void Loader::take(OfferedKind offered) {
    const std::string& name = offered.record.name;
    if (!isWord(name))
        say("A kind of the collection " + offered.record.library + " is skipped: its name " + inQuotes(name) +
            " is not one word.");
    else if (!names.insert(name).second)
        say("The kind " + name + " of the collection " + offered.record.library +
            " is skipped: another kind has that name.");
    else
        kinds.push_back(std::move(offered));
}

std::vector<OfferedKind> Loader::takeSorted() {
    std::ranges::sort(kinds, {}, [](const OfferedKind& each) { return std::tie(each.record.group, each.record.name); });
    return std::move(kinds);
}

}  // namespace

std::vector<OfferedKind> loadCollections(const std::vector<fs::path>& folders, const std::string& factory) {
    Loader loader(factory);
    for (const fs::path& folder : folders)
        for (const fs::path& object : objectsIn(folder))
            loader.load(object);
    return loader.takeSorted();
}

}  // namespace velmorak
