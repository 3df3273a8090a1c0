#pragma once

#include <velmorak/Run.h>

#include <fstream>
#include <memory>
#include <string>

namespace velmorak {

/// A text file in the making. Nothing is on disk before the first call, and nothing stays there without complete().
/// Threads: one at a time.
class TextOutput {
public:
    /// @param beginning of the text.
    /// @param runContext outlives this.
    TextOutput(std::string fileName, std::string beginning, RunContext& runContext);

    /// @throws Failure if the file cannot be made or written.
    void append(const std::string& text);
    /// Gives the file its name. @throws Failure if that cannot be done.
    void complete();

private:
    void begin();
    void write(const std::string& text);

    std::string name;
    std::string first;
    RunContext* context;
    std::unique_ptr<ResultFile> file;
    std::ofstream out;
};

}  // namespace velmorak
