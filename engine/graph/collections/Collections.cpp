#include "graph/collections/Collections.h"

#include "graph/Log.h"
#include "graph/collections/Factory.h"
#include "graph/collections/KindCheck.h"
#include "graph/collections/LoadingNote.h"
#include "graph/document/Json.h"

#include "isolate/Kinds.h"
#include "run/messages/NodeError.h"

#include <algorithm>
#include <optional>
#include <set>
#include <system_error>
#include <tuple>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

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

Offered offeredBy(const fs::path& object, const std::string& factory, const FileFormats& formats) {
    KindRegistry intake(object, object.stem().string(), formats);
    registerInto(intake, object, factory);
    return intake.take();
}

/// The kinds as their host declares them.
std::vector<OfferedKind> kindsOf(const std::shared_ptr<isolation::Host>& host, const fs::path& object,
                                 const FileFormats& formats) {
    KindRegistry intake(object, object.stem().string(), formats);
    const std::shared_ptr<isolation::Desk> desk = isolation::newDesk(host);
    const std::vector<isolation::Declaration>& declared = host->declarations().kinds;
    for (std::size_t i = 0; i < declared.size(); ++i) {
        if (!declared[i].group.empty()) {
            intake.group(declared[i].group);
        }
        intake.add(isolation::isolatedKind(host, desk, i));
    }
    return intake.take().kinds;
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
    Loader(const CollectionSearch& search, FileFormats& formats) : search(search), formats(formats) {}

    void load(const fs::path& object);
    std::vector<OfferedKind> takeSorted();

private:
    std::shared_ptr<isolation::Host> hostFor(const fs::path& object);
    Offered isolated(const fs::path& object, const std::shared_ptr<isolation::Host>& host);
    std::optional<Offered> inside(const fs::path& object);
    void add(OfferedKind offered);
    void add(const fs::path& object, std::unique_ptr<FileFormat> format);

    const CollectionSearch& search;
    FileFormats& formats;
    std::set<fs::path> loaded;
    std::set<std::string> names;
    std::vector<OfferedKind> kinds;
    bool hasHosts = true;
};

void Loader::load(const fs::path& object) {
    if (object == search.except || !loaded.insert(fs::weakly_canonical(object)).second) {
        return;
    }
    std::optional<Offered> offered;
    const std::optional<NodeError> error = errorIn([&] {
        const std::shared_ptr<isolation::Host> host = hostFor(object);
        offered = host ? isolated(object, host) : inside(object);
    });
    if (error) {
        printMessage("The collection " + object.string() + " is skipped: " + withoutFullStop(error->sentence) + ".");
    }
    if (!offered) {
        return;
    }
    for (OfferedKind& each : offered->kinds) {
        add(std::move(each));
    }
    for (std::unique_ptr<FileFormat>& each : offered->formats) {
        add(object, std::move(each));
    }
}

/// @return null if the kinds run in this program. @throws std::exception if the collection cannot be loaded.
std::shared_ptr<isolation::Host> Loader::hostFor(const fs::path& object) {
    if (!hasHosts || !search.isolation.isolates(object)) {
        return nullptr;
    }
    try {
        return std::make_shared<isolation::Host>(
            isolation::Load{object, search.factory, search.folders, search.isolation});
    } catch (const std::system_error& error) {
        hasHosts = false;
        printMessage("Kinds run inside this program, because " + search.isolation.program.string() +
                     " cannot be started: " + error.code().message() + ".");
        return nullptr;
    }
}

Offered Loader::isolated(const fs::path& object, const std::shared_ptr<isolation::Host>& host) {
    Offered offered;
    offered.kinds = kindsOf(host, object, formats);
    if (host->declarations().hasFormats) {
        if (std::optional<Offered> whole = inside(object)) {
            offered.formats = std::move(whole->formats);
        }
    }
    return offered;
}

/// @return nothing if the collection has ended an earlier program.
std::optional<Offered> Loader::inside(const fs::path& object) {
    const LoadingNote note(search.notes, object);
    if (note.isOfAnEndedProgram()) {
        printMessage("The collection " + object.string() +
                     " is skipped: a program ended while it was loading it. Replace the file, or remove " +
                     note.file().string() + " to have it loaded again.");
        return std::nullopt;
    }
    return offeredBy(object, search.factory, formats);
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

std::vector<OfferedKind> loadCollections(const CollectionSearch& search, FileFormats& formats) {
    if (!search.isolation.warning.empty()) {
        printMessage(search.isolation.warning + ".");
    }
    Loader loader(search, formats);
    for (const fs::path& folder : search.folders) {
        for (const fs::path& object : objectsIn(folder)) {
            loader.load(object);
        }
    }
    return loader.takeSorted();
}

}  // namespace velmorak
