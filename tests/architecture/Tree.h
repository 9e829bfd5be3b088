#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// The tree as its files say it: what the CMake lists name, what the include lines name.

/// Path from the root of the tree, with "/", and the file's text.
using Files = std::map<std::string, std::string>;
/// Path of a file and the target that lists it.
using Owners = std::map<std::string, std::string>;

/// The folder of a path, without its last "/".
[[nodiscard]] std::string folderOf(const std::string& path);
[[nodiscard]] bool isCode(const std::string& path);

/// The sources, forms, resources and CMake lists of the tree; no builds, nothing of others.
[[nodiscard]] Files readTree(const std::filesystem::path& root);
/// What the CMake lists say: every file named in a call that makes a target.
[[nodiscard]] Owners readOwners(const Files& files);

/// An include line of a file.
struct Include {
    std::string name;
    bool quoted;
};

[[nodiscard]] std::vector<Include> includesOf(const std::string& text);
/// The file that the tree's include paths find for `include`, written in `from`: its place in
/// `owners`, or the end.
[[nodiscard]] Owners::const_iterator fileOfInclude(const std::string& include,
                                                   const std::string& from, const Owners& owners);

/// The classes that include each other, by header or source: the names of each cycle.
[[nodiscard]] std::vector<std::string> cyclesOf(const Files& files);
