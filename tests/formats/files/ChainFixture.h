#pragma once

#include "FilesFixture.h"

#include "csv/CsvReader.h"
#include "files/FileChain.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

class CsvOpener : public FileOpener {
public:
    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override {
        const CsvReader reader({.file = file, .form = {}, .missing = "NA", .types = {}}, context);
        return {reader.schema(), reader.columnsWithoutValues()};
    }
    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                      RunContext& context) const override {
        CsvOptions csv{.file = file, .form = {}, .missing = "NA", .types = {}};
        for (std::size_t i = 0; wanted && i < wanted->size(); ++i) {
            csv.types[(*wanted)[i].name] = (*wanted)[i].type;
        }
        return std::make_unique<CsvReader>(std::move(csv), context);
    }
};

/// Opens readers of the test's own.
class TestOpener : public FileOpener {
public:
    using Open = std::function<std::unique_ptr<TableReader>(const std::string& file)>;

    explicit TestOpener(Open opening) : opening(std::move(opening)) {}
    FileColumns columnsOf(const std::filesystem::path& file, RunContext&) const override {
        return {opening(file.string())->schema()};
    }
    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema*, RunContext&) const override {
        return opening(file.string());
    }

private:
    Open opening;
};

class FileChainTest : public FilesFixture {
protected:
    std::unique_ptr<TableReader> open(const std::string& text, const FileChainOptions& options = {}) {
        return openFiles(findFiles("file", text, context), std::make_shared<CsvOpener>(), options, context);
    }

    std::unique_ptr<TableReader> openOwn(const FileList& list, const TestOpener::Open& opening,
                                         const FileChainOptions& options) {
        return openFiles(list, std::make_shared<TestOpener>(opening), options, context);
    }

    static FileList listOf(const std::vector<std::string>& names) {
        FileList list;
        for (const std::string& name : names) {
            list.files.push_back({name, name});
        }
        return list;
    }

    /// All chunks, completed as a run does it.
    static std::vector<Chunk> chunksOf(TableReader& reader) {
        std::vector<Chunk> all;
        for (Chunk chunk; reader.next(chunk); chunk = {}) {
            all.push_back(chunk);
        }
        for (Chunk& chunk : all) {
            reader.complete(chunk);
        }
        return all;
    }

    std::string failureOf(const std::string& text, const FileChainOptions& options = {}) {
        try {
            const std::unique_ptr<TableReader> reader = open(text, options);
            chunksOf(*reader);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "no failure";
    }
};

}  // namespace velmorak
