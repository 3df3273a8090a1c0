#include "store/FolderListing.h"

#include <velmorak/Failure.h>
#include <velmorak/FolderNames.h>
#include <velmorak/Text.h>

namespace velmorak {

namespace {

constexpr char separator = '\0';

std::string patternOf(const std::string& listing) {
    return listing.substr(listing.find(separator) + 1);
}

}  // namespace

std::string folderListing(const std::string& folder, const std::string& pattern) {
    return folder + separator + pattern;
}

bool isFolderListing(const NamedFile& file) {
    return file && file->find(separator) != std::string::npos;
}

std::string folderOfListing(const std::string& listing) {
    return listing.substr(0, listing.find(separator));
}

std::string titleOfListing(const std::string& listing) {
    return "the list of files " + velmorak::quoted(patternOf(listing)) + " in " +
           velmorak::quoted(folderOfListing(listing));
}

Digest digestOfNames(const std::vector<std::string>& names) {
    Sha256 digester;
    for (const std::string& name : names) {
        digester.add(name.c_str(), name.size() + 1);
    }
    return digester.finish();
}

std::optional<Digest> contentOfListing(const std::string& listing, const std::filesystem::path& folder) {
    try {
        return digestOfNames(namesInFolder(folder, patternOf(listing)));
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace velmorak
