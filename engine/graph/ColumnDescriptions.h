#pragma once

#include <QzBase.h>

namespace velmorak {

/// Lets the descriptions of a table reader's outputs say which columns the table has, as far as its values and the
/// beginning of its file tell; where they do not, the descriptions are the kind's own. The file is looked at aside:
/// where it does not answer soon, the columns are said by a later call. Called on the main thread.
void updateColumnDescriptions(QzBase& node);

}  // namespace velmorak
