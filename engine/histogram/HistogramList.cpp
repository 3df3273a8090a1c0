#include <velmorak/HistogramList.h>

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

constexpr std::uint64_t histogramListMark = 0x31'74'73'4c'6b'6c'65'56;

}  // namespace

HistogramList::HistogramList(std::string keyTitle, std::vector<Group> groups)
    : titleOfKey(std::move(keyTitle)), all(std::move(groups)) {
    const bool hasOneAxis = std::all_of(all.begin(), all.end(), [this](const Group& group) {
        return group.histogram && group.histogram->grid() == all.front().histogram->grid();
    });
    if (!hasOneAxis) {
        throw std::invalid_argument("each group of a list needs a histogram, and all have one axis");
    }
}

std::size_t HistogramList::cellCount() const {
    std::size_t count = 0;
    for (const Group& group : all) {
        count += group.histogram->cells().size();
    }
    return count;
}

void HistogramList::write(ByteWriter& writer) const {
    writer.number(histogramListMark);
    writer.head(*this);
    writer.list(titleOfKey);
    writer.number<std::uint64_t>(all.size());
    for (const Group& group : all) {
        writer.list(group.key);
        writer.list(group.label);
        writer.list(group.histogram->toBytes());
    }
}

std::string HistogramList::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

HistogramList HistogramList::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, histogramListMark);
    const ObjectHead head = reader.head();
    auto keyTitle = reader.list<std::string>();
    std::vector<Group> groups;
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        Group group{.key = reader.list<std::string>(), .label = {}, .histogram = {}};
        group.label = reader.list<std::string>();
        group.histogram = std::make_shared<const Histogram1D>(Histogram1D::fromBytes(reader.list<std::string>()));
        groups.push_back(std::move(group));
    }
    reader.mustBeAtEnd();
    HistogramList list(std::move(keyTitle), std::move(groups));
    head.give(list);
    return list;
}

std::string nameWithKey(const std::string& name, const std::string& key) {
    std::string joined = name + "_" + key;
    std::replace_if(
        joined.begin() + static_cast<std::ptrdiff_t>(name.size()), joined.end(),
        [](unsigned char c) { return c <= ' ' || c == '/' || c == 0x7F; }, '_');
    return joined;
}

}  // namespace velmorak
