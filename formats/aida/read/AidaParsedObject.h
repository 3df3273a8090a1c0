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
#include <velmorak/Value.h>

/// What the elements of one object say, before it is made of them: a file may give its parts in any order.
namespace velmorak::io {

inline constexpr double notGiven = std::numeric_limits<double>::quiet_NaN();

struct RawAxis {
    std::string direction;  ///< As written; empty when it is not.
    std::string low;
    std::string high;
    std::string bins;
    std::vector<double> borders;
};

struct RawBin {
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

struct RawObject {
    std::string path;
    std::string element;  ///< "histogram1d"; of a converted cloud that of its histogram.
    std::string name;
    std::string title;
    std::string options;
    std::string package;  ///< Program that wrote the file.
    std::string dimension;
    bool isNormalized = false;
    std::vector<AnnotationItem> annotation;
    std::vector<RawAxis> axes;
    std::deque<RawBin> bins;  ///< A vector of so many would for a moment take three times the memory.
    std::deque<std::vector<Measurement>> points;
    std::vector<std::string> axisTitles;
    std::string codelet;
    std::vector<FunctionObject::Argument> arguments;
    std::vector<FunctionObject::Parameter> parameters;
    std::string problem;  ///< Why the object cannot be made; empty so far.
};

/// @return cells that the axes of a histogram or profile promise; 0 where there is no such object, or it cannot be
/// made.
std::size_t promisedCells(const RawObject& raw);
/// @return bytes that the object will take when it is made, as far as its axes say.
std::size_t promisedBytes(const RawObject& raw);

/// @param warnings sentences about what was taken otherwise than it stands.
/// @throws Failure, or std::invalid_argument, with the reason when no object can be made.
std::shared_ptr<DataObject> objectFrom(const RawObject& raw, std::vector<std::string>& warnings);

/// Value of an annotation item; of several of one key the last. Null when there is none.
const std::string* annotated(const std::vector<AnnotationItem>& annotation, std::string_view key);

/// @return the number, also where the text has blanks or a "+"; another number when the text is none.
double numberOr(const char* text, double other);

}  // namespace velmorak::io
