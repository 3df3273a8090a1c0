#pragma once

#include "files/FileList.h"

#include <velmorak/Value.h>

#include <memory>
#include <string>

namespace velmorak {

/// The sum of the same histogram or profile of several files.
class ObjectSum {
public:
    /// @param file name for messages.
    /// @throws Failure if the object cannot be added to those of the files before.
    void add(const std::string& file, DataObjectPtr object);

    DataObjectPtr take() { return std::move(whole); }

private:
    template <typename Object>
    bool addAs(const std::string& file, const DataObject& more);

    std::string first;  ///< Name of the first file.
    DataObjectPtr whole;
    std::shared_ptr<DataObject> sum;  ///< The whole, as soon as it is the sum of several.
};

/// @throws Failure if the list gives properties of the files, which only the rows of a table can have.
void requireNoProperties(const FileList& list);

}  // namespace velmorak
