#pragma once

#include "QuietContext.h"

#include "csv/CsvReader.h"

#include <velmorak/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

class PreviewContext : public QuietContext {
public:
    bool isPreview() const override { return preview; }

    bool preview = false;
};

class CsvFixture : public testing::Test {
protected:
    void write(const std::string& text) { std::ofstream(options.file, std::ios::binary) << text; }

    /// All chunks, completed after the last one was cut, as several threads may do it.
    std::vector<Chunk> read(const CsvOptions& given) {
        CsvReader reader(given, context);
        columns = reader.schema();
        std::vector<Chunk> chunks;
        for (Chunk chunk; reader.next(chunk); chunk = {}) {
            chunks.push_back(chunk);
        }
        for (Chunk& chunk : chunks) {
            reader.complete(chunk);
        }
        return chunks;
    }
    std::vector<Chunk> read() { return read(options); }

    std::string failure() {
        try {
            read();
        } catch (const Failure& failure) {
            const std::string text = failure.what();
            const std::size_t place = text.find("data.csv");
            return place == std::string::npos ? text : text.substr(place);
        }
        return "no failure";
    }

    std::string typeOf(const std::string& name) const {
        return std::string(nameOf(columns[columns.find(name).value()].type));
    }

    TemporaryFolder folder{"csv-test"};
    CsvOptions options{.file = folder.path() / "data.csv", .form = {.comment = "#"}, .missing = "NA", .types = {}};
    PreviewContext context;
    Schema columns;
};

}  // namespace velmorak
