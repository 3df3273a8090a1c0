#pragma once

#include <velmorak/Ports.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

/// What the author of a short kind says about it in words. Everything else comes from the signature of its function.
namespace velmorak {

struct KindDescription {
    std::string name;     ///< One word, unique in all collections.
    std::string summary;  ///< One sentence.
    std::string notes{};  ///< Markdown, see Kind::notes.
    int version = 1;      ///< See Kind::version.
};

struct InputDescription {
    std::string name;         ///< One word.
    std::string description;  ///< A sentence, with the unit if there is one.
    /// Default. Empty: the name of the input for an expression of columns, 0 for a number, nothing for anything else.
    std::string value{};
    double minimum = -std::numeric_limits<double>::infinity();  ///< Of a number.
    double maximum = std::numeric_limits<double>::infinity();
    std::vector<std::string> choices{};  ///< Not empty: the only texts that are accepted.
};

/// A new column of a table.
struct ColumnDescription {
    std::string name;
    std::string unit{};
};

/// An output that is a value.
struct OutputDescription {
    std::string name;
    std::string description;
};

namespace shortkinds {

/// Answers the questions about a kind that every shape asks.
template <typename Base>
class Described : public Base {
public:
    explicit Described(KindDescription about) : about(std::move(about)) {}

    std::string name() const override { return about.name; }
    std::string summary() const override { return about.summary; }
    std::string notes() const override { return about.notes; }
    int version() const override { return about.version; }

private:
    KindDescription about;
};

}  // namespace shortkinds

}  // namespace velmorak
