#include "aida/read/AidaObjectHandler.h"

#include "aida/Vocabulary.h"
#include "aida/read/AidaColumns.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>

namespace velmorak::io {

namespace {

std::string textOr(const char* text, const char* other) {
    return !text ? other : text;
}

bool isTrue(const char* text) {
    const std::string_view word = !text ? "" : text;
    return word == "true" || word == "True" || word == "TRUE" || word == "1";
}

std::int64_t rounded(double number) {
    return std::abs(number) < 9e18 ? std::llround(number) : 0;
}

/// @return false where the text names no bin.
bool readBinNumber(const char* text, std::int64_t& number) {
    const std::string_view word = !text ? "" : text;
    double value = 0.0;
    if (word == "UNDERFLOW") {
        number = RawBin::underflow;
    } else if (word == "OVERFLOW") {
        number = RawBin::overflow;
    } else if (readNumber(word, value) && value == std::floor(value) && std::abs(value) < 1e15) {
        number = rounded(value);
    } else {
        return false;
    }
    return true;
}

constexpr std::size_t maxObjects = 1'000'000;
/// Different sentences about one file, that are remembered so as not to come twice.
constexpr std::size_t maxWarned = 1000;
/// What the parts of an object may take before it is made, beside the bins that its axes promise.
constexpr std::size_t maxHeld = std::size_t{512} << 20U;
constexpr std::size_t maxCodeletLength = std::size_t{1} << 20U;
/// An object that takes more says so before it does.
constexpr std::size_t manyBytes = std::size_t{256} << 20U;

bool isCloud(std::string_view element) {
    return isOfFamily(element, AidaFamily::Cloud);
}

}  // namespace

AidaObjectHandler::AidaObjectHandler(std::filesystem::path path, Choice isWantedObject, RunContext& runContext)
    : file(std::move(path)), isWanted(std::move(isWantedObject)), warnings(runContext) {}

void AidaObjectHandler::warn(const std::string& about, const std::string& sentence) {
    if (warned.size() < maxWarned && warned.insert(about).second) {
        warnings.add(fmt::format("{}: {}", file.string(), sentence));
    }
}

void AidaObjectHandler::beginDocument() {
    depth = skippedFrom = 0;
    raw.reset();
    package.clear();
    isInCodelet = false;
}

bool AidaObjectHandler::continuesAfter(const std::string& damage) {
    if (reader->document().empty()) {
        return false;
    }
    warnings.add(damage);
    return true;
}

void AidaObjectHandler::beginElement(const char* name, const char* const* attributes) {
    ++depth;
    if (skippedFrom != 0) {
        return;
    }
    const std::string_view element = name;
    bool isUsed = true;
    if (depth == 1 && element != "aida") {
        throw Failure(
            fmt::format("{}{}: this is no AIDA file: it begins with <{}>", file.string(), reader->where(), name));
    }
    if (depth == 2 && element == "implementation") {
        package = textOr(attributeOf(attributes, "package"), "");
    } else if (depth == 2 && aidaObjectType(element)) {
        beginObject(element, attributes);
    } else if (depth > 1) {
        isUsed = raw && inObject(element, attributes);
    }
    if (isUsed) {
        return;
    }
    skippedFrom = depth;
    if (!isKnownElement(element)) {
        warn(std::string(element), fmt::format("the unknown element <{}> is skipped", element));
    }
}

void AidaObjectHandler::endElement(const char* /*name*/) {
    isInCodelet = false;
    if (skippedFrom == depth) {
        skippedFrom = 0;
    }
    if (depth == 2 && raw) {
        endObject();
    }
    --depth;
}

void AidaObjectHandler::characters(std::string_view text) {
    if (!isInCodelet || !raw || !raw->problem.empty()) {
        return;
    }
    raw->codelet += text;
    if (raw->codelet.size() > maxCodeletLength) {
        raw->problem = fmt::format("its codelet is longer than {} MB", maxCodeletLength >> 20U);
        raw->codelet.clear();
    }
}

/// Counts what is kept of the object. @return false where that is too much; the object is then not made.
bool AidaObjectHandler::hold(std::size_t bytes) {
    held += bytes;
    if (held <= maxHeld) {
        return true;
    }
    if (raw->problem.empty()) {
        raw->problem = fmt::format("its parts take more than {} MB", maxHeld >> 20U);
    }
    raw->bins.clear();
    raw->points.clear();
    raw->annotation.clear();
    return false;
}

void AidaObjectHandler::beginObject(std::string_view name, const char* const* attributes) {
    std::string warning;
    if (found.size() == maxObjects) {
        throw Failure(fmt::format("{}{}: it holds more than {} objects", file.string(), reader->where(), maxObjects));
    }
    held = promised = 0;
    raw.emplace();
    raw->path = paths.next(attributes, reader->document(), warning);
    if (!warning.empty()) {
        warn(warning, warning);
    }
    raw->element = name;
    raw->name = plainName(textOr(attributeOf(attributes, "name"), "unnamed"));
    raw->title =
        textOr(attributeOf(attributes, "title"), textOr(attributeOf(attributes, "label"), raw->name.c_str()).c_str());
    raw->options = textOr(attributeOf(attributes, "options"), "");
    raw->package = package;
    raw->dimension = textOr(attributeOf(attributes, "dimension"), "");
    raw->isNormalized = isTrue(attributeOf(attributes, "isNormalized"));
    isMade = !isAidaTable(name) && isWanted(raw->path, raw->element);
    if (!isMade && !isCloud(name)) {
        skippedFrom = depth;
    }
}

void AidaObjectHandler::endObject() {
    AidaObject object{raw->path, raw->element, nullptr, raw->bins.size()};
    std::vector<std::string> sentences;
    const std::size_t bytes = isMade && raw->problem.empty() ? promisedBytes(*raw) : 0;
    if (bytes > manyBytes) {
        warnings.add(fmt::format("{}: {} has {} cells, which take {:.1f} GB of memory", file.string(), raw->path,
                                 promisedCells(*raw), static_cast<double>(bytes) / 1e9));
    }
    try {
        if (isMade) {
            object.object = objectFrom(*raw, sentences);
        }
    } catch (const Failure& failure) {
        sentences.emplace_back(fmt::format("it cannot be read{}: {}", reader->where(), failure.what()));
    } catch (const std::bad_alloc&) {
        sentences.emplace_back(
            fmt::format("it cannot be read: there is not enough memory for its {} cells", promisedCells(*raw)));
    } catch (const std::invalid_argument& problem) {
        sentences.emplace_back(fmt::format("it cannot be read{}: {}", reader->where(), problem.what()));
    }
    for (const std::string& sentence : sentences) {
        warn(raw->path + sentence, fmt::format("{}: {}", raw->path, sentence));
    }
    found.push_back(std::move(object));
    raw.reset();
}

bool AidaObjectHandler::inObject(std::string_view name, const char* const* attributes) {
    if (name == "annotation") {
        return depth == 3;
    }
    if (name == "item") {
        putItem(attributes);
        return true;
    }
    if (isCloud(raw->element) && !isOfFamily(name, AidaFamily::Histogram)) {
        return false;
    }
    if (isCloud(raw->element)) {
        raw->element = name;
        isMade = isWanted(raw->path, raw->element);
        return isMade;
    }
    if (isOfFamily(raw->element, AidaFamily::Function)) {
        return inFunction(name, attributes);
    }
    return isOfFamily(raw->element, AidaFamily::Points) ? inPoints(name, attributes) : inHistogram(name, attributes);
}

void AidaObjectHandler::putItem(const char* const* attributes) {
    AnnotationItem item;
    const char* key = attributeOf(attributes, "key");
    item.key = textOr(key, "");
    item.value = textOr(attributeOf(attributes, "value"), "");
    item.isSticky = isTrue(attributeOf(attributes, "sticky"));
    // Some programs write <item Title="..."/>: the name of the attribute is the key.
    for (; !key && *attributes; attributes += 2) {
        if (std::string_view(*attributes) != "sticky" && std::string_view(*attributes) != "value") {
            item.key = attributes[0];
            item.value = attributes[1];
            break;
        }
    }
    if (hold(sizeof(item) + item.key.size() + item.value.size())) {
        raw->annotation.push_back(std::move(item));
    }
}

bool AidaObjectHandler::inHistogram(std::string_view name, const char* const* attributes) {
    if (name == "axis" && hold(sizeof(RawAxis))) {
        raw->axes.push_back({textOr(attributeOf(attributes, "direction"), "x"),
                             textOr(attributeOf(attributes, "min"), ""),
                             textOr(attributeOf(attributes, "max"), ""),
                             textOr(attributeOf(attributes, "numberOfBins"), ""),
                             {}});
    } else if (name == "binBorder" && !raw->axes.empty() && hold(2 * sizeof(double))) {
        raw->axes.back().borders.push_back(numberOr(attributeOf(attributes, "value"), notGiven));
    } else if (name == "bin1d" || name == "bin2d" || name == "bin3d") {
        putBin(attributes, static_cast<std::size_t>(name[3] - '0'));
    } else if (name == "data1d" || name == "data2d" || name == "data3d") {
        promised = promisedCells(*raw);
    } else {
        return name == "axis" || name == "binBorder" || name == "statistics" || name == "statistic";
    }
    return true;
}

void AidaObjectHandler::putBin(const char* const* attributes, std::size_t dimensions) {
    constexpr std::array numbers{"binNumX", "binNumY", "binNumZ"};
    constexpr std::array means{"weightedMeanX", "weightedMeanY", "weightedMeanZ"};
    constexpr std::array spreads{"weightedRmsX", "weightedRmsY", "weightedRmsZ"};
    const auto number = [&](const char* name) { return numberOr(attributeOf(attributes, name), notGiven); };
    if (raw->bins.size() >= promised && !hold(sizeof(RawBin))) {
        return;
    }
    RawBin bin;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        const char* name = dimensions == 1 ? "binNum" : numbers[direction];
        if (!readBinNumber(attributeOf(attributes, name), bin.numbers[direction]) && raw->problem.empty()) {
            raw->problem = fmt::format(R"({}="{:.40}"{} names no bin)", name, textOr(attributeOf(attributes, name), ""),
                                       reader->where());
        }
        bin.means[direction] = number(dimensions == 1 ? "weightedMean" : means[direction]);
        bin.spreads[direction] = number(dimensions == 1 ? "weightedRms" : spreads[direction]);
    }
    const double entries = number("entries");
    bin.entries = std::isnan(entries) ? 0 : rounded(entries);
    bin.height = number("height");
    bin.error = number("error");
    bin.error2 = number("error2");
    bin.rms = number("rms");
    raw->bins.push_back(bin);
}

