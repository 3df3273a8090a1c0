#pragma once

#include <QzBase.h>

#include <vector>

namespace velmorak {

/// The descriptions of a table reader's outputs name the columns of the table, as far as the reader's values and the
/// beginning of its file say. Previews in the background find them: refreshColumns starts them, showColumns takes over
/// what they have found, and opens no file itself. Both are called on the main thread.

/// Starts a preview for each of the plug-ins of one manager that is a table reader, and waits for them as long as a
/// user would, unless an earlier preview is unfinished. Called whenever values or places have changed that decide on
/// the columns.
void refreshColumns(const std::vector<QzBase*>& nodes);

/// Ends the preview of a plug-in that is about to be freed.
void stopPreview(QzBase& node);

/// Brings the descriptions of a plug-in's outputs up to date with its preview.
void showColumns(QzBase& node);

}  // namespace velmorak
