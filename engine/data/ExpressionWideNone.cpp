#include "ExpressionWide.h"

namespace velmorak::expression {

Kernel wideKernel(std::string_view /*name*/, ColumnType /*type*/) {
    return nullptr;
}

}  // namespace velmorak::expression
