#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <velmorak/FunctionObject.h>
#include <velmorak/Points.h>
#include <velmorak/Run.h>
#include <velmorak/Value.h>

/// The parsed elements of one object, from which it is built: a file may list its parts in any order.
namespace velmorak::io {

inline constexpr double notGiven = std::numeric_limits<double>::quiet_NaN();

struct ParsedAxis {
    std::string direction;  ///< As written; empty if missing.
    std::string low;
    std::string high;
    std::string bins;
    std::vector<double> borders;
};

struct ParsedBin {
    static constexpr std::int64_t underflow = -2;
    static constexpr std::int64_t overflow = -1;
    std::array<std::int64_t, 3> numbers{};  ///< Along each axis: 0 is the first bin.
    std::int64_t entries = 0;
    double height = notGiven;
    double error = notGiven;
    double error2 = notGiven;
    double rms = notGiven;
    std::array<double, 3> means{notGiven, notGiven, notGiven};
    std::array<double, 3> spreads{notGiven, notGiven, notGiven};
};

struct ParsedObject {
    std::string path;
    std::string element;  ///< "histogram1d"; of a converted cloud the element of its histogram.
    std::string name;
    std::string title;
    std::string options;
    std::string package;  ///< Program that wrote the file.
    std::string dimension;
    bool isNormalized = false;
    double maxCells = RunContext::defaultMaxCells;  ///< More are refused.
    std::vector<AnnotationItem> annotation;
    std::vector<ParsedAxis> axes;
    std::deque<ParsedBin> bins;  ///< A growing vector would temporarily take three times the memory.
    std::deque<std::vector<Measurement>> points;
    std::vector<std::string> axisTitles;
    std::string codelet;
    std::vector<FunctionObject::Argument> arguments;
    std::vector<FunctionObject::Parameter> parameters;
    std::string problem;  ///< Why the object cannot be built; empty if it can.
};

/// @return the number of cells that the axes of a histogram or profile declare; 0 for other objects and for axes that
///         cannot be built.
std::size_t declaredCells(const ParsedObject& parsed);
/// @return bytes that the object will take, according to its axes.
std::size_t declaredBytes(const ParsedObject& parsed);

/// @param warnings receives messages about contents that were corrected or guessed.
/// @throws Failure, or std::invalid_argument, if no object can be built.
std::shared_ptr<DataObject> objectFrom(const ParsedObject& parsed, std::vector<std::string>& warnings);

/// Value of the last annotation item with this key; null if there is none.
const std::string* annotated(const std::vector<AnnotationItem>& annotation, std::string_view key);

/// @return the number, which may have blanks around it or a "+"; the other one if the text is null or not a number.
double numberOr(const char* text, double other);

}  // namespace velmorak::io
