#pragma once

#include "aida/read/AidaParsedObject.h"
#include "aida/read/FewWarnings.h"
#include "aida/read/ObjectPaths.h"
#include "aida/text/XmlReader.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <velmorak/Aida.h>

namespace velmorak::io {

/// Follows the elements of an AIDA file and makes its histograms, profiles, points and functions; tuples and points of
/// clouds are passed over. What cannot be made is told as a warning, and the rest is read.
class AidaObjectHandler : public XmlHandler {
public:
    /// Whether an object of a path and an element is to be made.
    using Choice = std::function<bool(const std::string& path, const std::string& element)>;

    AidaObjectHandler(std::filesystem::path path, Choice isWantedObject, RunContext& runContext);

    /// The reader that this walk is the handler of, told right after both are made.
    void attach(XmlReader& xmlReader) { reader = &xmlReader; }

    /// All objects that are complete, in their order; with none made where it is not wanted, cannot be, or is a table.
    std::vector<AidaObject>& objects() { return found; }
    /// Says how many warnings were left out.
    void finish() { warnings.finish(file.string()); }

    void beginElement(const char* name, const char* const* attributes) override;
    void endElement(const char* name) override;
    void characters(std::string_view text) override;
    void beginDocument() override;
    bool continuesAfter(const std::string& damage) override;

private:
    void beginObject(std::string_view name, const char* const* attributes);
    void endObject();
    /// @return false where the element has no meaning here; it is then skipped with all that is in it.
    bool inObject(std::string_view name, const char* const* attributes);
    bool inHistogram(std::string_view name, const char* const* attributes);
    bool inPoints(std::string_view name, const char* const* attributes);
    bool inFunction(std::string_view name, const char* const* attributes);
    void putItem(const char* const* attributes);
    void putBin(const char* const* attributes, std::size_t dimensions);
    void putAxisTitle(const char* const* attributes);
    bool hold(std::size_t bytes);
    void warn(const std::string& about, const std::string& sentence);

    std::filesystem::path file;
    Choice isWanted;
    FewWarnings warnings;
    XmlReader* reader = nullptr;
    ObjectPaths paths;
    std::vector<AidaObject> found;
    std::optional<RawObject> raw;  ///< Of the object that is open.
    std::string package;
    std::size_t held = 0;      ///< Bytes of it.
    std::size_t promised = 0;  ///< Bins of it that are not counted among them, because its axes say so many.
    std::size_t depth = 0;
    std::size_t skippedFrom = 0;  ///< Depth of the element that is skipped; 0 for none.
    bool isMade = false;
    bool isInCodelet = false;
    std::set<std::string> warned;
};

}  // namespace velmorak::io
