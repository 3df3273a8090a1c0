#pragma once

#include "PortRef.h"

#include <QzBase.h>

/// The output that feeds an input; empty where none does.
PortRef sourceOf(const QzBase::Input& input);

/// The library's bindings into and out of a plug-in: by input, the output that feeds it.
PortMap<PortRef> bindingsOf(QzBase& object);

/// Whether the library has this input fed by this output. False where either port does not exist.
bool isBound(QzBase& receiver, const std::string& input, QzBase& sender, const std::string& output);
