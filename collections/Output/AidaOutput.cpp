#include "AidaOutput.h"

#include <utility>

namespace velmorak {

AidaOutput::AidaOutput(AidaContents whatToWrite, RunContext& run) : contents(std::move(whatToWrite)), context(run) {}

void AidaOutput::appendRows(const std::string& rows) {
    if (rows.empty())
        return;
    begin();
    writer->writeRows(rows);
}

void AidaOutput::complete() {
    begin();
    if (isInTable)
        writer->endTable();
    isInTable = false;
    writeObjectsUpToTable();
    writer->close();
    file->keep();
}

void AidaOutput::begin() {
    if (writer)
        return;
    file = context.beginResult(contents.fileName);
    writer = std::make_unique<AidaFileWriter>(file->path());
    writeObjectsUpToTable();
}

void AidaOutput::writeObjectsUpToTable() {
    for (; next < contents.objects.size() && !isInTable; ++next) {
        const AidaContents::Object& object = contents.objects[next];
        isInTable = object.histogram == nullptr;
        if (isInTable) {
            writer->beginTable(object.name, object.name, contents.folder, contents.schema);
            continue;
        }
        Histogram1D named = *object.histogram;
        named.name = object.name;
        writer->write(named, contents.folder);
    }
}

}  // namespace velmorak
