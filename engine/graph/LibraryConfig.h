#pragma once

#include "graph/collections/Catalogue.h"

#include "run/RunConfig.h"

#include <filesystem>

namespace velmorak {

/// Everything that the environment decides on in this folder; docs/environment.md lists the variables.
struct LibraryConfig {
    Catalogue::SearchPath search;
    RunConfig runs;
    std::filesystem::path journals;  ///< Folder of unsaved documents; empty: none are kept.
    bool mayWriteAnywhere = false;   ///< Runs may write outside of their results folders.
};

/// VELMORAK_COLLECTIONS and VELMORAK_EXAMPLES come before what lies beside the library, and between them the
/// collections in `velmorak/collections` in XDG_DATA_HOME, or else in ~/.local/share; notes about collections are kept
/// in `velmorak/loading` in XDG_STATE_HOME, or else in ~/.local/state, unsaved documents in `velmorak/journal` there
/// unless VELMORAK_JOURNAL is 0. VELMORAK_WRITE_ANYWHERE must be 1 to allow that. IsolationConfig.h has
/// the variables about helper processes.
LibraryConfig libraryConfigFromEnvironment();

}  // namespace velmorak
