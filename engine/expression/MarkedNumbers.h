#pragma once

#include "expression/Syntax.h"

namespace velmorak::expression {

/// Before a name that always means a number, never a column: @cut. It is part of the text of the name's node.
inline constexpr char numberMark = '@';

/// @return whether the node is a name with that mark. In back quotes, it is a character like any other.
inline bool isMarkedNumber(const Node& node) {
    return node.form == Form::Name && !node.isQuoted && node.text.starts_with(numberMark);
}

}  // namespace velmorak::expression
