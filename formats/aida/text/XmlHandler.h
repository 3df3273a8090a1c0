#pragma once

#include "aida/text/RowFastPath.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::io {

/// Receives the elements of a file.
class XmlHandler {
public:
    virtual ~XmlHandler() = default;
    virtual void beginElement(const char* name, const char* const* attributes) = 0;
    virtual void endElement(const char* name) = 0;
    /// Text between elements, in pieces.
    virtual void characters(std::string_view /*text*/) {}
    /// Columns of the tuple whose rows are being read if its rows may be plain and are wanted; null otherwise, and
    /// inside elements other than rows.
    virtual const std::vector<PlainColumn>* plainColumns() const { return nullptr; }
    /// No element is open inside the one that contains the rows. Called only if there are plain columns.
    virtual bool isBetweenRows() const { return false; }
    /// Receives rows instead of their elements. @return how many of them, from the first on, are accepted.
    virtual std::size_t takeRows(const RowFastPath& /*rows*/, std::size_t /*first*/) { return 0; }
    /// The next file of an archive begins; open elements are discarded. Not called for the first file.
    virtual void beginDocument() {}
    /// A file of an archive is damaged. @return whether to continue with the next one.
    virtual bool continuesAfter(const std::string& /*damage*/) { return false; }
};

}  // namespace velmorak::io
