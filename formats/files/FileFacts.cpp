#include "files/FileFacts.h"

#include <velmorak/Run.h>
#include <velmorak/StateBytes.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

constexpr const char* listName = "list of files";
constexpr const char* surveyName = "columns of files";

void save(StateWriter& writer, const std::vector<std::string>& texts) {
    writer.number<std::uint64_t>(texts.size());
    for (const std::string& text : texts) {
        writer.text(text);
    }
}

std::vector<std::string> loadTexts(StateReader& reader) {
    std::vector<std::string> texts(reader.length(sizeof(std::uint64_t)));
    for (std::string& text : texts) {
        text = reader.text();
    }
    return texts;
}

void save(StateWriter& writer, const std::vector<ColumnInfo>& columns) {
    writer.number<std::uint64_t>(columns.size());
    for (const ColumnInfo& column : columns) {
        writer.text(column.name);
        writer.text(column.unit);
        writer.number(static_cast<std::uint8_t>(column.type));
        writer.number(column.isList);
    }
}

std::vector<ColumnInfo> loadColumns(StateReader& reader) {
    std::vector<ColumnInfo> columns(reader.length(2 * sizeof(std::uint64_t)));
    for (ColumnInfo& column : columns) {
        column.name = reader.text();
        column.unit = reader.text();
        const auto type = reader.number<std::uint8_t>();
        reader.require(type <= static_cast<std::uint8_t>(ColumnType::Text), "a column has an unknown type");
        column.type = static_cast<ColumnType>(type);
        column.isList = reader.number<bool>();
    }
    return columns;
}

void save(StateWriter& writer, const Column& column) {
    if (column.type() == ColumnType::Text) {
        save(writer, column.texts());
    } else if (column.type() == ColumnType::Real) {
        writer.list(column.reals());
    } else if (column.type() == ColumnType::Integer) {
        writer.list(column.integers());
    } else {
        writer.list(column.booleans());
    }
}

ColumnPtr loadColumn(StateReader& reader, ColumnType type) {
    switch (type) {
        case ColumnType::Integer:
            return std::make_shared<const Column>(Column{reader.list<Column::Integers>(), {}});
        case ColumnType::Boolean:
            return std::make_shared<const Column>(Column{reader.list<Column::Booleans>(), {}});
        case ColumnType::Text:
            return std::make_shared<const Column>(Column{loadTexts(reader), {}});
        default:
            return std::make_shared<const Column>(Column{reader.list<Column::Reals>(), {}});
    }
}

}  // namespace

std::string bytesOf(const FileList& list) {
    StateWriter writer(listName);
    writer.version(1);
    save(writer, list.lists);
    writer.number<std::uint64_t>(list.files.size());
    for (const ListedFile& file : list.files) {
        writer.text(file.name);
        writer.number<std::uint64_t>(file.row);
    }
    save(writer, list.properties);
    for (const ColumnPtr& values : list.values) {
        save(writer, *values);
    }
    return writer.sealed();
}

FileList fileListFrom(const std::string& bytes, RunContext& context) {
    StateReader reader(bytes, listName);
    reader.version(1);
    FileList list;
    list.lists = loadTexts(reader);
    for (const std::string& name : list.lists) {
        context.inputFile(name);
    }
    std::uint64_t lastRow = 0;
    for (std::size_t left = reader.length(2 * sizeof(std::uint64_t)); left > 0; --left) {
        std::string name = reader.text();
        const auto row = reader.number<std::uint64_t>();
        lastRow = std::max(lastRow, row);
        std::filesystem::path path = context.inputFile(name);
        list.files.push_back({std::move(name), std::move(path), static_cast<std::size_t>(row)});
    }
    list.properties = loadColumns(reader);
    reader.require(!list.files.empty(), "it has no files");
    for (const ColumnInfo& property : list.properties) {
        reader.require(!property.isList, "a property is a list");
        list.values.push_back(loadColumn(reader, property.type));
        reader.require(list.values.back()->valueCount() > lastRow, "a file has no properties");
    }
    reader.mustBeAtEnd();
    return list;
}

std::string bytesOf(const FileSurvey& survey) {
    StateWriter writer(surveyName);
    writer.version(1);
    save(writer, survey.common.columns());
    writer.list(std::vector<std::uint8_t>(survey.isSkipped.begin(), survey.isSkipped.end()));
    save(writer, survey.reasons);
    save(writer, survey.leftOut);
    return writer.sealed();
}

FileSurvey fileSurveyFrom(const std::string& bytes, std::size_t files) {
    StateReader reader(bytes, surveyName);
    reader.version(1);
    FileSurvey survey;
    try {
        survey.common = Schema(loadColumns(reader));
    } catch (const std::invalid_argument&) {
        reader.fail("two columns have one name");
    }
    const auto skipped = reader.list<std::vector<std::uint8_t>>();
    survey.isSkipped.assign(skipped.begin(), skipped.end());
    survey.reasons = loadTexts(reader);
    survey.leftOut = loadTexts(reader);
    reader.require(survey.isSkipped.size() == files, "it is about another number of files");
    reader.require(survey.reasons.size() ==
                       static_cast<std::size_t>(std::count(survey.isSkipped.begin(), survey.isSkipped.end(), true)),
                   "a file that cannot be read has no reason");
    reader.mustBeAtEnd();
    return survey;
}

}  // namespace velmorak
