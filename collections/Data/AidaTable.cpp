#include "kinds.h"

#include "AidaFile.h"
#include "shared/FileInputs.h"

#include <velmorak/Aida.h>
#include <velmorak/Mutex.h>

#include <map>
#include <utility>

namespace velmorak {

namespace {

/// Opens one table of each file. It may have another path in each if the user gives its bare name, or none.
class AidaOpener : public FileOpener {
public:
    explicit AidaOpener(std::string object) : object(std::move(object)) {}

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;

    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* /*wanted*/,
                                      RunContext& context) const override;

private:
    /// Finding the path may need a look at the whole file.
    std::string pathIn(const std::filesystem::path& file) const;

    const std::string object;
    mutable Mutex mutex;
    mutable std::map<std::filesystem::path, std::string> paths VELMORAK_GUARDED_BY(mutex);
};

FileColumns AidaOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    const std::string path = aidaTablePath(file, object, context);
    {
        const MutexLock lock(mutex);
        paths[file] = path;
    }
    return {openAidaTable(file, path, context)->schema()};
}

std::unique_ptr<TableReader> AidaOpener::open(const std::filesystem::path& file, const Schema* /*wanted*/,
                                              RunContext& context) const {
    return openAidaTable(file, pathIn(file), context);
}

std::string AidaOpener::pathIn(const std::filesystem::path& file) const {
    const MutexLock lock(mutex);
    const auto known = paths.find(file);
    return known == paths.end() ? object : known->second;
}

/// Reads a tuple or cloud of AIDA files.
class AidaTableKind : public Source {
public:
    std::string name() const override { return "AidaTable"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;
};

}  // namespace

std::string AidaTableKind::summary() const {
    return "Reads a tuple or cloud of AIDA files as a table.";
}

Ports AidaTableKind::ports(const ValueTexts&) const {
    std::vector<InputSpec> inputs = aidaInputs("tuple or cloud", "/run1/events");
    inputs.front() = fileListInput("AIDA file, plain or compressed; the format is recognised by content", aidaIfEmpty);
    return fileTablePorts(std::move(inputs),
                          "The rows of the tuple with its columns, or of the cloud with columns x, y, z and weight.");
}

std::unique_ptr<TableReader> AidaTableKind::open(const Arguments& arguments, RunContext& context) const {
    return openFilesOf(aidaFilesOf(arguments, context), aidaTableOpener(arguments.text("object")), arguments, context);
}

std::vector<std::filesystem::path> AidaTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(aidaFilesOf(arguments, context));
}

std::shared_ptr<const FileOpener> aidaTableOpener(const std::string& object) {
    return std::make_shared<AidaOpener>(object);
}

std::unique_ptr<Kind> makeAidaTable() {
    return std::make_unique<AidaTableKind>();
}

}  // namespace velmorak
