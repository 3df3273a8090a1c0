#include "fits/Unit.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>
#include <velmorak/SystemReason.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <set>
#include <system_error>

namespace velmorak::fits {
namespace {

constexpr int maxUnits = 10000;
constexpr int maxAxes = 2;

/// Never destroyed: readers may outlive every other object of the program.
Mutex& libraryMutex() {
    static auto* const theOne = new Mutex;
    return *theOne;
}

std::string keyText(fitsfile* file, const char* key) {
    std::array<char, FLEN_VALUE> value{};
    int status = 0;
    fits_read_key(file, TSTRING, key, value.data(), nullptr, &status);
    return status == 0 ? toUtf8(trimmed(value.data())) : std::string();
}

void describeImage(fitsfile* file, Unit& unit) {
    int status = 0;
    int bits = 0;
    int dimensions = 0;
    std::array<LONGLONG, maxAxes> axes{};
    fits_get_img_paramll(file, maxAxes, &bits, &dimensions, axes.data(), &status);
    unit.isImage = true;
    unit.rows = status == 0 && dimensions > 0 ? 1 : 0;
    for (int i = 0; i < dimensions && i < maxAxes && status == 0; ++i) {
        const auto length = static_cast<std::uint64_t>(std::max<LONGLONG>(axes[static_cast<std::size_t>(i)], 0));
        unit.axes.push_back(length);
        if (__builtin_mul_overflow(unit.rows, length, &unit.rows)) {
            unit.problem = "its header is damaged: the image is larger than any file";
        }
    }
    if (dimensions > maxAxes) {
        unit.problem = "the image has " + std::to_string(dimensions) + " dimensions; one or two are read";
    }
}

}  // namespace

LibraryLock::LibraryLock() : lock(libraryMutex()) {}

void CloseFile::operator()(fitsfile* file) const {
    int status = 0;
    fits_close_file(file, &status);
}

void check(int status, const std::string& place) {
    if (status == 0) {
        return;
    }
    std::array<char, FLEN_STATUS> text{};
    fits_get_errstatus(status, text.data());
    fits_clear_errmsg();
    throw Failure(place + ": " + text.data());
}

FilePtr openFile(const std::filesystem::path& file) {
    requireRegular(file);
    std::array<char, 10> start{};
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw Failure(file.string() + " cannot be opened" + systemReason(errno));
    }
    in.read(start.data(), 9);
    in.close();
    if (std::string_view(start.data()) != "SIMPLE  =") {
        throw Failure(file.string() + " is no FITS file, or is compressed as a whole; unpack it first");
    }
    fitsfile* opened = nullptr;
    int status = 0;
    fits_open_diskfile(&opened, file.c_str(), READONLY, &status);
    FilePtr held(opened);
    check(status, file.string() + " cannot be opened");
    return held;
}

std::vector<Unit> unitsOf(fitsfile* file, const std::string& place) {
    std::vector<Unit> units;
    std::set<std::string> names;
    int count = 0;
    int status = 0;
    fits_get_num_hdus(file, &count, &status);
    check(status, place);
    for (int number = 1; number <= count && number <= maxUnits; ++number) {
        int type = 0;
        fits_movabs_hdu(file, number, &type, &status);
        check(status, place + ", unit " + std::to_string(number));
        Unit unit{.number = number, .name = keyText(file, "EXTNAME")};
        if (!unit.name.empty() && !names.insert(unit.name).second) {
            unit.name += "_" + std::to_string(number);
        }
        if (type == IMAGE_HDU) {
            describeImage(file, unit);
        } else {
            LONGLONG rows = 0;
            fits_get_num_rowsll(file, &rows, &status);
            check(status, place + ", unit " + std::to_string(number));
            unit.rows = rows > 0 ? static_cast<std::uint64_t>(rows) : 0;
        }
        if (!unit.isImage || unit.rows > 0 || !unit.problem.empty()) {
            units.push_back(std::move(unit));
        }
    }
    return units;
}

}  // namespace velmorak::fits
