#pragma once

#include <velmorak/FolderNames.h>
#include <velmorak/Histogram.h>
#include <velmorak/RunRecord.h>
#include <velmorak/Table.h>
#include <velmorak/Value.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace velmorak {

/// A result file that is being written. If it is destroyed before keep, nothing is left behind.
class ResultFile {
public:
    virtual ~ResultFile() = default;
    /// The file to write to: a temporary name in the final folder.
    virtual const std::filesystem::path& path() const = 0;
    /// Gives the closed file its final name. @throws Failure if that is impossible.
    virtual void keep() = 0;
};

/// The services that a run offers to a plug-in while executing it.
/// Threads: every operation may be called on any thread.
class RunContext {
public:
    virtual ~RunContext() = default;

    /// The user has stopped the run. Every loop over rows, bytes or bins polls this and throws Stopped.
    virtual bool isStopping() const = 0;

    /// Name of the plug-in in the pipeline.
    virtual const std::string& pluginName() const = 0;

    /// Resolves a file name that the user entered. A relative name is searched in the document's folder, then in the
    /// current folder.
    /// @throws Failure if the text is empty.
    virtual std::filesystem::path inputFile(const std::string& text) const = 0;

    /// Resolves the name of a file or folder as inputFile does, but does not record it as an input: for a look at what
    /// is there. An empty text gives an empty path.
    virtual std::filesystem::path locate(const std::string& text) const { return text; }

    /// The AIDA file given on the command line; empty if there is none.
    virtual std::filesystem::path commandLineAida() const = 0;

    /// Writes a result file. A relative name is placed in the results folder; an absolute name, or one that leaves the
    /// folder, is rejected unless the environment allows it. The writer receives a temporary name; the file gets its
    /// final name after the writer has returned.
    /// @throws Failure if the name is rejected or the file cannot be created, and whatever the writer throws.
    virtual void writeResult(const std::string& fileName,
                             const std::function<void(const std::filesystem::path&)>& writer) = 0;

    /// As writeResult, for a file that is written in pieces while the chunks of a table arrive.
    /// @throws Failure if the name is rejected or the file cannot be created.
    virtual std::unique_ptr<ResultFile> beginResult(const std::string& fileName) = 0;

    /// As namesInFolder, for a folder that is resolved as locate does. Records the answer as an input: the plug-in is
    /// executed anew when it changes.
    virtual std::vector<std::string> namesIn(const std::string& folder, const std::string& pattern) const {
        return namesInFolder(locate(folder), pattern);
    }

    /// Only the columns of a table are wanted, to show them to the user; no row will be read.
    virtual bool isPreview() const { return false; }

    /// Reports a file of several that cannot be read, or not to its end, and that the plug-in goes on without. The user
    /// is warned, the run's record lists it, and nothing that depends on it is kept for later runs.
    virtual void skipFile(const std::filesystem::path& file, const std::string& reason) {
        warn("skips \"" + file.string() + "\": " + reason);
    }

    /// Shows the user a one-line warning; the plug-in goes on.
    virtual void warn(const std::string& sentence) = 0;

    /// Prints text that the user asked for, of one or more lines, among the messages of the run.
    virtual void tell(const std::string& /*text*/) {}

    /// The provenance of the plug-in's result: the plug-in and everything upstream, with the files read so far. It is
    /// the same in two runs whenever the second may reuse the result of the first.
    /// Threads: only on the thread on which the run called the kind.
    virtual RunRecord record() const { return {}; }

    /// Limit for the cells of an object that is read from a file, which may declare any number of bins.
    virtual double maxCells() const { return defaultMaxCells; }

    /// Date of the files that are written, in seconds since 1970; nothing: the date of writing.
    virtual std::optional<double> fixedDate() const { return std::nullopt; }

    static constexpr double defaultMaxCells = 0x1p24;
};

/// The inputs of one plug-in in one run, by name. The value of a wired input comes from the wire, that of any other
/// from its text. Asking for an unknown name or another type is a programming error and throws std::logic_error.
class Arguments {
public:
    virtual ~Arguments() = default;

    virtual double number(const std::string& input) const = 0;
    /// The number with the error that it has if it comes by wire.
    virtual NumberWithError numberWithError(const std::string& input) const { return NumberWithError(number(input)); }
    /// @throws Failure if the number has a fraction or is out of range.
    virtual std::int64_t integer(const std::string& input) const = 0;
    /// Of a text or choice input.
    virtual const std::string& text(const std::string& input) const = 0;
    /// The value from the wire of an input of any other type; monostate if it is not wired.
    virtual const Value& value(const std::string& input) const = 0;
    virtual bool isWired(const std::string& input) const = 0;
    /// @return whether the plug-in has the input, for inputs that depend on values.
    virtual bool has(const std::string& input) const = 0;
    /// Of an input that mayFail: how the plug-in that feeds it failed, as a sentence; empty if it did not. The input
    /// has no value then, or one that Results::leave gave.
    virtual std::string whyMissing(const std::string& /*input*/) const { return {}; }
    /// Name of the plug-in that feeds the input; empty if it is not wired.
    virtual const std::string& sourceName(const std::string& input) const = 0;
    /// Name of the output that feeds the input; empty if it is not wired.
    virtual const std::string& sourceOutput(const std::string& input) const = 0;

    /// @throws Failure if the input is not wired or its value is not a one-dimensional histogram.
    HistogramPtr histogram(const std::string& input) const;
};

/// The outputs of one plug-in in one run, by name. Setting an unknown name is a programming error and throws
/// std::logic_error.
class Results {
public:
    virtual ~Results() = default;
    virtual void set(const std::string& output, Value value) = 0;
    /// Any number, such as an integer, as a double.
    template <typename Number>
    requires std::is_arithmetic_v<Number>
    void set(const std::string& output, Number number) { set(output, Value(static_cast<double>(number))); }
    /// Leaves what the plug-in has got before it fails, for inputs that mayFail and for reports: for example the last
    /// curve of a fit that does not converge.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): those who override it keep the value.
    virtual void leave(const std::string& /*output*/, Value /*value*/) {}
};

}  // namespace velmorak
