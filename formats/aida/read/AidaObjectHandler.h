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

/// Builds the histograms, profiles, points and functions of an AIDA file from its elements; tuples and points of clouds
/// are skipped. An object that cannot be built is reported as a warning, and the others are read.
class AidaObjectHandler : public XmlHandler {
public:
    /// Whether to build the object with this path and element.
    using Choice = std::function<bool(const std::string& path, const std::string& element)>;

    AidaObjectHandler(std::filesystem::path file, Choice isWanted, RunContext& context);

    /// Sets the reader that calls this handler; must be called before it reads.
    void attach(XmlReader& xmlReader) { reader = &xmlReader; }

    /// All complete objects in order; object is null if it is not wanted, cannot be built, or is a table.
    std::vector<AidaObject>& objects() { return found; }
    /// Reports the number of suppressed warnings.
    void finish() { warnings.finish(file.string()); }

    void beginElement(const char* name, const char* const* attributes) override;
    void endElement(const char* name) override;
    void characters(std::string_view text) override;
    void beginDocument() override;
    bool continuesAfter(const std::string& damage) override;

private:
    void beginObject(std::string_view name, const char* const* attributes);
    void endObject();
    /// @return false if the element has no meaning here; it is then skipped with its contents.
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
    double maxCells;
    FewWarnings warnings;
    XmlReader* reader = nullptr;
    ObjectPaths paths;
    std::vector<AidaObject> found;
    std::optional<ParsedObject> parsed;  ///< The object that is being read.
    std::string package;
    std::size_t held = 0;      ///< Bytes of the parsed object.
    std::size_t declared = 0;  ///< Bins that its axes declare, which are not counted in held.
    std::size_t depth = 0;
    std::size_t skippedFrom = 0;  ///< Depth of the element that is being skipped; 0 for none.
    bool isBuilt = false;
    bool isInCodelet = false;
    std::set<std::string> warned;
};

}  // namespace velmorak::io
