#include <velmorak/Histogram.h>

#include "table/Bytes.h"

namespace velmorak {

template <std::size_t axes>
Histogram<axes> Histogram<axes>::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, Base::mark());
    Histogram histogram(reader);
    reader.mustBeAtEnd();
    return histogram;
}

template class Histogram<1>;
template class Histogram<2>;
template class Histogram<3>;

}  // namespace velmorak
