#pragma once

#include "expression/DateKernels.h"
#include "expression/Derivatives.h"
#include "expression/FunctionKernels.h"
#include "expression/TextKernels.h"

#include <velmorak/Dates.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <limits>

/// The functions of texts and dates: a part of the table of functions.
namespace velmorak::expression {

using TextPtr = const std::string*;

inline constexpr std::string_view dates = "dates, in seconds since 1970 (UTC)";

inline constexpr auto charactersIn = [](const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return !isContinuationByte(c); });
};
inline constexpr auto numberOf = [](const std::string& text) {
    double number = 0.0;
    return readNumber(text, number) ? number : std::numeric_limits<double>::quiet_NaN();
};

inline constexpr auto secondsOf = [](const std::string& text) {
    double seconds = 0.0;
    return readDate(text, seconds) ? seconds : std::numeric_limits<double>::quiet_NaN();
};

template <typename Out, auto function>
constexpr Function ofText(std::string_view name, ColumnType result, std::string_view text) {
    return {.name = name,
            .rule = Rule::Texts,
            .forTexts = unary<TextPtr, Out, [](TextPtr x) { return function(*x); }>,
            .documentation = {"texts", text},
            .result = result};
}

template <auto function>
constexpr Function ofTexts(std::string_view name, std::string_view text) {
    return {.name = name,
            .rule = Rule::Texts,
            .arguments = 2,
            .forTexts = binary<TextPtr, std::uint8_t, [](TextPtr x, TextPtr y) { return function(*x, *y); }>,
            .documentation = {"texts", text}};
}

/// A function of texts that makes texts.
constexpr Function madeText(std::string_view name, Kernel kernel, std::string_view text) {
    return {.name = name,
            .rule = Rule::Texts,
            .forTexts = kernel,
            .documentation = {"texts", text},
            .result = ColumnType::Text};
}

/// A part of the date and time that a real encodes.
template <auto function>
constexpr Function partOfDate(std::string_view name, std::string_view text) {
    return {.name = name,
            .forReals = ofReal<[](double seconds) { return function(seconds); }>,
            .reverse = reverseFlat,
            .documentation = {dates, text}};
}

inline constexpr std::array textFunctions{
    ofTexts<[](const std::string& x, const std::string& y) { return x.find(y) != std::string::npos; }>(
        "contains", "`contains(text, part)`"),
    ofTexts<[](const std::string& x, const std::string& y) { return x.starts_with(y); }>("startsWith",
                                                                                         "`startsWith(text, part)`"),
    ofTexts<[](const std::string& x, const std::string& y) { return x.ends_with(y); }>("endsWith",
                                                                                       "`endsWith(text, part)`"),
    ofText<std::int64_t, charactersIn>("length", ColumnType::Integer, "`length(text)` (in characters)"),
    ofText<double, numberOf>("toNumber", ColumnType::Real, "`toNumber(text)` (NaN if it is none)"),
    madeText("lower", lowerTexts, "`lower(text)`"),
    madeText("upper", upperTexts, "`upper(text)`"),
    Function{.name = "substring",
             .rule = Rule::Texts,
             .arguments = 3,
             .forTexts = partsOfTexts,
             .documentation = {"texts",
                               "`substring(text, first, count)` (in characters from 0, negative from the end; "
                               "without a count, all that follow)"},
             .result = ColumnType::Text,
             .takes = {ColumnType::Text, ColumnType::Integer, ColumnType::Integer},
             .hasDefault = true},
    Function{.name = "matches",
             .rule = Rule::Texts,
             .arguments = 2,
             .forTexts = searchTexts,
             .documentation = {"texts", "`matches(text, \"pattern\")` (a regular expression)"},
             .takesPattern = true},
    Function{.name = "toSeconds",
             .rule = Rule::Texts,
             .forTexts = unary<TextPtr, double, [](TextPtr x) { return secondsOf(*x); }>,
             .documentation = {dates, "`toSeconds(text)` (of a date such as 2024-02-29T12:30:00Z; NaN if it is none)"},
             .result = ColumnType::Real},
    Function{.name = "toDate",
             .rule = Rule::Texts,
             .forTexts = datesAsTexts,
             .documentation = {dates, "`toDate(seconds)` (such a text)"},
             .result = ColumnType::Text,
             .takes = {ColumnType::Real}},
    partOfDate<yearOf>("year", "`year(seconds)`"),
    partOfDate<monthOf>("month", "`month`"),
    partOfDate<dayOf>("day", "`day`"),
    partOfDate<hourOf>("hour", "`hour`"),
    partOfDate<minuteOf>("minute", "`minute`"),
    partOfDate<weekdayOf>("weekday", "`weekday` (1 for Monday)"),
    partOfDate<dayOfYear>("dayOfYear", "`dayOfYear` (from 1)")};

}  // namespace velmorak::expression
