#pragma once

#include "TestKinds.h"

#include "run/Runner.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace velmorak::test {

/// A pipeline that is put together by names and run.
class RunTest : public ::testing::Test {
protected:
    RunTest() {
        folder = std::filesystem::temp_directory_path() / ("velmorak-run-" + std::to_string(getpid()));
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        pipeline.documentFolder = folder;
        pipeline.resultsFolder = folder / "test.results";
    }

    ~RunTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::size_t add(const Kind& kind, const std::string& name, const ValueTexts& values = {}) {
        const Ports ports = kind.ports(values);
        PipelineNode node{name, kind.name(), &kind, {}, ports.outputs};
        for (const InputSpec& spec : ports.inputs) {
            const auto given = values.find(spec.name);
            node.inputs.push_back({spec, given == values.end() ? spec.value : given->second, std::nullopt});
        }
        pipeline.nodes.push_back(node);
        return pipeline.nodes.size() - 1;
    }

    void wire(const std::string& from, const std::string& output, const std::string& to, const std::string& input) {
        inputOf(to, input).wire = PipelineWire{positionOf(from), output};
    }

    void set(const std::string& name, const std::string& input, const std::string& value) {
        inputOf(name, input).value = value;
    }

    /// Moves a plug-in to the front, as the manager does.
    void start(const std::string& name) {
        const std::size_t first = positionOf(name);
        const auto moved = [first](std::size_t at) { return at == first ? 0 : at < first ? at + 1 : at; };
        for (PipelineNode& node : pipeline.nodes) {
            for (PipelineInput& input : node.inputs) {
                if (input.wire) {
                    input.wire->node = moved(input.wire->node);
                }
            }
        }
        const auto begin = pipeline.nodes.begin();
        std::rotate(begin, begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(first) + 1);
    }

    void run() {
        messages.str("");
        report = runner.run(pipeline);
    }

    const NodeReport& of(const std::string& name) const { return report.nodes.at(positionOf(name)); }
    NodeStatus status(const std::string& name) const { return of(name).status; }
    std::string sentence(const std::string& name) const { return of(name).sentence; }
    double number(const std::string& name) const { return std::get<double>(of(name).outputs.at(0)); }
    std::string text(const std::string& name, std::size_t output = 0) const {
        return std::get<std::string>(of(name).outputs.at(output));
    }

    bool wasSaid(const std::string& line) const {
        return ("\n" + messages.str()).find("\n" + line + "\n") != std::string::npos;
    }

    void write(const std::string& fileName, const std::string& content) const {
        std::ofstream(folder / fileName) << content;
    }

    std::string content(const std::filesystem::path& file) const {
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }

    PipelineInput& inputOf(const std::string& name, const std::string& input) {
        for (PipelineInput& candidate : pipeline.nodes[positionOf(name)].inputs) {
            if (candidate.spec.name == input) {
                return candidate;
            }
        }
        throw std::out_of_range(input);
    }

    std::size_t positionOf(const std::string& name) const {
        for (std::size_t i = 0; i < pipeline.nodes.size(); ++i) {
            if (pipeline.nodes[i].name == name) {
                return i;
            }
        }
        throw std::out_of_range(name);
    }

    std::filesystem::path folder;
    std::ostringstream messages;
    Runner runner{messages, false};
    Pipeline pipeline;
    RunReport report;
};

/// A function with a number input "value" that gives it on, and fails when it is 13.
class PassKind : public FreeFunction {
public:
    PassKind()
        : FreeFunction("Pass", {{numberInput("value")}, {output("number", ValueType::Number)}},
                       [](const Arguments& arguments, Results& results, RunContext&) {
                           if (arguments.number("value") == 13.0) {
                               throw Failure("value", "13 brings bad luck");
                           }
                           results.set("number", arguments.number("value"));
                       }) {}
};

}  // namespace velmorak::test
