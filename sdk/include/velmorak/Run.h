#pragma once

#include <velmorak/Histogram1D.h>
#include <velmorak/RunRecord.h>
#include <velmorak/Table.h>
#include <velmorak/Value.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace velmorak {

/// A result file that is being written. Destroyed before keep, it leaves nothing behind.
class ResultFile {
public:
    virtual ~ResultFile() = default;
    /// Where to write: a temporary name in the folder that the file will stand in.
    virtual const std::filesystem::path& path() const = 0;
    /// Gives the closed file its final name. @throws Failure if that cannot be done.
    virtual void keep() = 0;
};

/// What one plug-in may ask of the run that executes it.
/// Threads: every operation may be called on any thread.
class RunContext {
public:
    virtual ~RunContext() = default;

    /// The user wants the run to end. Every loop over rows, bytes or bins polls this and throws Stopped.
    virtual bool isStopping() const = 0;

    /// Name of the plug-in in the pipeline.
    virtual const std::string& pluginName() const = 0;

    /// A file that the user named in a value. A relative name is looked for beside the document, then in the current
    /// folder.
    /// @throws Failure if the text is empty.
    virtual std::filesystem::path inputFile(const std::string& text) const = 0;

    /// The AIDA file named on the command line; empty when there is none.
    virtual std::filesystem::path commandLineAida() const = 0;

    /// Writes a result file. A relative name lands in the results folder; an absolute one, or one that leaves the
    /// folder, is refused unless the environment allows it. The writer is given a temporary name; the file takes its
    /// final name only when the writer has returned.
    /// @throws Failure if the name is refused or the file cannot be made; and whatever the writer throws.
    virtual void writeResult(const std::string& fileName,
                             const std::function<void(const std::filesystem::path&)>& writer) = 0;

    /// As writeResult, for a file that is written piece by piece while a table passes.
    /// @throws Failure if the name is refused or the file cannot be made.
    virtual std::unique_ptr<ResultFile> beginResult(const std::string& fileName) = 0;

    /// One line for the user that does not end the plug-in.
    virtual void warn(const std::string& sentence) = 0;

    /// Text that the user asked to see, of one or more lines; it appears among the messages of the run.
    virtual void tell(const std::string& /*text*/) {}

    /// What the plug-in's result is made from: the plug-in itself and all that is upstream of it, with the files that
    /// were read up to now. It never differs between two runs of which the second could use the first one's result.
    /// Called on the thread that the run called the kind on.
    virtual RunRecord record() const { return {}; }
};

/// The inputs of one plug-in in one run, by name. A wired input gives what came by wire, any other what its text says.
/// An unknown name, or one of another type, is a mistake of the kind's author and ends in std::logic_error.
class Arguments {
public:
    virtual ~Arguments() = default;

    virtual double number(const std::string& input) const = 0;
    /// A number without fraction. @throws Failure if it has one or is out of range.
    virtual std::int64_t integer(const std::string& input) const = 0;
    /// Of a text or choice input.
    virtual const std::string& text(const std::string& input) const = 0;
    /// What came by wire into an input of any other type; monostate when nothing is wired.
    virtual const Value& value(const std::string& input) const = 0;
    virtual bool isWired(const std::string& input) const = 0;
    /// Name of the plug-in that feeds the input; empty when nothing is wired.
    virtual const std::string& sourceName(const std::string& input) const = 0;

    /// @throws Failure if nothing is wired or it is no one-dimensional histogram.
    HistogramPtr histogram(const std::string& input) const;
};

/// The outputs of one plug-in in one run, by name. An unknown name is a mistake of the kind's author.
class Results {
public:
    virtual ~Results() = default;
    virtual void set(const std::string& output, Value value) = 0;
};

}  // namespace velmorak
