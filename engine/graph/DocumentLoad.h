#pragma once

#include "graph/Document.h"

#include <QzManager.h>

#include <string>

/// Between a document and the plug-ins of a manager.
namespace velmorak {

/// Appends the plug-ins of a document to the manager's, or none of them. What is left out of an otherwise good document
/// is said on standard error.
/// @return an empty text, or why nothing was added: a sentence with file, line and reason.
std::string loadDocument(QzManager& manager, const std::string& file);

/// The same of a text that stood in the file.
std::string loadDocumentText(QzManager& manager, const std::string& text, const std::string& file);

/// What the manager's plug-ins are as a document.
Document documentOf(const QzManager& manager);

}  // namespace velmorak
