#include <velmorak/Kind.h>
#include <velmorak/Parts.h>
#include <velmorak/StateBytes.h>

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <thread>
#include <vector>

/// Kinds that do what no kind may do, where their input "how" says so.
namespace {

using namespace velmorak;

struct Foreign {};

/// Compilers leave out memory that nobody reads.
void fillMemory() {
    std::vector<std::vector<char>> all;
    for (;;) {
        all.emplace_back(std::size_t{1} << 20U, 'x');
        all.back()[all.size() % 1024] = 'y';
    }
}

[[noreturn]] void hang(const std::string& sign) {
    std::ofstream(sign) << "hangs\n";
    for (;;) {
        pause();
    }
}

void misbehave(const std::string& how, const std::string& sign) {
    if (how == "segfault") {
        std::raise(SIGSEGV);
    } else if (how == "abort") {
        std::abort();
    } else if (how == "exit") {
        _exit(3);
    } else if (how == "kill") {
        std::raise(SIGKILL);
    } else if (how == "throw") {
        throw Foreign();
    } else if (how == "memory") {
        fillMemory();
    } else if (how == "hang") {
        hang(sign);
    } else if (how == "print") {
        std::cout << "by a stream\n";
        std::printf("by the C library\n");
    } else if (how == "fail") {
        throw Failure("how", "it was made to fail");
    }
}

InputSpec howInput() {
    return {.name = "how",
            .description = "What to do.",
            .type = ValueType::Choice,
            .value = "well",
            .choices = {"well", "segfault", "abort", "exit", "kill", "throw", "memory", "hang", "print", "fail"}};
}

InputSpec textInput(const std::string& name) {
    return {.name = name, .description = "A text.", .type = ValueType::Text, .value = ""};
}

InputSpec tableInput() {
    return {.name = "table", .description = "Rows.", .type = ValueType::Table};
}

/// So that a plug-in may be wired behind another one.
InputSpec afterInput() {
    return {.name = "after", .description = "Any number.", .value = "0"};
}

OutputSpec tableOutput() {
    return {.name = "table", .description = "Rows.", .type = ValueType::Table};
}

class Trouble : public Function {
public:
    std::string name() const override { return "Trouble"; }
    std::string summary() const override { return "Gives 1, or makes trouble."; }
    Ports ports(const ValueTexts& values) const override {
        Ports ports{{howInput(), textInput("sign"), afterInput(), textInput("more")},
                    {{.name = "number", .description = "1."}}};
        const auto more = values.find("more");
        if (more != values.end() && more->second == "crash") {
            std::abort();
        } else if (more != values.end() && !more->second.empty()) {
            ports.inputs.push_back(textInput(more->second));
        }
        return ports;
    }
    std::string refusal(const std::string& input, const std::string& value) const override {
        if (value == "crash") {
            std::abort();
        }
        return input == "sign" && value == "bad" ? "bad is no sign" : "";
    }
    void evaluate(const Arguments& arguments, Results& results, RunContext&) const override {
        misbehave(arguments.text("how"), arguments.text("sign"));
        results.set("number", 1.0);
    }
};

/// What a kind may ask of its run, in one text.
class Asks : public Function {
public:
    std::string name() const override { return "Asks"; }
    std::string summary() const override { return "Says what it was told."; }
    Ports ports(const ValueTexts&) const override {
        return {{{.name = "number", .description = "A number.", .value = "0.1"}, textInput("text")},
                {{.name = "told", .description = "All of it.", .type = ValueType::Text}}};
    }
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override {
        std::string told = context.pluginName() + ' ' + textOf(arguments.number("number")) + ' ' +
                           arguments.text("text") + ' ' + (arguments.isWired("text") ? "wired" : "entered") + ' ' +
                           (arguments.has("other") ? "other" : "no other") + ' ' + arguments.sourceName("number");
        told += ' ' + std::to_string(context.record().plugins.size());
        told += ' ' + factOf(context, "a fact", [&] { return context.locate("file").filename().string(); });
        context.writeResult("written.txt", [](const auto& path) { std::ofstream(path) << "by the kind\n"; });
        std::thread([&context] { context.warn("from a thread of its own"); }).join();
        try {
            static_cast<void>(arguments.integer("number"));
        } catch (const Failure& failure) {
            told += ' ' + failure.input() + ": " + failure.what();
        }
        results.set("told", told);
    }
};

class TroubleRows : public RowWise {
public:
    std::string name() const override { return "TroubleRows"; }
    std::string summary() const override { return "Adds the column twice, the double of x, or makes trouble."; }
    Ports ports(const ValueTexts&) const override {
        return {{tableInput(), howInput(), textInput("sign")}, {tableOutput()}};
    }
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext&) const override {
        return std::make_unique<Rows>(schema, arguments.text("how"), arguments.text("sign"));
    }

private:
    class Rows : public RowOperation {
    public:
        Rows(Schema schema, std::string how, std::string sign)
            : columns(std::move(schema)), how(std::move(how)), sign(std::move(sign)) {
            columns.add({.name = "twice"});
        }
        const Schema& schema() const override { return columns; }
        Chunk apply(const Chunk& chunk) const override {
            if (chunk.number == 1) {
                misbehave(how, sign);
            }
            Chunk made = chunk;
            std::vector<double> twice = chunk.columns.front()->reals();
            for (double& value : twice) {
                value *= 2;
            }
            made.columns.push_back(columnOf(twice));
            return made;
        }

