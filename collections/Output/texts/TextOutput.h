#pragma once

#include <velmorak/Run.h>

#include <fstream>
#include <memory>
#include <string>

namespace velmorak {

/// A text file that is being written. Nothing is on disk before the first call; without complete() the file is removed.
/// Threads: one at a time.
class TextOutput {
public:
    /// @param first first part of the text.
    /// @param context outlives this.
    TextOutput(std::string name, std::string first, RunContext& context);

    /// @throws Failure if the file cannot be created or written.
    void append(const std::string& text);
    /// Renames the file to its final name. @throws Failure if that fails.
    void complete();

private:
    void begin();
    void write(const std::string& text);
    [[noreturn]] void fail() const;

    std::string name;
    std::string first;
    RunContext* context;
    std::unique_ptr<ResultFile> file;
    std::ofstream out;
};

}  // namespace velmorak