bool AidaObjectHandler::inPoints(std::string_view name, const char* const* attributes) {
    if (name == "dataPoint") {
        if (hold(sizeof(raw->points.front()))) {
            raw->points.emplace_back();
        }
    } else if (name == "measurement") {
        if (raw->points.empty() || !hold(2 * sizeof(Measurement))) {
            return true;
        }
        Measurement measurement;
        measurement.value = numberOr(attributeOf(attributes, "value"), notGiven);
        measurement.errorPlus = numberOr(attributeOf(attributes, "errorPlus"), 0.0);
        measurement.errorMinus = numberOr(attributeOf(attributes, "errorMinus"), measurement.errorPlus);
        raw->points.back().push_back(measurement);
    } else if (name == "dimension" || name == "dimenstion") {
        putAxisTitle(attributes);
    } else {
        return false;
    }
    return true;
}

/// Titles of axes are no part of the document type, but several programs write them, also misspelt.
void AidaObjectHandler::putAxisTitle(const char* const* attributes) {
    const double place = numberOr(attributeOf(attributes, "dim"), static_cast<double>(raw->axisTitles.size()));
    if (!(place >= 0.0) || place > 1000.0) {
        return;
    }
    const auto position = static_cast<std::size_t>(place);
    raw->axisTitles.resize(std::max(raw->axisTitles.size(), position + 1));
    raw->axisTitles[position] =
        textOr(attributeOf(attributes, "title"), textOr(attributeOf(attributes, "Title"), "").c_str());
}

bool AidaObjectHandler::inFunction(std::string_view name, const char* const* attributes) {
    if (name == "codelet") {
        // One program writes it as an attribute.
        raw->codelet += textOr(attributeOf(attributes, "name"), "");
        isInCodelet = true;
    } else if (!hold(sizeof(FunctionObject::Argument))) {
        return false;
    } else if (name == "argument") {
        raw->arguments.push_back({textOr(attributeOf(attributes, "name"), ""), {}});
    } else if (name == "range" && !raw->arguments.empty()) {
        FunctionObject::Range range;
        range.low = numberOr(attributeOf(attributes, "min"), range.low);
        range.high = numberOr(attributeOf(attributes, "max"), range.high);
        raw->arguments.back().ranges.push_back(range);
    } else if (name == "parameter") {
        raw->parameters.push_back(
            {textOr(attributeOf(attributes, "name"), ""), numberOr(attributeOf(attributes, "value"), notGiven)});
    } else {
        return name == "arguments" || name == "parameters";
    }
    return true;
}

}  // namespace velmorak::io
