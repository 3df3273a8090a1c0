#include "kinds.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Text.h>

#include <yoda/YodaFile.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {

/// What the kind can give, by the value of its input "type".
struct Product {
    std::string name;
    ValueType type;
    std::string description;
};

std::vector<Product> products() {
    return {{"histogram", ValueType::Histogram, "The histogram of one or two dimensions, with all its sums."},
            {"profile", ValueType::Profile, "The profile of one or two dimensions, with all its sums."},
            {"points", ValueType::Points,
             "The points of a scatter, or the values of an estimate at the centres of their bins."},
            {"number", ValueType::Number,
             "The sum of weights of a counter, or the value of an estimate without bins, with its error."}};
}

Product productNamed(const ValueTexts& values) {
    const auto found = values.find("type");
    for (Product& product : products()) {
        if (found != values.end() && product.name == found->second) {
            return std::move(product);
        }
    }
    return products().front();
}

ValueType typeOf(const Value& value) {
    const auto* object = std::get_if<DataObjectPtr>(&value);
    return object ? (*object)->type() : ValueType::Number;
}

/// Reads one object of a YODA file.
class YodaObjectsKind : public Function {
public:
    std::string name() const override { return "YodaObjects"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

std::string listOf(const std::vector<const YodaEntry*>& entries) {
    constexpr std::size_t most = 10;
    std::string names;
    for (std::size_t i = 0; i < std::min(most, entries.size()); ++i) {
        names += (i == 0 ? "" : ", ") + entries[i]->path;
    }
    return entries.size() > most ? names + " and " + std::to_string(entries.size() - most) + " more" : names;
}

bool isCalled(const YodaEntry& entry, const std::string& object) {
    return entry.path == object ||
           (object.find('/') == std::string::npos && entry.path.substr(entry.path.rfind('/') + 1) == object);
}

/// @return the entry of the type that the user means. @throws Failure that lists the candidates.
const YodaEntry& chosen(const std::vector<YodaEntry>& entries, const std::string& object, const Product& product) {
    std::vector<const YodaEntry*> ofType;
    std::vector<const YodaEntry*> named;
    for (const YodaEntry& entry : entries) {
        const bool isOfType = entry.problem.empty() && typeOf(entry.value) == product.type;
        if (isOfType) {
            ofType.push_back(&entry);
        }
        if (object.empty() ? isOfType : isCalled(entry, object)) {
            named.push_back(&entry);
        }
    }
    if (named.empty()) {
        throw Failure("object", object.empty() ? "the file has no " + product.name
                                               : "the file has no object " + velmorak::quoted(object) + "; each " +
                                                     product.name + " in it: " + listOf(ofType));
    }
    if (named.size() > 1) {
        throw Failure("object", "the file has several such objects; enter the path of one: " + listOf(named));
    }
    const YodaEntry& entry = *named.front();
    if (!entry.problem.empty()) {
        throw Failure("object", velmorak::quoted(entry.path) + " (" + entry.type + ", line " +
                                    std::to_string(entry.line) + ") cannot be read: " + entry.problem);
    }
    if (typeOf(entry.value) != product.type) {
        throw Failure("type", velmorak::quoted(entry.path) + " is no " + product.name + " but of type " + entry.type);
    }
    return entry;
}

}  // namespace

std::string YodaObjectsKind::summary() const {
    return "Reads a histogram, profile, set of points or number from a YODA file.";
}

std::string YodaObjectsKind::notes() const {
    return R"(Versions 1, 2 and 3 of the format, plain or gzipped; see [YODA files](../yoda.md). The sums of weights in the file
are kept, also those of underflow and overflow, so that means, errors and spreads are exact.)";
}

Ports YodaObjectsKind::ports(const ValueTexts& values) const {
    const Product product = productNamed(values);
    std::vector<std::string> names;
    for (const Product& each : products()) {
        names.push_back(each.name);
    }
    Ports ports;
    ports.inputs = {{.name = "file",
                     .description = "YODA file, plain or gzipped. A relative path is searched for beside the document, "
                                    "then in the current folder.",
                     .type = ValueType::Text},
                    {.name = "object",
                     .description = "Path of the object in the file, for example /MC_JETS/jet_pT_1, or its last part. "
                                    "Empty: the only one of the type.",
                     .type = ValueType::Text},
                    {.name = "type",
                     .description = "What the object is, and what comes out.",
                     .type = ValueType::Choice,
                     .value = "histogram",
                     .choices = names}};
    ports.outputs = {{.name = product.name, .description = product.description, .type = product.type}};
    return ports;
}

void YodaObjectsKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const Product product = productNamed({{"type", arguments.text("type")}});
    const std::vector<YodaEntry> entries = readYoda(context.inputFile(arguments.text("file")), context);
    results.set(product.name, chosen(entries, arguments.text("object"), product).value);
}

std::unique_ptr<Kind> makeYodaObjects() {
    return std::make_unique<YodaObjectsKind>();
}

}  // namespace velmorak
