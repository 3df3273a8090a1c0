#pragma once

#include "aida/text/RowFastPath.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::io {

/// Is told of the elements of a file.
class XmlHandler {
public:
    virtual ~XmlHandler() = default;
    virtual void beginElement(const char* name, const char* const* attributes) = 0;
    virtual void endElement(const char* name) = 0;
    /// Text between elements, in pieces.
    virtual void characters(std::string_view /*text*/) {}
    /// Columns of the tuple whose rows are being read, where they may be plain rows and are wanted; null elsewhere, and
    /// within other elements than rows.
    virtual const std::vector<PlainColumn>* plainColumns() const { return nullptr; }
    /// No element is open in the one that holds the rows. Asked where there are plain columns.
    virtual bool isBetweenRows() const { return false; }
    /// Rows that are told in the place of their elements. @return how many of those from the first on are taken.
    virtual std::size_t takeRows(const PlainRows& /*rows*/, std::size_t /*first*/) { return 0; }
    /// A file of an archive begins; elements that were open are no more. Not called for the first one.
    virtual void beginDocument() {}
    /// A file of an archive is damaged. @return whether to go on with the next one.
    virtual bool continuesAfter(const std::string& /*damage*/) { return false; }
};

}  // namespace velmorak::io
