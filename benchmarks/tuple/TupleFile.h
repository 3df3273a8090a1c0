#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <velmorak/Run.h>

namespace velmorak::bench {

/// A run without a user interface.
class IdleRun : public RunContext {
public:
    bool isStopping() const override { return false; }
    const std::string& pluginName() const override { return name; }
    std::filesystem::path inputFile(const std::string& text) const override { return text; }
    std::filesystem::path commandLineAida() const override { return {}; }
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override {
        writer(fileName);
    }
    std::unique_ptr<ResultFile> beginResult(const std::string&) override { return nullptr; }
    void warn(const std::string&) override {}

private:
    std::string name = "Benchmark";
};

/// A folder for the files of one program, which is removed with it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::filesystem::path operator/(const std::string& name) const { return path / name; }

private:
    std::filesystem::path path;
};

/// Columns "c0", "c1", ... of random numbers, half of them with a Gauss distribution about 0, the others uniform from 0
/// to 1; the same ones each time, to all their digits.
class Numbers {
public:
    explicit Numbers(std::size_t columns);
    void nextRow(std::vector<double>& row);
    const std::vector<std::string>& names() const { return columnNames; }

private:
    double uniform();

    std::vector<std::string> columnNames;
    std::uint64_t state = 88172645463325252U;
};

/// Writes a tuple "numbers" as our own program does, plain.
void writeTuple(const std::filesystem::path& file, std::size_t rows, std::size_t columns);
/// The same numbers as text with commas and a line of names.
void writeCsv(const std::filesystem::path& file, std::size_t rows, std::size_t columns);
/// Packs a file as gzip does by default. @return the packed file, "file.gz".
std::filesystem::path gzip(const std::filesystem::path& file);

}  // namespace velmorak::bench
