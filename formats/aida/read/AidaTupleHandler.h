#pragma once

#include "aida/read/AidaColumns.h"
#include "aida/read/FewWarnings.h"
#include "aida/read/ObjectPaths.h"
#include "aida/read/TupleBuilder.h"
#include "aida/text/XmlReader.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <velmorak/Aida.h>

namespace velmorak::io {

struct AidaObjectType;

/// Handles the elements of an AIDA file: lists its objects, reads the headers of tuples and clouds, and builds the rows
/// of the wanted one.
class AidaTupleHandler : public XmlHandler {
public:
    /// @param wanted path of the object whose rows are built; empty to only list the objects.
    AidaTupleHandler(std::filesystem::path file, std::string wanted, RunContext& context);

    /// Sets the reader that calls this handler; must be called before it reads.
    void attach(XmlReader& xmlReader) { reader = &xmlReader; }

    /// Objects whose beginnings, including headers, have been read.
    const std::vector<AidaEntry>& entries() const { return found; }
    /// Null until the header of the wanted object has been read; the reader then pauses.
    TupleBuilder* builder() { return hasBegun ? rowBuilder.get() : nullptr; }
    /// As TupleBuilder::selectColumns, once there is a builder and before its rows are read.
    void selectColumns(const std::vector<bool>& needed);
    /// Appends the rows to those of another tuple, which must have the same columns.
    void appendTo(std::unique_ptr<TupleBuilder> rows) { rowBuilder = std::move(rows); }
    /// Complete rows, including those of the tuple that is appended to.
    const std::unique_ptr<TupleBuilder>& rows() const { return rowBuilder; }
    std::unique_ptr<TupleBuilder> release() { return std::move(rowBuilder); }
    /// Paths of the tuples that the wanted one refers to instead of having rows.
    const std::vector<std::string>& chain() const { return members; }
    /// The wanted object has been read to its end.
    bool isDone() const { return done; }

    void beginElement(const char* name, const char* const* attributes) override;
    void endElement(const char* name) override;
    const std::vector<PlainColumn>* plainColumns() const override { return isInPlainRows ? &plain : nullptr; }
    bool isBetweenRows() const override { return states.back() == State::Rows || states.back() == State::SkippedRows; }
    std::size_t takeRows(const RowFastPath& rows, std::size_t first) override;
    void beginDocument() override;
    bool continuesAfter(const std::string& damage) override;
    /// Damage of skipped files of an archive.
    const std::vector<std::string>& damages() const { return reported; }

private:
    enum class State {
        File,
        Root,
        Skipped,
        Tuple,
        Columns,
        Column,
        Rows,
        SkippedRows,
        Row,
        Entry,
        Nested,
        NestedRow,
        Cloud,
        Points,
        Point
    };

    State begun(std::string_view name, const char* const* attributes);
    State beginObject(const AidaObjectType& type, const char* const* attributes);
    State beginInTuple(std::string_view name, const char* const* attributes);
    State beginInRow(std::string_view name, const char* const* attributes);
    State beginInCloud(std::string_view name);
    void beginColumn(const char* const* attributes);
    void endColumn();
    void endHeader();
    void endObject();
    void endRow();
    void putEntry(const char* const* attributes);
    void putPoint(const char* const* attributes);
    void warnOnce(const std::string& about, const std::string& sentence);
    void noteUnknown(std::string_view name);
    [[noreturn]] void fail(const std::string& reason) const;
    bool isReading() const { return !wanted.empty(); }

    std::filesystem::path file;
    std::string wanted;
    XmlReader* reader = nullptr;
    std::vector<State> states{State::File};
    std::vector<AidaEntry> found;
    AidaEntry current;
    bool isWanted = false;
    bool hasHeader = false;
    bool isConverted = false;  ///< A cloud that has become a histogram.
    bool hasBegun = false;     ///< The header of the wanted object has been read.
    std::vector<std::string> members;
    bool done = false;
    std::vector<AidaColumn> header;
    std::vector<AidaColumn> openColumns;
    std::unique_ptr<TupleBuilder> rowBuilder;
    std::vector<PlainColumn> plain;
    bool isInPlainRows = false;
    ObjectPaths paths;
    std::vector<std::string> reported;
    std::set<std::string> warned;
    FewWarnings warnings;
    std::size_t columnCount = 0;  ///< Of all tuples so far, or of the wanted one.
};

}  // namespace velmorak::io
