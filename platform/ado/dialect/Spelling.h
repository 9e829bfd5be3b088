#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace ado {

/// The collation by which SQLite knows the file's own order of texts.
inline constexpr const char* kTextOrder = "texto";
/// The function that gives, of a text, one that SQLite's own order of bytes puts in its place: what
/// is sorted is compared again and again.
inline constexpr const char* kTextKey = "jet_textkey";

/// How the file spells the names of a statement; each gives the name itself if there is none like
/// it. Only a table that the statement reads is asked for as one: what else the file holds, under
/// whatever name and in whatever state, has no part in a statement.
struct Spelling {
    std::function<std::string(std::string_view name)> table;
    /// Of a column of one of `tables`, which the statement names itself, or of what it is about.
    std::function<std::string(std::string_view name, std::span<const std::string> tables)> column;
    /// Of what stands before a point and is none of the tables that the statement names itself.
    std::function<std::string(std::string_view name)> qualifier;
};

/// A name between double quotes, as SQLite takes it.
[[nodiscard]] std::string quotedName(std::string_view name);
/// A text as a literal with the file's order.
[[nodiscard]] std::string quotedText(std::string_view text);

} // namespace ado
