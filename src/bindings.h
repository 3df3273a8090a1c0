#pragma once

#include "PortRef.h"

#include <QzBase.h>

/// The output that feeds an input; empty if the input is not connected.
PortRef sourceOf(const QzBase::Input& input);

/// The library's bindings into and out of a plug-in: input -> the output that feeds it.
PortMap<PortRef> bindingsOf(QzBase& object);

/// Whether, in the library, that output feeds that input. False if either port does not exist.
bool isBound(QzBase& receiver, const std::string& input, QzBase& sender, const std::string& output);
