#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

enum ExitStatus {
    AllDone = 0,
    NotUsable = 1,
    PluginFailed = 2,
    WasStopped = 3,
    ResultsDiffer = 4,
    FilesSkipped = 5,
    PartsMissing = 6
};

/// The parsed command line.
struct Options {
    std::string document;  ///< Or the folder of a job, for part, merge and status.
    std::string aidaFile;
    std::vector<std::string> settings;  ///< PLUGIN.INPUT=VALUE
    std::vector<std::string> scans;     ///< PLUGIN.INPUT=VALUES
    std::string again;                  ///< Record of the run to repeat; empty for a document.
    std::string events;                 ///< File for events, or "-"; empty for none.
    std::string start;                  ///< Plug-in to start at; empty for the document's own.
    std::string resultsFolder;          ///< Empty for the one beside the document.
    int threads = 0;                    ///< 0: as VELMORAK_THREADS says.
    double timeoutSeconds = 0.0;        ///< 0: none.
    std::string job;                    ///< Folder for the plan of a job; empty to run now.
    std::size_t parts = 0;              ///< Of each pass of the job.
    std::string part;                   ///< Number of the part to do, or auto; empty for none.
    bool isBundle = false;              ///< The job goes to other machines with the files of one part.
    bool isMerge = false;
    bool isPartial = false;
    bool isStatus = false;
    bool isList = false;
    bool isCheck = false;
    bool isWhy = false;
    std::string look;  ///< File to look into; empty for a document.
    bool isJson = false;
};

/// Parses the command line; prints help, version, or an error.
/// @return nothing when the program must end with the status.
std::optional<Options> parseOptions(int argc, char** argv, ExitStatus& status);
