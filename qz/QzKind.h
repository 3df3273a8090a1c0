#pragma once

#include <string>

/// One kind of plug-in that the library offers. The position of a record in QzManager::GetPlugins() is its kind
/// number. A group's kinds stand together in that list.
struct QzKind {
    std::string id;         ///< The library's own key, unique among all kinds: group, a slash, name.
    std::string group;      ///< Collection that the kind belongs to.
    std::string library;    ///< Shared object that brought the kind, as a path.
    std::string directory;  ///< Folder of the collection, ending in '/'; holds its plugin_summary.txt.
    std::string name;       ///< Shown to the user, and the key under which a plug-in of this kind is made.
    std::string summary;    ///< One sentence: what a plug-in of this kind does.
};

/// One example document that the library knows of. A group's examples stand together in QzManager::GetExamples().
struct QzExample {
    std::string name;       ///< File name of the document, without folder.
    std::string group;      ///< Heading under which the example is listed.
    std::string directory;  ///< Folder that holds the document; directory, '/', name is its path.
    std::string summary;    ///< One sentence: what the example shows.
};
