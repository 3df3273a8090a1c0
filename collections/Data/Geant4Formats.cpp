#include "kinds.h"

#include "csv/Geant4Histogram.h"
#include "files/ChosenColumns.h"
#include "shared/FormatOfFile.h"

#include <algorithm>
#include <string_view>

namespace velmorak {
namespace {

/// The class that the first line of a file of Geant4's analysis manager names; empty for any other file.
std::string_view classIn(std::string_view text) {
    constexpr std::string_view key = "#class ";
    if (!text.starts_with(key)) {
        return {};
    }
    text = text.substr(key.size(), text.find_first_of("\r\n") - key.size());
    return text.starts_with("tools::") ? text : std::string_view();
}

bool isNtuple(std::string_view className) {
    return className.ends_with("::ntuple");
}

class Geant4NtupleFormat : public FileFormat {
public:
    std::string name() const override { return "Geant4 ntuple"; }
    std::string description() const override { return "an ntuple of Geant4"; }
    std::string tableKind() const override { return "CsvTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition Geant4NtupleFormat::recognise(const FileStart& start) const {
    return isNtuple(classIn(start.unpacked)) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> Geant4NtupleFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    const std::unique_ptr<TableReader> reader = csvTableOpener()->open(file, nullptr, context);
    const std::uint64_t rows = countRows(*reader, context);
    return {tableObject({}, "ntuple", rows, reader->schema())};
}

std::shared_ptr<const FileOpener> Geant4NtupleFormat::tableOpener(const std::string& object,
                                                                  const std::vector<std::string>& columns) const {
    if (!object.empty()) {
        throw Failure("object", "an ntuple of Geant4 is the only one in its file; leave \"object\" empty");
    }
    return withColumns(csvTableOpener(), columns);
}

class Geant4HistogramFormat : public FileFormat {
public:
    std::string name() const override { return "Geant4 histogram"; }
    std::string description() const override { return "a histogram or profile of Geant4"; }
    std::string tableKind() const override { return {}; }
    std::string objectKind() const override { return "Geant4Histogram"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& /*object*/,
                                                  const std::vector<std::string>& /*columns*/) const override;
};

Recognition Geant4HistogramFormat::recognise(const FileStart& start) const {
    const std::string_view className = classIn(start.unpacked);
    return className.empty() || isNtuple(className) ? Recognition::No : Recognition::Certain;
}

std::vector<FileObject> Geant4HistogramFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    const std::string type(classIn(startOf(file).unpacked));
    FileObject object{.path = {}, .type = type.substr(type.rfind(':') + 1)};
    object.description = summaryOf(*readGeant4Histogram(file, context));
    return {object};
}

std::shared_ptr<const FileOpener> Geant4HistogramFormat::tableOpener(
    const std::string& /*object*/, const std::vector<std::string>& /*columns*/) const {
    return nullptr;
}

}  // namespace

std::vector<std::unique_ptr<FileFormat>> makeGeant4Formats() {
    std::vector<std::unique_ptr<FileFormat>> formats;
    formats.push_back(std::make_unique<Geant4NtupleFormat>());
    formats.push_back(std::make_unique<Geant4HistogramFormat>());
    return formats;
}

}  // namespace velmorak
