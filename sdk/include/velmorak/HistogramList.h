#pragma once

#include <velmorak/Histogram.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velmorak {

/// Histograms on one axis, one for each value of a key, in the order of the values.
class HistogramList : public DataObject {
public:
    struct Group {
        std::string key;    ///< The value as a short text: "3", "signal", "10 to 20".
        std::string label;  ///< For titles and legends: "run = 3".
        HistogramPtr histogram;
    };

    /// @param keyTitle what the key is: "run".
    /// @throws std::invalid_argument if a histogram is null, or has another axis than the first.
    HistogramList(std::string keyTitle, std::vector<Group> groups);

    ValueType type() const override { return ValueType::Histograms; }

    const std::string& keyTitle() const { return titleOfKey; }
    const std::vector<Group>& groups() const { return all; }
    /// Cells of all histograms.
    std::size_t cellCount() const;

    /// Serialises the whole object; fromBytes reads it on machines of the same byte order.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static HistogramList fromBytes(const std::string& bytes);

private:
    std::string titleOfKey;
    std::vector<Group> all;
};

/// @return the name of an object of one group: that of all, and the key. Blanks, slashes and control characters become
///         underscores.
std::string nameWithKey(const std::string& name, const std::string& key);

}  // namespace velmorak
