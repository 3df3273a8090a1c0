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

bool isTrue(const char* text) {
    const std::string_view word = !text ? "" : text;
    return word == "true" || word == "True" || word == "TRUE" || word == "1";
}

std::int64_t rounded(double number) {
    return std::abs(number) < 9e18 ? std::llround(number) : 0;
}

/// @return false if the text is not the number of a bin.
bool readBinNumber(const char* text, std::int64_t& number) {
    const std::string_view word = !text ? "" : text;
    double value = 0.0;
    if (word == "UNDERFLOW") {
        number = ParsedBin::underflow;
    } else if (word == "OVERFLOW") {
        number = ParsedBin::overflow;
    } else if (readNumber(word, value) && value == std::floor(value) && std::abs(value) < 1e15) {
        number = rounded(value);
    } else {
        return false;
    }
    return true;
}

/// Limit in bytes for the parts of an object that is not built yet, besides the bins that its axes declare.
constexpr std::size_t maxHeld = std::size_t{512} << 20U;
constexpr std::size_t maxCodeletLength = std::size_t{1} << 20U;
/// Objects above this size are announced by a warning.
constexpr std::size_t manyBytes = std::size_t{256} << 20U;

bool isCloud(std::string_view element) {
    return isOfFamily(element, AidaFamily::Cloud);
}

}  // namespace

AidaObjectHandler::AidaObjectHandler(std::filesystem::path file, Choice isWanted, RunContext& context)
    : file(std::move(file)), isWanted(std::move(isWanted)), maxCells(context.maxCells()), warnings(context) {}

void AidaObjectHandler::warn(const std::string& about, const std::string& sentence) {
    if (warned.size() < maxWarned && warned.insert(about).second) {
        warnings.add(fmt::format("{}: {}", file.string(), sentence));
    }
}

void AidaObjectHandler::beginDocument() {
    depth = skippedFrom = 0;
    parsed.reset();
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
            fmt::format("{}{}: this is not an AIDA file: it begins with <{}>", file.string(), reader->where(), name));
    }
    if (depth == 2 && element == "implementation") {
        package = textOr(attributeOf(attributes, "package"), "");
    } else if (depth == 2 && aidaObjectType(element)) {
        beginObject(element, attributes);
    } else if (depth > 1) {
        isUsed = parsed && inObject(element, attributes);
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
    if (depth == 2 && parsed) {
        endObject();
    }
    --depth;
}

void AidaObjectHandler::characters(std::string_view text) {
    if (!isInCodelet || !parsed || !parsed->problem.empty()) {
        return;
    }
    parsed->codelet += text;
    if (parsed->codelet.size() > maxCodeletLength) {
        parsed->problem = fmt::format("its codelet is longer than {} MB", maxCodeletLength >> 20U);
        parsed->codelet.clear();
    }
}

/// Counts the memory for parts of the object. @return false if it is too much; the object is then not built.
bool AidaObjectHandler::hold(std::size_t bytes) {
    held += bytes;
    if (held <= maxHeld) {
        return true;
    }
    if (parsed->problem.empty()) {
        parsed->problem = fmt::format("its parts take more than {} MB", maxHeld >> 20U);
    }
    parsed->bins.clear();
    parsed->points.clear();
    parsed->annotation.clear();
    return false;
}

void AidaObjectHandler::beginObject(std::string_view name, const char* const* attributes) {
    std::string warning;
    if (found.size() == maxObjects) {
        throw Failure(
            fmt::format("{}{}: the file contains more than {} objects", file.string(), reader->where(), maxObjects));
    }
    held = declared = 0;
    parsed.emplace();
    parsed->path = paths.next(attributes, reader->document(), warning);
    if (!warning.empty()) {
        warn(warning, warning);
    }
    parsed->element = name;
    parsed->name = plainName(textOr(attributeOf(attributes, "name"), "unnamed"));
    parsed->title = textOr(attributeOf(attributes, "title"),
                           textOr(attributeOf(attributes, "label"), parsed->name.c_str()).c_str());
    parsed->options = textOr(attributeOf(attributes, "options"), "");
    parsed->package = package;
    parsed->maxCells = maxCells;
    parsed->dimension = textOr(attributeOf(attributes, "dimension"), "");
    parsed->isNormalized = isTrue(attributeOf(attributes, "isNormalized"));
    isBuilt = !isAidaTable(name) && isWanted(parsed->path, parsed->element);
    if (!isBuilt && !isCloud(name)) {
        skippedFrom = depth;
    }
}

void AidaObjectHandler::endObject() {
    AidaObject object{parsed->path, parsed->element, nullptr, parsed->bins.size()};
    std::vector<std::string> sentences;
    const std::size_t bytes = isBuilt && parsed->problem.empty() ? declaredBytes(*parsed) : 0;
    if (bytes > manyBytes) {
        warnings.add(fmt::format("{}: {} has {} cells, which take {:.1f} GB of memory", file.string(), parsed->path,
                                 declaredCells(*parsed), static_cast<double>(bytes) / 1e9));
    }
    try {
        if (isBuilt) {
            object.object = objectFrom(*parsed, sentences);
        }
    } catch (const Failure& failure) {
        sentences.emplace_back(fmt::format("it cannot be read{}: {}", reader->where(), failure.what()));
    } catch (const std::bad_alloc&) {
        sentences.emplace_back(
            fmt::format("it cannot be read: there is not enough memory for its {} cells", declaredCells(*parsed)));
    } catch (const std::invalid_argument& problem) {
        sentences.emplace_back(fmt::format("it cannot be read{}: {}", reader->where(), problem.what()));
    }
    for (const std::string& sentence : sentences) {
        warn(parsed->path + sentence, fmt::format("{}: {}", parsed->path, sentence));
    }
    found.push_back(std::move(object));
    parsed.reset();
}

