#include "yoda/YodaFile.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <ostream>
#include <sstream>

namespace velmorak {

namespace {

std::string digits(double number) {
    return std::isnan(number) ? "nan" : fmt::format("{:.16e}", number);
}

class Writer {
public:
    Writer(std::ostream& out, YodaVersion version) : out(out), version(version) {}

    void begin(const std::string& type, const std::string& kind, const std::string& path, const DataObject* object);

    void end() { out << "END " << name << "\n\n"; }

    /// Writes sums: of weights, of each quantity, of the products, of entries.
    template <std::size_t quantities>
    void sums(const CellSums<quantities>& cell, bool hasProducts) {
        out << digits(cell.w) << "\t" << digits(cell.ww);
        for (std::size_t i = 0; i < quantities; ++i) {
            out << "\t" << digits(cell.sum(i)) << "\t" << digits(cell.squareSum(i, i));
        }
        for (std::size_t i = 0; hasProducts && i < quantities; ++i) {
            for (std::size_t j = i + 1; j < quantities; ++j) {
                out << "\t" << digits(cell.squareSum(i, j));
            }
        }
        out << "\t" << digits(static_cast<double>(cell.entries)) << "\n";
    }

    void edges(const Axis& axis, std::size_t number);

    template <std::size_t axes, std::size_t quantities>
    void grid(const FilledGrid<axes, quantities>& object, bool hasProducts) {
        if (version == YodaVersion::V3) {
            for (std::size_t i = 0; i < axes; ++i) {
                edges(object.grid().axis(i), i + 1);
            }
            for (std::size_t cell = 0; cell < object.cells().size(); ++cell) {
                const auto along = object.grid().alongAxes(cell);
                bool isWritten = true;
                for (std::size_t i = 0; i < axes; ++i) {
                    const Axis& axis = object.grid().axis(i);
                    isWritten = isWritten && (axis.labels.empty() || along[i] <= axis.bins());
                }
                if (isWritten) {
                    sums(object.cells()[cell], quantities > 1);
                }
            }
        } else {
            binsByLimits(object, hasProducts);
        }
    }

    void points(const Points& points);

private:
    /// Keys that lines of the object itself have.
    static bool isOwn(const std::string& key);

    template <std::size_t axes, std::size_t quantities>
    void binsByLimits(const FilledGrid<axes, quantities>& object, bool hasProducts) {
        CellSums<quantities> total;
        for (const CellSums<quantities>& cell : object.cells()) {
            total.add(cell);
        }
        out << "Total\tTotal\t";
        sums(total, hasProducts);
        if constexpr (axes == 1) {
            out << "Underflow\tUnderflow\t";
            sums(object.cells()[0], hasProducts);
            out << "Overflow\tOverflow\t";
            sums(object.cells()[object.cells().size() - 1], hasProducts);
        }
        for (std::size_t cell = 0; cell < object.cells().size(); ++cell) {
            if (object.grid().isInside(cell)) {
                const auto along = object.grid().alongAxes(cell);
                for (std::size_t i = 0; i < axes; ++i) {
                    const Axis& axis = object.grid().axis(i);
                    out << digits(axis.edge(along[i] - 1)) << "\t" << digits(axis.edge(along[i])) << "\t";
                }
                sums(object.cells()[cell], hasProducts);
            }
        }
    }

