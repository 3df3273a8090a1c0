#pragma once

#include <QzBase.h>

#include <cstddef>
#include <string>

/// Who feeds whom. Every change goes through here, so that an input's source and the consumer lists of the output that
/// feeds it always say the same.
namespace velmorak {

/// Feeds the input from the output, in place of what fed it before. Positions must exist.
void bind(QzBase& receiver, std::size_t input, QzBase& sender, std::size_t output);

/// Nothing happens when nothing feeds the input.
void unbind(QzBase& receiver, std::size_t input);

/// Undoes every binding of the plug-in, on both sides.
void unbindAll(QzBase& node);

/// @return position of the named output, -1 when there is none.
int outputIndex(const QzBase& node, const std::string& output);

}  // namespace velmorak
