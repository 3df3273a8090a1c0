#include "RootOutput.h"

#include <root/write/WrittenObjects.h>

#include <utility>

namespace velmorak {

RootOutput::RootOutput(RootContents contents, RunContext& context) : contents(std::move(contents)), context(context) {}

std::string RootOutput::rowsOf(const Chunk& chunk) const {
    if (chunk.rows == 0) {
        return {};
    }
    root::TreeRows rows = treeRowsOf(*contents.table, chunk);
    if (rows.isEnough(*contents.table)) {
        rows.pack(*contents.table, contents.packing);
    }
    return bytesOfRows(rows);
}

void RootOutput::appendRows(const std::string& rows) {
    if (rows.empty()) {
        return;
    }
    begin();
    table->append(rows);
}

void RootOutput::complete() {
    begin();
    for (const NamedObject& each : contents.objects) {
        if (each.object) {
            file->write(root::objectForFile(*each.object, each.name));
        } else {
            table->finish();
        }
    }
    file->close();
    result->keep();
}

void RootOutput::begin() {
    if (file) {
        return;
    }
    result = context.beginResult(contents.fileName);
    const std::string name = std::filesystem::path(contents.fileName).filename().string();
    file = std::make_unique<root::FileWriter>(
        root::FileWriter::Target{.path = result->path(), .name = name, .folder = contents.folder}, contents.packing);
    if (contents.table) {
        table.emplace(*file, *contents.table);
    }
}

}  // namespace velmorak