bool AidaObjectHandler::inObject(std::string_view name, const char* const* attributes) {
    if (name == "annotation") {
        return depth == 3;
    }
    if (name == "item") {
        putItem(attributes);
        return true;
    }
    if (isCloud(parsed->element) && !isOfFamily(name, AidaFamily::Histogram)) {
        return false;
    }
    if (isCloud(parsed->element)) {
        parsed->element = name;
        isBuilt = isWanted(parsed->path, parsed->element);
        return isBuilt;
    }
    if (isOfFamily(parsed->element, AidaFamily::Function)) {
        return inFunction(name, attributes);
    }
    return isOfFamily(parsed->element, AidaFamily::Points) ? inPoints(name, attributes) : inHistogram(name, attributes);
}

void AidaObjectHandler::putItem(const char* const* attributes) {
    AnnotationItem item;
    const char* key = attributeOf(attributes, "key");
    item.key = textOr(key, "");
    item.value = textOr(attributeOf(attributes, "value"), "");
    item.isSticky = isTrue(attributeOf(attributes, "sticky"));
    // Some programs write <item Title="..."/>, with the key as the name of the attribute.
    for (; !key && *attributes; attributes += 2) {
        if (std::string_view(*attributes) != "sticky" && std::string_view(*attributes) != "value") {
            item.key = attributes[0];
            item.value = attributes[1];
            break;
        }
    }
    if (hold(sizeof(item) + item.key.size() + item.value.size())) {
        parsed->annotation.push_back(std::move(item));
    }
}

bool AidaObjectHandler::inHistogram(std::string_view name, const char* const* attributes) {
    if (name == "axis" && hold(sizeof(ParsedAxis))) {
        parsed->axes.push_back({textOr(attributeOf(attributes, "direction"), "x"),
                                textOr(attributeOf(attributes, "min"), ""),
                                textOr(attributeOf(attributes, "max"), ""),
                                textOr(attributeOf(attributes, "numberOfBins"), ""),
                                {}});
    } else if (name == "binBorder" && !parsed->axes.empty() && hold(2 * sizeof(double))) {
        parsed->axes.back().borders.push_back(numberOr(attributeOf(attributes, "value"), notGiven));
    } else if (name == "bin1d" || name == "bin2d" || name == "bin3d") {
        putBin(attributes, static_cast<std::size_t>(name[3] - '0'));
    } else if (name == "data1d" || name == "data2d" || name == "data3d") {
        declared = declaredCells(*parsed);
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
    if (parsed->bins.size() >= declared && !hold(sizeof(ParsedBin))) {
        return;
    }
    ParsedBin bin;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        const char* name = dimensions == 1 ? "binNum" : numbers[direction];
        if (!readBinNumber(attributeOf(attributes, name), bin.numbers[direction]) && parsed->problem.empty()) {
            parsed->problem = fmt::format(R"({}="{:.40}"{} is not the number of a bin)", name,
                                          textOr(attributeOf(attributes, name), ""), reader->where());
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
    parsed->bins.push_back(bin);
}

bool AidaObjectHandler::inPoints(std::string_view name, const char* const* attributes) {
    if (name == "dataPoint") {
        if (hold(sizeof(std::vector<Measurement>))) {
            parsed->points.emplace_back();
        }
    } else if (name == "measurement") {
        if (parsed->points.empty() || !hold(2 * sizeof(Measurement))) {
            return true;
        }
        Measurement measurement;
        measurement.value = numberOr(attributeOf(attributes, "value"), notGiven);
        measurement.errorPlus = numberOr(attributeOf(attributes, "errorPlus"), 0.0);
        measurement.errorMinus = numberOr(attributeOf(attributes, "errorMinus"), measurement.errorPlus);
        parsed->points.back().push_back(measurement);
    } else if (name == "dimension" || name == "dimenstion") {
        putAxisTitle(attributes);
    } else {
        return false;
    }
    return true;
}

/// Titles of axes are not in the document type, but several programs write them, some misspelt.
void AidaObjectHandler::putAxisTitle(const char* const* attributes) {
    const double place = numberOr(attributeOf(attributes, "dim"), static_cast<double>(parsed->axisTitles.size()));
    if (!(place >= 0.0) || place > 1000.0) {
        return;
    }
    const auto position = static_cast<std::size_t>(place);
    parsed->axisTitles.resize(std::max(parsed->axisTitles.size(), position + 1));
    parsed->axisTitles[position] =
        textOr(attributeOf(attributes, "title"), textOr(attributeOf(attributes, "Title"), "").c_str());
}

bool AidaObjectHandler::inFunction(std::string_view name, const char* const* attributes) {
    if (name == "codelet") {
        // One program writes the codelet as an attribute.
        parsed->codelet += textOr(attributeOf(attributes, "name"), "");
        isInCodelet = true;
    } else if (!hold(sizeof(FunctionObject::Argument))) {
        return false;
    } else if (name == "argument") {
        parsed->arguments.push_back({textOr(attributeOf(attributes, "name"), ""), {}});
    } else if (name == "range" && !parsed->arguments.empty()) {
        FunctionObject::Range range;
        range.low = numberOr(attributeOf(attributes, "min"), range.low);
        range.high = numberOr(attributeOf(attributes, "max"), range.high);
        parsed->arguments.back().ranges.push_back(range);
    } else if (name == "parameter") {
        parsed->parameters.push_back(
            {textOr(attributeOf(attributes, "name"), ""), numberOr(attributeOf(attributes, "value"), notGiven)});
    } else {
        return name == "arguments" || name == "parameters";
    }
    return true;
}

}  // namespace velmorak::io
