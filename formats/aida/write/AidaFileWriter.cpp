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

/// Stands in for a table in beginElement.
struct TableHead : DataObject {
    ValueType type() const override { return ValueType::Table; }
};

bool isEmpty(const BinSums& bin) {
    return bin == BinSums{};
}

std::string exactSums(const Histogram1D& histogram) {
    std::string text;
    for (std::size_t cell = 0; cell < histogram.cells().size(); ++cell) {
        const BinSums& sums = histogram.cells()[cell];
        if (!isEmpty(sums)) {
            text += fmt::format("{}{} {} {} {} {} {}", text.empty() ? "" : "; ", cell, sums.entries, textOf(sums.w),
                                textOf(sums.ww), textOf(sums.wx), textOf(sums.wxx));
        }
    }
    return text;
}

std::string annotation(const Histogram1D& histogram) {
    io::AnnotationText text(histogram);
    if (!histogram.axis().title.empty()) {
        text.add("XLabel", histogram.axis().title);
    }
    if (histogram.nanEntries() != 0) {
        text.add("NaNEntries", fmt::format("{}", histogram.nanEntries()));
    }
    text.addList("ExactSums", exactSums(histogram));
    return text.finish(histogram);
}

std::string statistics(const Histogram1D& histogram) {
    const BinSums all = histogram.inRange();
    return fmt::format(
        "<statistics entries=\"{}\"{}>\n<statistic direction=\"x\" mean=\"{}\" rms=\"{}\"/>\n</statistics>\n",
        all.entries, io::numberAttribute("equivalentBinEntries", all.w * all.w / all.ww), textOf(histogram.mean()),
        textOf(histogram.rms()));
}

std::string binElement(const std::string& number, const BinSums& bin) {
    const double mean = bin.wx / bin.w;
    const double variance = bin.wxx / bin.w - mean * mean;
    return fmt::format("<bin1d binNum=\"{}\" entries=\"{}\" height=\"{}\" error=\"{}\"{}{}/>\n", number, bin.entries,
                       textOf(bin.w), textOf(std::sqrt(bin.ww)), io::numberAttribute("weightedMean", mean),
                       io::numberAttribute("weightedRms", variance < 0.0 ? 0.0 : std::sqrt(variance)));
}

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

void AidaFileWriter::write(const Histogram1D& histogram, const std::string& folder) {
    part->mustBeInTable(false);
    std::string text = io::beginElement(io::aidaElement(io::AidaFamily::Histogram, 1), histogram, folder) +
                       annotation(histogram) + io::axisElement(histogram.axis(), 'x') + statistics(histogram) +
                       "<data1d>\n";
    if (!isEmpty(histogram.underflow())) {
        text += binElement("UNDERFLOW", histogram.underflow());
    }
    for (std::size_t bin = 0; bin < histogram.bins(); ++bin) {
        if (!isEmpty(histogram.bin(bin))) {
            text += binElement(fmt::format("{}", bin), histogram.bin(bin));
        }
    }
    if (!isEmpty(histogram.overflow())) {
        text += binElement("OVERFLOW", histogram.overflow());
    }
    part->write(text + "</data1d>\n</histogram1d>\n");
}

void AidaFileWriter::write(const DataObject& object, const std::string& folder) {
    visit(object, overloaded{
                      [&](const Histogram1D& histogram) { write(histogram, folder); },
                      [&](const DataObject& other) {
                          part->mustBeInTable(false);
                          part->write(io::objectElement(other, folder));
                      },
                  });
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
