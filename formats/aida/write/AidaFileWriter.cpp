#include "aida/Vocabulary.h"
#include "aida/text/AidaText.h"
#include "aida/write/AidaObjectWriter.h"

#include <velmorak/Aida.h>
#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <fmt/format.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace velmorak {

namespace {

using io::escaped;

/// The heads of both versions have the same length, so that the head can be overwritten when the file is complete.
std::string head(bool hasNestedRows) {
    const std::string_view version = hasNestedRows ? "3.3" : "3.2.1";
    const std::string_view blanks = hasNestedRows ? "  " : "";
    return fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE aida SYSTEM \"http://aida.freehep.org/schemas/{0}/aida.dtd\"{1}>\n"
        "<aida version=\"{0}\"{1}>\n"
        "<implementation package=\"Velmorak\" version=\"{2}\"/>\n",
        version, blanks, VELMORAK_VERSION);
}

/// The placeholder for a table in beginElement.
struct TableHead : DataObject {
    ValueType type() const override { return ValueType::Table; }
};

std::string typeText(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return "double";
        case ColumnType::Integer:
            return "long";
        case ColumnType::Boolean:
            return "boolean";
        case ColumnType::Text:
            return "string";
    }
    throw std::logic_error("unknown column type");
}

void checkName(const std::string& name) {
    if (name.empty() || trimmed(name) != name || name.find('=') != std::string::npos) {
        throw Failure(fmt::format(
            R"(an AIDA file cannot have a column named "{}": column names must not be empty, contain "=" or start or end with blanks)",
            name));
    }
}

std::string columnElement(const ColumnInfo& column) {
    checkName(column.name);
    const std::string name = escaped(column.name);
    const std::string plain = fmt::format(R"(<column name="{}" type="{}"/>)", name, typeText(column.type));
    if (!column.isList) {
        return plain + "\n";
    }
    return fmt::format("<column name=\"{}\" type=\"ITuple\"><columns>{}</columns></column>\n", name, plain);
}

}  // namespace

struct AidaFileWriter::Impl {
    struct Close {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    [[noreturn]] void fail() const;
    void write(std::string_view text);
    void mustBeInTable(bool expected) const;

    std::filesystem::path path;
    std::unique_ptr<std::FILE, Close> file;
    Schema schema;
    bool isInTable = false;
    bool hasNestedRows = false;
};

void AidaFileWriter::Impl::fail() const {
    throw Failure(fmt::format("{} cannot be written: {}", path.string(), std::generic_category().message(errno)));
}

void AidaFileWriter::Impl::write(std::string_view text) {
    if (!file) {
        throw std::logic_error("the AIDA file is closed");
    }
    if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) {
        fail();
    }
}

void AidaFileWriter::Impl::mustBeInTable(bool expected) const {
    if (isInTable != expected) {
        throw std::logic_error("only rows can be written between the begin and the end of a table");
    }
}

AidaFileWriter::AidaFileWriter(const std::filesystem::path& file) : part(std::make_unique<Impl>()) {
    part->path = file;
    part->file.reset(std::fopen(file.c_str(), "wb"));
    if (!part->file) {
        part->fail();
    }
    part->write(head(false));
}

AidaFileWriter::~AidaFileWriter() = default;

void AidaFileWriter::write(const DataObject& object, const std::string& folder) {
    part->mustBeInTable(false);
    part->write(io::objectElement(object, folder));
}

void AidaFileWriter::beginTable(const std::string& name, const std::string& title, const std::string& folder,
                                const Schema& schema) {
    part->mustBeInTable(false);
    TableHead table;
    table.name = name;
    table.title = title;
    std::string text = io::beginElement(io::aidaElement(io::AidaFamily::Tuple), table, folder) + "<columns>\n";
    for (const ColumnInfo& column : schema.columns()) {
        text += columnElement(column);
    }
    part->write(text + "</columns>\n<rows>\n");
    part->schema = schema;
    part->isInTable = true;
    for (const ColumnInfo& column : schema.columns()) {
        part->hasNestedRows = part->hasNestedRows || column.isList;
    }
}

void AidaFileWriter::writeRows(const Chunk& chunk) {
    writeRows(std::string_view(aidaRows(part->schema, chunk)));
}

void AidaFileWriter::writeRows(std::string_view rows) {
    part->mustBeInTable(true);
    part->write(rows);
}

void AidaFileWriter::endTable() {
    part->mustBeInTable(true);
    part->write("</rows>\n</tuple>\n");
    part->isInTable = false;
}

void AidaFileWriter::close() {
    part->mustBeInTable(false);
    part->write("</aida>\n");
    std::FILE* file = part->file.get();
    if (part->hasNestedRows) {
        if (std::fseek(file, 0, SEEK_SET) != 0) {
            part->fail();
        }
        part->write(head(true));
    }
    // A full disk is reported here at the latest. There is no fsync: it could take seconds during which the run cannot
    // be stopped, and results can be computed again.
    const bool isFlushed = std::fflush(file) == 0;
    if (!isFlushed || std::fclose(part->file.release()) != 0) {
        part->fail();
    }
}

}  // namespace velmorak
