#include <velmorak/Expression.h>

#include <muParser.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>

#include "Row.h"
#include "Timing.h"

/// Expressions on 2 million rows, one core, beside the bulk mode of muParser and numexpr with one thread. All are given
/// the same text and the same columns, and must find the same sum.
namespace {

using namespace velmorak;

constexpr std::size_t rowCount = 2'000'000;

struct Work {
    const char* text;
    const char* forNumexpr;
};

constexpr Work works[] = {
    {"sqrt(x*x+y*y)*w+exp(-x)", "sqrt(x*x+y*y)*w+exp(-x)"},
    {"(x>0.2)&&(y<0.8)&&(sqrt(x*x+y*y)<1)", "(x>0.2)&(y<0.8)&(sqrt(x*x+y*y)<1)"},
};

using Columns = std::vector<std::vector<double>>;

Columns randomColumns() {
    std::mt19937_64 random(2026);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    Columns columns(3, std::vector<double>(rowCount));
    for (std::vector<double>& column : columns)
        for (double& value : column)
            value = uniform(random);
    return columns;
}

std::vector<Chunk> chunksOf(const Columns& columns) {
    std::vector<Chunk> chunks;
    for (std::size_t first = 0; first < rowCount; first += chunkRows) {
        Chunk chunk;
        chunk.number = chunks.size();
        chunk.firstRow = first;
        chunk.rows = std::min(chunkRows, rowCount - first);
        for (const std::vector<double>& column : columns) {
            const auto begin = column.begin() + static_cast<std::ptrdiff_t>(first);
            chunk.columns.push_back(std::make_shared<const Column>(
                Column{Column::Reals(begin, begin + static_cast<std::ptrdiff_t>(chunk.rows)), {}}));
        }
        chunks.push_back(std::move(chunk));
    }
    return chunks;
}

double sumOf(const Expression& expression, const std::vector<Chunk>& chunks) {
    double sum = 0.0;
    for (const Chunk& chunk : chunks)
        for (const double value : asReals(expression.evaluate(chunk))->reals())
            sum += value;
    return sum;
}

struct Peer {
    double ms = 0.0;
    double sum = 0.0;
};

/// One answer for each piece of work.
std::vector<Peer> askNumexpr(const Columns& columns) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "velmorak-bench-columns";
    std::ofstream out(file, std::ios::binary);
    for (const std::vector<double>& column : columns)
        out.write(reinterpret_cast<const char*>(column.data()), static_cast<std::streamsize>(8 * column.size()));
    out.close();
    // The packages are those of the system's own Python.
    std::string command = "/usr/bin/python3 '" VELMORAK_BENCH_NUMEXPR "' '" + file.string() + "'";
    for (const Work& work : works)
        command += std::string(" '") + work.forNumexpr + "'";
    FILE* answers = popen(command.c_str(), "r");
    std::vector<Peer> peers(std::size(works));
    for (Peer& peer : peers)
        if (answers == nullptr || std::fscanf(answers, "%lf %lf", &peer.ms, &peer.sum) != 2)
            throw std::runtime_error("numexpr gave no answer");
    pclose(answers);
    std::filesystem::remove(file);
    return peers;
}

void expectSame(double ours, double theirs, const std::string& who) {
    if (!(std::fabs(ours - theirs) <= 1e-9 * std::fabs(ours)))
        throw std::runtime_error(who + " finds another sum");
}

void measure(const Work& work, Columns& columns, const std::vector<Chunk>& chunks, const Peer& numexpr) {
    const Expression expression(work.text, Schema({{"x"}, {"y"}, {"w"}}));
    mu::Parser parser;
    parser.DefineVar("x", columns[0].data());
    parser.DefineVar("y", columns[1].data());
    parser.DefineVar("w", columns[2].data());
    parser.SetExpr(work.text);
    std::vector<double> results(rowCount);
    const std::vector<double> medians =
        bench::mediansOf({[&] {
                              for (const Chunk& chunk : chunks)
                                  expression.evaluate(chunk);
                          },
                          [&] { parser.Eval(results.data(), static_cast<int>(rowCount)); }},
                         bench::Clock::Processor, 9);
    const double sum = sumOf(expression, chunks);
    double theirSum = 0.0;
    for (const double value : results)
        theirSum += value;
    expectSame(sum, theirSum, "muParser");
    expectSame(sum, numexpr.sum, "numexpr");
    const std::string name = std::string(work.text) + ", 2 M rows";
    bench::printFaster(name, "numexpr, 1 thread", medians[0], numexpr.ms, 2.0);
    bench::printFaster(name, "muParser, bulk mode", medians[0], medians[1], 5.0);
}

}  // namespace

int main() {
    try {
        Columns columns = randomColumns();
        const std::vector<Chunk> chunks = chunksOf(columns);
        const std::vector<Peer> numexpr = askNumexpr(columns);
        for (std::size_t i = 0; i < std::size(works); ++i)
            measure(works[i], columns, chunks, numexpr[i]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
