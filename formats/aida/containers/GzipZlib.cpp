#include "aida/containers/Decompressor.h"

namespace velmorak::io {

std::unique_ptr<Decompressor> openGzip(const std::filesystem::path& file) {
    return openDeflated(file, Packing::Gzip);
}

}  // namespace velmorak::io
