#pragma once

#include <QzManager.h>

#include <filesystem>
#include <map>
#include <string>

namespace velmorak::bench {

/// The work that takes most of the time of a run, with the shipped kinds.
struct Phase {
    std::string name;
    std::string plugins;  ///< Of the document.
};

/// Reading a packed tuple and filling from it, drawing, writing.
const std::vector<Phase>& phases();

/// A folder with data, a document of one phase in it, and what its run leaves.
class Work {
public:
    /// Writes the data. Results are kept nowhere but in the program.
    Work();
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    /// @return where the document is.
    std::filesystem::path write(const Phase& phase) const;
    /// By name: contents of the files that the last run left, without its record, which tells of stops.
    std::map<std::string, std::string> results() const;
    void removeResults() const;

private:
    std::filesystem::path folder;
};

}  // namespace velmorak::bench
