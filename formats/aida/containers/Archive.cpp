#include "aida/containers/Decompressor.h"

#include <archive.h>
#include <archive_entry.h>
#include <fmt/format.h>

#include <new>

namespace velmorak::io {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 16;

class Archive : public Decompressor {
public:
    Archive(const std::filesystem::path& file, Packing packing);

    std::size_t read(char* target, std::size_t size) override;

    std::uint64_t position() const override;

    bool nextEntry() override;
    std::string entryName() const override { return packing == Packing::Zip ? name : std::string(); }

private:
    struct Free {
        void operator()(archive* open) const { archive_read_free(open); }
    };

    std::string_view packingName() const { return packing == Packing::Zip ? "zip" : "bzip2"; }

    std::string sentence() const;

    void fail();

    bool nextHeader();

    Packing packing;
    std::unique_ptr<archive, Free> handle;
    std::string name;
    bool isInEntry = false;
    bool isBroken = false;
};

Archive::Archive(const std::filesystem::path& file, Packing packing) : packing(packing), handle(archive_read_new()) {
    if (!handle) {
        throw std::bad_alloc();
    }
    if (packing == Packing::Zip) {
        archive_read_support_format_zip(handle.get());
    } else {
        archive_read_support_filter_bzip2(handle.get());
        archive_read_support_format_raw(handle.get());
    }
    if (archive_read_open_filename(handle.get(), file.c_str(), blockSize) != ARCHIVE_OK) {
        fail();
    } else if (packing == Packing::Bzip2) {
        nextHeader();
    }
}

std::size_t Archive::read(char* target, std::size_t size) {
    if (!isInEntry) {
        return 0;
    }
    const la_ssize_t count = archive_read_data(handle.get(), target, size);
    if (count > 0) {
        return static_cast<std::size_t>(count);
    }
    isInEntry = false;
    if (count < 0) {
        fail();
    }
    return 0;
}

std::uint64_t Archive::position() const {
    const la_int64_t bytes = archive_filter_bytes(handle.get(), -1);
    return bytes < 0 ? 0 : static_cast<std::uint64_t>(bytes);
}

bool Archive::nextEntry() {
    while (packing == Packing::Zip && nextHeader()) {
        if (!name.empty() && name.back() != '/') {
            return true;
        }
    }
    return false;
}

std::string Archive::sentence() const {
    const char* known = archive_error_string(handle.get());
    return !known ? "unknown reason" : known;
}

void Archive::fail() {
    isBroken = true;
    damaged(fmt::format("the {} data are damaged ({})", packingName(), sentence()));
}

bool Archive::nextHeader() {
    archive_entry* entry = nullptr;
    if (isBroken) {
        return false;
    }
    const int status = archive_read_next_header(handle.get(), &entry);
    isInEntry = status == ARCHIVE_OK || status == ARCHIVE_WARN;
    if (isInEntry) {
        const char* path = archive_entry_pathname(entry);
        name = !path ? "unnamed" : path;
    } else if (status != ARCHIVE_EOF) {
        fail();
    }
    return isInEntry;
}

}  // namespace

std::unique_ptr<Decompressor> openArchive(const std::filesystem::path& file, Packing packing) {
    return std::make_unique<Archive>(file, packing);
}

}  // namespace velmorak::io
