#include <velmorak/Expression.h>

#include <muParser.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <stdexcept>

#include "Row.h"
#include "Timing.h"

/// Expressions on 2 million rows, one core, beside the bulk mode of muParser and numexpr with one thread. All are given
/// the same text and the same columns, and must find the same sum.
namespace {

using namespace velmorak;

constexpr std::size_t rowCount = 2'000'000;
constexpr int rounds = 7;

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
    for (std::vector<double>& column : columns) {
        for (double& value : column) {
            value = uniform(random);
        }
    }
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
    for (const Chunk& chunk : chunks) {
        const ColumnPtr values = asReals(expression.evaluate(chunk));
        for (const double value : values->reals()) {
            sum += value;
        }
    }
    return sum;
}

/// The columns in a file, for another program.
class ColumnFile {
public:
    explicit ColumnFile(const Columns& columns) {
        std::ofstream out(file, std::ios::binary);
        for (const std::vector<double>& column : columns) {
            out.write(reinterpret_cast<const char*>(column.data()), static_cast<std::streamsize>(8 * column.size()));
        }
    }
    ~ColumnFile() { std::filesystem::remove(file); }
    ColumnFile(const ColumnFile&) = delete;
    ColumnFile& operator=(const ColumnFile&) = delete;

    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("velmorak-bench-columns-" + std::to_string(getpid()));
};

struct Answer {
    double ms = 0.0;
    double sum = 0.0;
};

/// One answer for each piece of work.
std::vector<Answer> askNumexpr(const ColumnFile& columns) {
    // The packages are those of the system's own Python.
    std::string command = "/usr/bin/python3 '" VELMORAK_BENCH_NUMEXPR "' '" + columns.file.string() + "'";
    for (const Work& work : works) {
        command += std::string(" '") + work.forNumexpr + "'";
    }
    FILE* pipe = popen(command.c_str(), "r");
    std::vector<Answer> answers(std::size(works));
    for (Answer& answer : answers) {
        if (!pipe || std::fscanf(pipe, "%lf %lf", &answer.ms, &answer.sum) != 2) {
            throw std::runtime_error("numexpr gave no answer");
        }
    }
    pclose(pipe);
    return answers;
}

void expectSame(double ours, double theirs, const std::string& who) {
    if (!(std::fabs(ours - theirs) <= 1e-9 * std::fabs(ours))) {
        throw std::runtime_error(who + " finds another sum");
    }
}

double medianOf3(const std::function<void()>& work) {
    return bench::mediansOf({work}, bench::Clock::Processor, 3).front();
}

/// One expression as two of the three sides compute it; the third is another program.
class Duel {
public:
    Duel(const Work& work, Columns& columns, const std::vector<Chunk>& rows)
        : name(std::string(work.text) + ", 2 M rows"),
          chunks(rows),
          expression(work.text, Schema({{"x"}, {"y"}, {"w"}})),
          results(rowCount) {
        parser.DefineVar("x", columns[0].data());
        parser.DefineVar("y", columns[1].data());
        parser.DefineVar("w", columns[2].data());
        parser.SetExpr(work.text);
    }

    /// Each side three times in a row, so that none finds the columns farther away than another.
    void round(const Answer& numexpr) {
        oursMs.push_back(medianOf3([&] {
            for (const Chunk& chunk : chunks) {
                expression.evaluate(chunk);
            }
        }));
        muParserMs.push_back(medianOf3([&] { parser.Eval(results.data(), static_cast<int>(rowCount)); }));
        numexprMs.push_back(numexpr.ms);
        const double sum = sumOf(expression, chunks);
        expectSame(sum, std::accumulate(results.begin(), results.end(), 0.0), "muParser");
        expectSame(sum, numexpr.sum, "numexpr");
    }

    void print() const {
        const double ours = bench::medianOf(oursMs);
        bench::printFaster(name, "numexpr, 1 thread", ours, bench::medianOf(numexprMs), 2.0);
        bench::printFaster(name, "muParser, bulk mode", ours, bench::medianOf(muParserMs), 5.0);
    }

private:
    std::string name;
    const std::vector<Chunk>& chunks;
    Expression expression;
    mu::Parser parser;
    std::vector<double> results;
    std::vector<double> oursMs;
    std::vector<double> muParserMs;
    std::vector<double> numexprMs;
};

}  // namespace

int main() {
    try {
        Columns columns = randomColumns();
        const std::vector<Chunk> chunks = chunksOf(columns);
        const ColumnFile file(columns);
        std::vector<std::unique_ptr<Duel>> duels;
        for (const Work& work : works) {
            duels.push_back(std::make_unique<Duel>(work, columns, chunks));
        }
        for (int round = 0; round < rounds; ++round) {
            const std::vector<Answer> answers = askNumexpr(file);
            for (std::size_t i = 0; i < duels.size(); ++i) {
                duels[i]->round(answers[i]);
            }
        }
        for (const auto& duel : duels) {
            duel->print();
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
