#pragma once

#include "graph/document/Document.h"

#include <QzManager.h>

#include <string>

/// Conversion between a document and the plug-ins of a manager.
namespace velmorak {

/// Appends the plug-ins of a document to the manager's: all of them, or none. Parts of a valid document that cannot be
/// used are reported on standard error.
/// @return empty, or why nothing was added: a sentence with file, line and reason.
std::string loadDocument(QzManager& manager, const std::string& file);

/// The same for a text that was read from the file earlier.
std::string loadDocumentText(QzManager& manager, const std::string& text, const std::string& file);

/// The manager's pipeline as a document.
Document documentOf(const QzManager& manager);

}  // namespace velmorak
