#include "AidaOutput.h"

#include <utility>

#include <velmorak/FunctionObject.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

namespace velmorak {

namespace {

/// Writes a copy of the object under its name in the file.
/// @return false when the object is of another class.
template <typename Class>
bool writeAs(const AidaContents::Object& object, AidaFileWriter& writer, const std::string& folder) {
    const auto* original = dynamic_cast<const Class*>(object.object.get());
    if (!original) {
        return false;
    }
    Class named = *original;
    named.name = object.name;
    writer.write(named, folder);
    return true;
}

}  // namespace

AidaOutput::AidaOutput(AidaContents whatToWrite, RunContext& run) : contents(std::move(whatToWrite)), context(run) {}

void AidaOutput::appendRows(const std::string& rows) {
    if (rows.empty()) {
        return;
    }
    begin();
    writer->writeRows(rows);
}

void AidaOutput::complete() {
    begin();
    if (isInTable) {
        writer->endTable();
    }
    isInTable = false;
    writeObjectsUpToTable();
    writer->close();
    file->keep();
}

void AidaOutput::begin() {
    if (writer) {
        return;
    }
    file = context.beginResult(contents.fileName);
    writer = std::make_unique<AidaFileWriter>(file->path());
    writeObjectsUpToTable();
}

void AidaOutput::writeObjectsUpToTable() {
    for (; next < contents.objects.size() && !isInTable; ++next) {
        const AidaContents::Object& object = contents.objects[next];
        isInTable = object.object == nullptr;
        if (isInTable) {
            writer->beginTable(object.name, object.name, contents.folder, contents.schema);
            continue;
        }
        const bool isWritten = writeAs<Histogram1D>(object, *writer, contents.folder) ||
                               writeAs<Histogram2D>(object, *writer, contents.folder) ||
                               writeAs<Histogram3D>(object, *writer, contents.folder) ||
                               writeAs<Profile1D>(object, *writer, contents.folder) ||
                               writeAs<Profile2D>(object, *writer, contents.folder) ||
                               writeAs<Points>(object, *writer, contents.folder) ||
                               writeAs<FunctionObject>(object, *writer, contents.folder);
        if (!isWritten) {
            throw Failure(object.name + " cannot be written to an AIDA file");
        }
    }
}

}  // namespace velmorak
