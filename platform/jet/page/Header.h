#pragma once

#include "jet/disk/File.h"
#include "jet/page/ByteView.h"
#include "jet/page/Format.h"

#include <string>

namespace jet {

/// The first page of a file: what format it has, how its texts are to be read, who may open it.
struct Header {
    Version version{};
    SortOrder order; ///< of new text columns
    std::uint16_t codePage{1252};
    std::uint16_t columnMark{}; ///< Jet 3 repeats it in every column
    std::string password;       ///< empty: anybody may open the file
};

/// `page` is as much of the file's beginning as there is, at most one Jet 4 page.
/// @throws Error{unsupported} for what isn't a file of these two formats, each case with a sentence
/// of
///         its own; Error{corrupt}.
[[nodiscard]] Header parseHeader(std::span<const std::byte> page);

/// Whether a file's beginning says in so many words which program's it is, this format's or
/// another's.
[[nodiscard]] bool namesItsFormat(std::span<const std::byte> page);

/// That of an open file. @throws as parseHeader(), and Error{io}.
[[nodiscard]] Header readHeader(const File& file);

/// The first page of a new file.
[[nodiscard]] Bytes buildHeader(Version version);

/// The names under which the built-in accounts stand in a new file's system tables.
struct Accounts {
    Bytes engine;
    Bytes admin;
    Bytes users;
    Bytes creator;
};
[[nodiscard]] Accounts newAccounts(Version version);

} // namespace jet
