#include "graph/collections/Collections.h"

#include "graph/Log.h"
#include "graph/collections/KindCheck.h"
#include "graph/collections/LoadingNote.h"
#include "graph/collections/SharedObject.h"
#include "graph/document/Json.h"

#include "run/messages/NodeError.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <tuple>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

using Factory = void (*)(Registry&);

/// What one collection has registered.
struct Offered {
    std::vector<OfferedKind> kinds;
    std::vector<std::unique_ptr<FileFormat>> formats;
};

/// Receives the kinds of one collection; reports and skips those that cannot be offered.
class KindRegistry : public Registry {
public:
    KindRegistry(fs::path object, std::string currentGroup, const FileFormats& known);

    void group(const std::string& name) override { currentGroup = name; }
    void add(std::unique_ptr<Kind> kind) override;
    void addFormat(std::unique_ptr<FileFormat> format) override { newFormats.push_back(std::move(format)); }
    const FileFormats& formats() const override { return known; }

    Offered take() { return {std::move(kinds), std::move(newFormats)}; }

private:
    void refuse(const std::string& name, const std::string& reason) const;
    std::string whyRefused(const Kind& kind, const QzKind& record) const;

    fs::path object;
    std::string currentGroup;
    const FileFormats& known;
    std::vector<OfferedKind> kinds;
    std::vector<std::unique_ptr<FileFormat>> newFormats;
};

KindRegistry::KindRegistry(fs::path object, std::string currentGroup, const FileFormats& known)
    : object(std::move(object)), currentGroup(std::move(currentGroup)), known(known) {}

void KindRegistry::add(std::unique_ptr<Kind> kind) {
    if (!kind) {
        refuse("", "it is null");
        return;
    }
    QzKind record;
    std::string reason;
    const std::optional<NodeError> error = errorIn([&] {
        record.name = kind->name();
        record.summary = validUtf8(kind->summary());
        reason = whyRefused(*kind, record);
    });
    if (error) {
        reason = withoutFullStop(error->sentence);
    }
    if (!reason.empty()) {
        refuse(record.name, reason);
        return;
    }
    record.group = currentGroup;
    record.library = object.string();
    record.directory = object.parent_path().string() + '/';
    record.id = record.group + '/' + record.name;
    kinds.push_back({std::move(record), std::move(kind)});
}

std::string KindRegistry::whyRefused(const Kind& kind, const QzKind& record) const {
    if (const std::string reason = nameError(record.name); !reason.empty()) {
        return "its name " + quotedName(record.name) + ' ' + reason;
    }
    if (const std::string reason = groupNameError(currentGroup); !reason.empty()) {
        return "the name " + quotedName(currentGroup) + " of its group " + reason;
    }
    return portsError(kind.ports({}));
}

void KindRegistry::refuse(const std::string& name, const std::string& reason) const {
    const std::string subject = nameError(name).empty() ? "The kind " + name : "A kind";
    printMessage(subject + " of the collection " + object.string() + " is skipped: " + reason + ".");
}

/// The library stays loaded to the end of the program, even when it is skipped: threads that it has started may still
/// run.
Offered offeredBy(const fs::path& object, const std::string& factory, const FileFormats& formats) {
    void* const library = loadSharedObject(object);
    const std::string madeWith = static_cast<const char*>(symbolIn(library, "velmorakSdkHeaders"));
    if (madeWith != VELMORAK_SDK_VERSION) {
        throw std::runtime_error("it was built with version " + madeWith +
                                 " of the SDK, and this library with " VELMORAK_SDK_VERSION "; rebuild it");
    }
    const auto call = reinterpret_cast<Factory>(symbolIn(library, factory.c_str()));
    KindRegistry intake(object, object.stem().string(), formats);
    call(intake);
    return intake.take();
}

/// Shared objects `<folder>/<Name>/<Name>.so`, by name.
std::vector<fs::path> objectsIn(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const fs::path object = at->path() / (at->path().filename().string() + ".so");
        std::error_code missing;
        if (fs::is_regular_file(object, missing)) {
            found.push_back(fs::absolute(object));
        }
    }
    std::ranges::sort(found);
    return found;
}

class Loader {
public:
    Loader(fs::path notes, std::string factory, FileFormats& formats)
        : notes(std::move(notes)), factory(std::move(factory)), formats(formats) {}

    void load(const fs::path& object);
    std::vector<OfferedKind> takeSorted();

private:
    void add(OfferedKind offered);
    void add(const fs::path& object, std::unique_ptr<FileFormat> format);

    fs::path notes;
    std::string factory;
    FileFormats& formats;
    std::set<fs::path> loaded;
    std::set<std::string> names;
    std::vector<OfferedKind> kinds;
};

void Loader::load(const fs::path& object) {
    if (!loaded.insert(fs::weakly_canonical(object)).second) {
        return;
    }
    const LoadingNote note(notes, object);
    if (note.isOfAnEndedProgram()) {
        printMessage("The collection " + object.string() +
                     " is skipped: a program ended while it was loading it. Replace the file, or remove " +
                     note.file().string() + " to have it loaded again.");
        return;
    }
    Offered offered;
    if (const std::optional<NodeError> error = errorIn([&] { offered = offeredBy(object, factory, formats); })) {
        printMessage("The collection " + object.string() + " is skipped: " + withoutFullStop(error->sentence) + ".");
    }
    for (OfferedKind& each : offered.kinds) {
        add(std::move(each));
    }
    for (std::unique_ptr<FileFormat>& each : offered.formats) {
        add(object, std::move(each));
    }
}

void Loader::add(const fs::path& object, std::unique_ptr<FileFormat> format) {
    std::string name;
    const std::optional<NodeError> error = errorIn([&] { name = format ? format->name() : ""; });
    if (error || name.empty() || !formats.add(std::move(format))) {
        printMessage("The file format " + quotedName(name) + " of the collection " + object.string() +
                     " is skipped: it has no name, or another format has that name.");
    }
}

void Loader::add(OfferedKind offered) {
    const std::string& name = offered.record.name;
    if (!names.insert(name).second) {
        printMessage("The kind " + name + " of the collection " + offered.record.library +
                     " is skipped: another kind has that name.");
    } else {
        kinds.push_back(std::move(offered));
    }
}

std::vector<OfferedKind> Loader::takeSorted() {
    std::ranges::sort(kinds, {}, [](const OfferedKind& each) { return std::tie(each.record.group, each.record.name); });
    return std::move(kinds);
}

}  // namespace

std::vector<OfferedKind> loadCollections(const std::vector<fs::path>& folders, const fs::path& notes,
                                         const std::string& factory, FileFormats& formats) {
    Loader loader(notes, factory, formats);
    for (const fs::path& folder : folders) {
        for (const fs::path& object : objectsIn(folder)) {
            loader.load(object);
        }
    }
    return loader.takeSorted();
}

}  // namespace velmorak
