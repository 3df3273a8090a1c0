#include "kinds.h"

#include <velmorak/Text.h>

#include <yoda/YodaFile.h>

#include <algorithm>
#include <string_view>

namespace velmorak {
namespace {

/// A file may begin with comments and blank lines.
bool beginsWithObject(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        if (line.starts_with("BEGIN YODA_") || line.starts_with("# BEGIN YODA_")) {
            return true;
        }
        if (!line.empty() && !line.starts_with('#')) {
            return false;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return false;
}

std::string lineAbout(const YodaEntry& entry) {
    if (!entry.problem.empty()) {
        return "cannot be read: " + entry.problem;
    }
    if (const auto* object = std::get_if<DataObjectPtr>(&entry.value)) {
        return summaryOf(**object);
    }
    const std::optional<NumberWithError> number = numberIn(entry.value);
    return number ? textOf(number->value()) : std::string();
}

/// Histograms, profiles, points and numbers.
class YodaFormat : public FileFormat {
public:
    std::string name() const override { return "YODA"; }
    std::string description() const override { return "a YODA file"; }
    std::string tableKind() const override { return {}; }
    std::string objectKind() const override { return "YodaObjects"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& /*object*/,
                                                  const std::vector<std::string>& /*columns*/) const override;
};

Recognition YodaFormat::recognise(const FileStart& start) const {
    return beginsWithObject(start.unpacked) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> YodaFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    std::vector<FileObject> found;
    for (const YodaEntry& entry : readYoda(file, context)) {
        found.push_back({.path = entry.path, .type = entry.type, .description = lineAbout(entry)});
    }
    return found;
}

std::shared_ptr<const FileOpener> YodaFormat::tableOpener(const std::string& /*object*/,
                                                          const std::vector<std::string>& /*columns*/) const {
    return nullptr;
}

}  // namespace

std::unique_ptr<FileFormat> makeYodaFormat() {
    return std::make_unique<YodaFormat>();
}

}  // namespace velmorak
