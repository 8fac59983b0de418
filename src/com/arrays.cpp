#include "com/arrays.h"

namespace ovno2::com {

TableArgument::TableArgument(SAFEARRAY** host) {
    SAFEARRAY* const array = host ? *host : nullptr;
    if (!array) return;
    usable_ = elementType(array) == VT_BSTR;
    if (!usable_ || SafeArrayGetDim(array) != 2) return;
    // The last dimension comes first in the bounds; the first one, the rows, varies fastest in memory.
    const SAFEARRAYBOUND& columns = array->rgsabound[0];
    const std::size_t rows = array->rgsabound[1].cElements;
    const BSTR* const texts = static_cast<const BSTR*>(array->pvData);
    std::vector<Text> cells;
    cells.reserve(rows * columns.cElements);
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns.cElements; ++column)
            cells.emplace_back(viewOf(texts[column * rows + row]));
    value_ = TextTable(std::move(cells), rows, columns.cElements, columns.lLbound);
}

}  // namespace ovno2::com
