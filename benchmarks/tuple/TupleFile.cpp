#include "TupleFile.h"

#include <velmorak/Aida.h>
#include <zlib.h>

#include <unistd.h>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <numbers>
#include <stdexcept>

namespace velmorak::bench {

Folder::Folder() : path(std::filesystem::temp_directory_path() / ("velmorak-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path);
}

Folder::~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
}

Numbers::Numbers(std::size_t columns) {
    for (std::size_t i = 0; i < columns; ++i) {
        columnNames.push_back("c" + std::to_string(i));
    }
}

/// G. Marsaglia, Xorshift RNGs, Journal of Statistical Software 8 (2003).
double Numbers::uniform() {
    state ^= state << 13U;
    state ^= state >> 7U;
    state ^= state << 17U;
    return static_cast<double>(state >> 11U) * 0x1p-53;
}

void Numbers::nextRow(std::vector<double>& row) {
    row.resize(columnNames.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
        const double one = uniform();
        row[i] = i % 2 == 1 ? one : std::sqrt(-2.0 * std::log(1.0 - one)) * std::cos(2 * std::numbers::pi * uniform());
    }
}

void writeTuple(const std::filesystem::path& file, std::size_t rows, std::size_t columns) {
    Numbers numbers(columns);
    Schema schema;
    for (const std::string& name : numbers.names()) {
        schema.add({.name = name});
    }
    AidaFileWriter writer(file);
    writer.beginTable("numbers", "Random numbers", "/", schema);
    std::vector<double> row;
    for (std::size_t begin = 0; begin < rows; begin += chunkRows) {
        Chunk chunk;
        chunk.rows = std::min(chunkRows, rows - begin);
        std::vector<Column::Reals> values(columns, Column::Reals(chunk.rows));
        for (std::size_t i = 0; i < chunk.rows; ++i) {
            numbers.nextRow(row);
            for (std::size_t column = 0; column < columns; ++column) {
                values[column][i] = row[column];
            }
        }
        for (Column::Reals& column : values) {
            chunk.columns.push_back(std::make_shared<Column>(Column{std::move(column), {}}));
        }
        writer.writeRows(chunk);
    }
    writer.endTable();
    writer.close();
}

void writeCsv(const std::filesystem::path& file, std::size_t rows, std::size_t columns) {
    Numbers numbers(columns);
    std::ofstream output(file, std::ios::binary);
    std::string line;
    for (const std::string& name : numbers.names()) {
        line += (line.empty() ? "" : ",") + name;
    }
    std::vector<double> row;
    for (std::size_t i = 0; i < rows; ++i) {
        output << line << '\n';
        numbers.nextRow(row);
        line.clear();
        for (const double value : row) {
            char text[32];
            if (!line.empty()) {
                line += ',';
            }
            line.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
        }
    }
    output << line << '\n';
    if (!output.flush()) {
        throw std::runtime_error(file.string() + " cannot be written");
    }
}

std::filesystem::path gzip(const std::filesystem::path& file) {
    const std::filesystem::path packed = file.string() + ".gz";
    std::ifstream input(file, std::ios::binary);
    gzFile output = gzopen(packed.c_str(), "wb6");
    std::vector<char> piece(1U << 20U);
    bool isWritten = output != nullptr;
    while (isWritten && input.read(piece.data(), static_cast<std::streamsize>(piece.size())).gcount() > 0) {
        isWritten = gzwrite(output, piece.data(), static_cast<unsigned>(input.gcount())) == input.gcount();
    }
    if (!output || gzclose(output) != Z_OK || !isWritten) {
        throw std::runtime_error(packed.string() + " cannot be written");
    }
    return packed;
}

}  // namespace velmorak::bench
