#include "kinds.h"

#include "files/ChosenColumns.h"
#include "shared/FormatOfFile.h"

#include <hepmc/EventTable.h>

#include <utility>

namespace velmorak {
namespace {

/// Events of a generator, in one of the forms that HepMcTable reads.
class EventFileFormat : public FileFormat {
public:
    EventFileFormat(EventFormat format, std::string title, std::string text);

    std::string name() const override { return title; }
    std::string description() const override { return text; }
    std::string tableKind() const override { return "HepMcTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;

private:
    const EventFormat format;
    const std::string title;
    const std::string text;
};

EventFileFormat::EventFileFormat(EventFormat format, std::string title, std::string text)
    : format(format), title(std::move(title)), text(std::move(text)) {}

Recognition EventFileFormat::recognise(const FileStart& start) const {
    return eventFormatOf(start.unpacked) == format ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> EventFileFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    const std::unique_ptr<TableReader> reader = openEvents(file, context);
    const std::uint64_t events = countRows(*reader, context);
    return {tableObject({}, "events", events, reader->schema())};
}

std::shared_ptr<const FileOpener> EventFileFormat::tableOpener(const std::string& object,
                                                               const std::vector<std::string>& columns) const {
    if (!object.empty()) {
        throw Failure("object", text + " has one table without a name; leave \"object\" empty");
    }
    return withColumns(eventTableOpener(), columns);
}

}  // namespace

std::vector<std::unique_ptr<FileFormat>> makeEventFormats() {
    std::vector<std::unique_ptr<FileFormat>> formats;
    const auto add = [&](EventFormat format, const std::string& name, const std::string& description) {
        formats.push_back(std::make_unique<EventFileFormat>(format, name, description));
    };
    add(EventFormat::HepMc2, "HepMC2", "a file of HepMC 2 events");
    add(EventFormat::HepMc3, "HepMC3", "a file of HepMC 3 events");
    add(EventFormat::LesHouches, "LHE", "a file of Les Houches events");
    return formats;
}

}  // namespace velmorak
