#pragma once

#include "jet/rule/Call.h"

#include <string>

/// The bodies of the functions, in the files they are grouped in, and what these share.
namespace jet::functions {

[[noreturn]] inline void refuse(const char* phrase) { throw Error(Errc::outOfRange, phrase); }

/// A number, a place or a unit that a function needs. @throws if it is null or none.
[[nodiscard]] std::int64_t wholeOf(const Value& value);
/// The argument, or `otherwise` if the call has fewer. @throws as wholeOf().
[[nodiscard]] std::int64_t wholeOr(const Call& call, std::size_t i, std::int64_t otherwise);
/// A text that a function needs. @throws if it is null or has no text.
[[nodiscard]] std::string neededText(const Value& value);
/// A date, or what counts as one: a number of days, or a text that can be read in one way only.
/// Not null. @throws for anything else.
[[nodiscard]] Date dateOf(const Value& value);
/// The day of a date, counted from 1899-12-30, a Saturday.
[[nodiscard]] std::int64_t dayNumber(const Date& date);
/// The first day of the week as functions are told it: 1 is Sunday, and so is 0.
[[nodiscard]] std::int64_t firstDayOfWeek(const Call& call, std::size_t i);
/// The day that the week of `day` begins with.
[[nodiscard]] std::int64_t weekBegin(std::int64_t day, std::int64_t firstDay);

// TextFunctions.cpp
[[nodiscard]] Value left(const Call& call);
[[nodiscard]] Value right(const Call& call);
[[nodiscard]] Value mid(const Call& call);
[[nodiscard]] Value len(const Call& call);
[[nodiscard]] Value inStr(const Call& call);
[[nodiscard]] Value strComp(const Call& call);
[[nodiscard]] Value uCase(const Call& call);
[[nodiscard]] Value lCase(const Call& call);
[[nodiscard]] Value trim(const Call& call);
[[nodiscard]] Value lTrim(const Call& call);
[[nodiscard]] Value rTrim(const Call& call);

// NumberFunctions.cpp
[[nodiscard]] Value val(const Call& call);
[[nodiscard]] Value isNumeric(const Call& call);

// DateFunctions.cpp
[[nodiscard]] Value today(const Call& call);
[[nodiscard]] Value now(const Call& call);
[[nodiscard]] Value timeOfDay(const Call& call);
[[nodiscard]] Value year(const Call& call);
[[nodiscard]] Value month(const Call& call);
[[nodiscard]] Value day(const Call& call);
[[nodiscard]] Value dateAdd(const Call& call);
[[nodiscard]] Value dateDiff(const Call& call);

// FormatFunction.cpp
[[nodiscard]] Value format(const Call& call);

} // namespace jet::functions
