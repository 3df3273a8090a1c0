#include "store/FolderListing.h"

#include <velmorak/Failure.h>
#include <velmorak/FolderNames.h>
#include <velmorak/Text.h>

#include <vector>

namespace velmorak {

namespace {

constexpr char separator = '\0';

}  // namespace

std::string folderListing(const std::filesystem::path& folder, const std::string& pattern) {
    return folder.string() + separator + pattern;
}

bool isFolderListing(const NamedFile& file) {
    return file && file->find(separator) != std::string::npos;
}

std::string titleOfListing(const std::string& listing) {
    const std::size_t end = listing.find(separator);
    return "the list of files " + velmorak::quoted(listing.substr(end + 1)) + " in " +
           velmorak::quoted(listing.substr(0, end));
}

std::optional<Digest> contentOfListing(const std::string& listing) {
    const std::size_t end = listing.find(separator);
    try {
        Sha256 digester;
        for (const std::string& name : namesInFolder(listing.substr(0, end), listing.substr(end + 1))) {
            digester.add(name.c_str(), name.size() + 1);
        }
        return digester.finish();
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace velmorak
