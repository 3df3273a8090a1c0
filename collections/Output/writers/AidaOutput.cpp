#include "AidaOutput.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Parts.h>

#include <utility>

namespace velmorak {

namespace {

/// Writes a copy of the object under its name in the file.
void writeAs(const NamedObject& object, AidaFileWriter& writer, const std::string& folder) {
    visit(*object.object,
          overloaded{
              [&](const DataObject&) { throw Failure(object.name + " cannot be written to an AIDA file"); },
              [&](const auto& original) {
                  auto copy = original;
                  copy.name = object.name;
                  writer.write(copy, folder);
              },
          });
}

}  // namespace

AidaOutput::AidaOutput(AidaContents contents, RunContext& context) : contents(std::move(contents)), context(context) {}

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
        const NamedObject& object = contents.objects[next];
        isInTable = object.object == nullptr;
        if (isInTable) {
            const std::string partial = partialRemark(context);
            const std::string title = object.name + (partial.empty() ? "" : " (partial: " + partial + ")");
            writer->beginTable(object.name, title, contents.folder, contents.schema);
            continue;
        }
        writeAs(object, *writer, contents.folder);
    }
}

}  // namespace velmorak
