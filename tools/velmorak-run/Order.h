#pragma once

#include <optional>
#include <string>
#include <vector>

enum ExitStatus { AllDone = 0, NotUsable = 1, PluginFailed = 2, WasStopped = 3 };

/// What the command line asks for.
struct Order {
    std::string document;
    std::string aidaFile;
    std::vector<std::string> settings;  ///< PLUGIN.INPUT=VALUE
    std::string scan;                   ///< PLUGIN.INPUT=VALUES; empty when none is asked for.
    std::string start;                  ///< Plug-in to start at; empty for the document's own.
    std::string resultsFolder;          ///< Empty for the one beside the document.
    int threads = 0;                    ///< 0: as the environment says.
    double timeoutSeconds = 0.0;        ///< 0: none.
    bool isList = false;
    bool isCheck = false;
    bool isWhy = false;
};

/// @return nothing when the program is to end with the status, after what had to be said.
std::optional<Order> readOrder(int argc, char** argv, ExitStatus& status);