    private:
        Schema columns;
        const std::string how;
        const std::string sign;
    };
};

class TroubleSum : public Accumulator {
public:
    std::string name() const override { return "TroubleSum"; }
    std::string summary() const override { return "Adds the last column, or makes trouble."; }
    Ports ports(const ValueTexts&) const override {
        return {{tableInput(), howInput(), textInput("sign")}, {{.name = "sum", .description = "The sum."}}};
    }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema*, RunContext&) const override {
        return std::make_unique<Sums>(arguments.text("how"), arguments.text("sign"));
    }

private:
    struct Sum : AccumulatorState {
        Sum(const std::string& how, const std::string& sign) : how(how), sign(sign) {}
        void fill(const Chunk& chunk) override {
            for (const double value : chunk.columns.back()->reals()) {
                sum += value;
            }
        }
        void merge(AccumulatorState& other) override {
            misbehave(how, sign);
            sum += dynamic_cast<Sum&>(other).sum;
        }
        void save(StateWriter& writer) const override {
            writer.version(1);
            writer.number(sum);
        }
        void load(StateReader& reader) override {
            reader.version(1);
            sum = reader.number<double>();
        }

        const std::string& how;
        const std::string& sign;
        double sum = 0.0;
    };
    class Sums : public Accumulation {
    public:
        Sums(std::string how, std::string sign) : how(std::move(how)), sign(std::move(sign)) {}
        std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<Sum>(how, sign); }
        void finish(AccumulatorState& state, Results& results) override {
            results.set("sum", dynamic_cast<Sum&>(state).sum);
        }

    private:
        const std::string how;
        const std::string sign;
    };
};

class TroubleSource : public Source {
public:
    std::string name() const override { return "TroubleSource"; }
    std::string summary() const override { return "Gives rows of x, or makes trouble in the second chunk."; }
    Ports ports(const ValueTexts&) const override {
        return {{{.name = "rows", .description = "How many.", .value = "100000"},
                 howInput(),
                 textInput("sign"),
                 afterInput()},
                {tableOutput()}};
    }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext&) const override {
        return std::make_unique<Reader>(static_cast<std::uint64_t>(arguments.integer("rows")), arguments.text("how"),
                                        arguments.text("sign"));
    }

private:
    class Reader : public TableReader {
    public:
        Reader(std::uint64_t rows, std::string how, std::string sign)
            : left(rows), how(std::move(how)), sign(std::move(sign)) {
            columns.add({.name = "x"});
        }
        const Schema& schema() const override { return columns; }
        bool next(Chunk& chunk) override {
            chunk.rows = std::min<std::uint64_t>(left, chunkRows);
            std::vector<double> values(chunk.rows);
            for (double& value : values) {
                value = 0.1 * static_cast<double>(++row);
            }
            chunk.columns = {columnOf(values)};
            left -= chunk.rows;
            return chunk.rows > 0;
        }
        void complete(Chunk& chunk) const override {
            if (chunk.number == 1) {
                misbehave(how, sign);
            }
        }

    private:
        Schema columns;
        std::uint64_t left;
        std::uint64_t row = 0;
        const std::string how;
        const std::string sign;
    };
};

}  // namespace

VELMORAK_COLLECTION(registry) {
    registry.group("Troubles");
    registry.add(std::make_unique<Trouble>());
    registry.add(std::make_unique<Asks>());
    registry.add(std::make_unique<TroubleRows>());
    registry.add(std::make_unique<TroubleSum>());
    registry.add(std::make_unique<TroubleSource>());
}