    std::ostream& out;
    const YodaVersion version;
    std::string name;
};

void Writer::begin(const std::string& type, const std::string& kind, const std::string& path,
                   const DataObject* object) {
    name = "YODA_" + type + (version == YodaVersion::V2 ? "_V2" : "_V3");
    out << "BEGIN " << name << " " << path << "\nPath: " << path << "\nTitle: " << (object ? object->title : "")
        << "\nType: " << kind << "\n";
    for (std::size_t i = 0; object && i < object->annotation.size(); ++i) {
        const AnnotationItem& item = object->annotation[i];
        const bool isOnOneLine = (item.key + item.value).find_first_of("\r\n") == std::string::npos;
        if (isOnOneLine && item.key.find_first_of(":=") == std::string::npos && !isOwn(item.key)) {
            out << item.key << ": " << item.value << "\n";
        }
    }
    out << "---\n";
}

void Writer::edges(const Axis& axis, std::size_t number) {
    out << "Edges(A" << number << "): [";
    const std::size_t count = axis.labels.empty() ? axis.bins() + 1 : axis.bins();
    for (std::size_t i = 0; i < count; ++i) {
        out << (i == 0 ? "" : ", ") << (axis.labels.empty() ? digits(axis.edge(i)) : "\"" + axis.labels[i] + "\"");
    }
    out << "]\n";
}

void Writer::points(const Points& points) {
    for (std::size_t point = 0; point < points.size(); ++point) {
        for (std::size_t i = 0; i < points.dimension(); ++i) {
            const Measurement& one = points.measurement(point, i);
            out << (i == 0 ? "" : "\t") << digits(one.value) << "\t" << digits(one.errorMinus) << "\t"
                << digits(one.errorPlus);
        }
        out << "\n";
    }
}

bool Writer::isOwn(const std::string& key) {
    return key == "Path" || key == "Title" || key == "Type" || key.empty() || key.starts_with("Edges(") ||
           key == "ErrorLabels" || key == "MaskedBins" || key.front() == '#';
}

void writeObject(Writer& writer, const std::string& path, const DataObject& object) {
    const auto named = [&](const std::string& type, const std::string& kind) {
        writer.begin(type, kind, path, &object);
    };
    visit(object,
          overloaded{[&](const Histogram1D& histogram) {
                         const bool isDiscrete = !histogram.axis().labels.empty();
                         named(isDiscrete ? "BINNEDHISTO<S>" : "HISTO1D", isDiscrete ? "BinnedHisto<s>" : "Histo1D");
                         writer.grid(histogram, false);
                     },
                     [&](const Histogram2D& histogram) {
                         named("HISTO2D", "Histo2D");
                         writer.grid(histogram, true);
                     },
                     [&](const Profile1D& profile) {
                         named("PROFILE1D", "Profile1D");
                         writer.grid(profile, false);
                     },
                     [&](const Profile2D& profile) {
                         named("PROFILE2D", "Profile2D");
                         writer.grid(profile, false);
                     },
                     [&](const Points& points) {
                         if (points.dimension() > 3) {
                             throw Failure("points of more than three dimensions cannot be written to a YODA file");
                         }
                         const std::string dimension = std::to_string(points.dimension()) + "D";
                         named("SCATTER" + dimension, "Scatter" + dimension);
                         writer.points(points);
                     },
                     [&](const DataObject&) {
                         throw Failure("a YODA file cannot hold functions or histograms of three dimensions");
                     }});
}

void writePacked(const std::filesystem::path& file, const std::string& text) {
    gzFile packed = gzopen(file.c_str(), "wb");
    bool isWritten = packed != nullptr;
    constexpr std::size_t most = std::size_t{1} << 20U;
    for (std::size_t place = 0; isWritten && place < text.size(); place += most) {
        const auto count = static_cast<unsigned>(std::min(most, text.size() - place));
        isWritten = gzwrite(packed, text.data() + place, count) == static_cast<int>(count);
    }
    if (!packed || gzclose(packed) != Z_OK || !isWritten) {
        throw Failure("file", "\"" + file.string() + "\" cannot be written; is the disk full?");
    }
}

}  // namespace

void writeYodaFile(const std::filesystem::path& file, const std::string& name, const std::vector<YodaObject>& objects,
                   YodaVersion version) {
    std::ostringstream text;
    for (const YodaObject& object : objects) {
        writeYoda(text, object.path, object.value, version);
    }
    if (name.ends_with(".gz")) {
        writePacked(file, text.str());
        return;
    }
    std::ofstream out(file, std::ios::binary);
    out << text.str();
    out.close();
    if (!out) {
        throw Failure("file", "\"" + file.string() + "\" cannot be written; is the disk full?");
    }
}

void writeYoda(std::ostream& out, const std::string& path, const Value& value, YodaVersion version) {
    Writer writer(out, version);
    if (const auto* object = std::get_if<DataObjectPtr>(&value)) {
        writeObject(writer, path, **object);
    } else if (const std::optional<NumberWithError> number = numberIn(value)) {
        writer.begin("SCATTER1D", "Scatter1D", path, nullptr);
        writer.points(Points(1, {{number->value(), number->error(), number->error()}}));
    } else {
        throw Failure("only histograms, profiles, points and numbers can be written to a YODA file");
    }
    writer.end();
}

}  // namespace velmorak
