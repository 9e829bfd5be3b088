#include "architecture/Tree.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

bool isCode(const std::string& path) { return path.ends_with(".h") || path.ends_with(".cpp"); }

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

Files readTree(const std::filesystem::path& root) {
    Files files;
    for (auto entry = std::filesystem::recursive_directory_iterator(root);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry->is_directory()) {
            if (name.starts_with('.') || name.starts_with("build") || name == "third_party")
                entry.disable_recursion_pending();
            continue;
        }
        static const std::regex wanted(R"(.*\.(h|cpp|ui|qrc)|CMakeLists\.txt)");
        if (!std::regex_match(name, wanted))
            continue;
        std::ifstream file(entry->path());
        std::ostringstream text;
        text << file.rdbuf();
        files[entry->path().lexically_relative(root).generic_string()] = text.str();
    }
    return files;
}

Owners readOwners(const Files& files) {
    static const std::regex comment("#[^\n]*");
    static const std::regex call(
        R"((?:house_(?:library|program|test|fuzzer)|add_(?:library|executable)|target_sources)\s*\(([^)]*)\))");
    Owners owners;
    for (const auto& [path, text] : files) {
        if (!path.ends_with("CMakeLists.txt"))
            continue;
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        const std::string code = std::regex_replace(text, comment, "");
        for (std::sregex_iterator it(code.begin(), code.end(), call), end; it != end; ++it) {
            std::istringstream words((*it)[1].str());
            std::string target;
            words >> target;
            for (std::string word; words >> word;)
                if (word.find('.') != std::string::npos)
                    owners
                        [std::filesystem::path(folder + word).lexically_normal().generic_string()] =
                            target;
        }
    }
    return owners;
}

Owners::const_iterator fileOfInclude(const std::string& include, const std::string& from,
                                     const Owners& owners) {
    // What uic and moc make belongs to the form, source or header it is made from.
    static const std::regex madeOfHeader(R"((.*)moc_(.*)\.cpp)");
    static const std::regex generated(R"(ui_(.*)\.h|(.*)\.moc)");
    std::smatch match;
    if (std::regex_match(include, match, generated)) {
        const std::string origin =
            match[1].matched ? match[1].str() + ".ui" : match[2].str() + ".cpp";
        return owners.find(folderOf(from) + "/" + origin);
    }
    if (std::regex_match(include, match, madeOfHeader))
        return fileOfInclude(match[1].str() + match[2].str() + ".h", from, owners);
    for (const char* prefix : {"", "platform/", "tests/"})
        if (const auto owner = owners.find(prefix + include); owner != owners.end())
            return owner;
    return owners.end();
}

std::vector<Include> includesOf(const std::string& text) {
    static const std::regex includeLine(R"re(\s*#\s*include\s*([<"])([^>"]+)[>"].*)re");
    std::vector<Include> includes;
    std::istringstream lines(text);
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (line.find('#') != std::string::npos && std::regex_match(line, match, includeLine))
            includes.push_back({match[2].str(), match[1].str() == "\""});
    return includes;
}

namespace {

/// A class is in its header, its source and, where it has one, the header of its inner parts:
/// Database.h, Database.cpp, DatabaseParts.h. That name of it, with its target, stands for them
/// all.
std::string classOf(const std::string& path, const Owners& owners) {
    const auto file = owners.find(path);
    if (file == owners.end())
        return path;
    const std::string& target = file->second;
    std::string stem = std::filesystem::path(path).stem().string();
    if (stem.ends_with("Parts")) {
        const std::string whole = stem.substr(0, stem.size() - std::string("Parts").size());
        const std::string header = whole + ".h";
        if (std::ranges::any_of(owners, [&](const auto& other) {
                return other.second == target &&
                       std::filesystem::path(other.first).filename() == header;
            }))
            stem = whole;
    }
    return target + "/" + stem;
}

/// Who includes whom, class by class.
using Arrows = std::map<std::string, std::set<std::string>>;

Arrows arrowsOf(const Files& files) {
    const Owners owners = readOwners(files);
    std::map<std::string, std::string> classes;
    for (const auto& [path, target] : owners)
        classes[path] = classOf(path, owners);
    Arrows arrows;
    for (const auto& [path, text] : files) {
        if (!isCode(path) || !classes.contains(path))
            continue;
        for (const auto& [include, quoted] : includesOf(text))
            if (const auto other = fileOfInclude(include, path, owners);
                quoted && other != owners.end() && classes.at(other->first) != classes.at(path))
                arrows[classes.at(path)].insert(classes.at(other->first));
    }
    return arrows;
}

} // namespace

std::vector<std::string> cyclesOf(const Files& files) {
    const Arrows arrows = arrowsOf(files);
    std::map<std::string, std::set<std::string>> reach;
    for (const auto& [from, direct] : arrows) {
        std::set<std::string>& reached = reach[from];
        std::vector<std::string> next(direct.begin(), direct.end());
        while (!next.empty()) {
            const std::string name = next.back();
            next.pop_back();
            if (!reached.insert(name).second)
                continue;
            if (const auto more = arrows.find(name); more != arrows.end())
                next.insert(next.end(), more->second.begin(), more->second.end());
        }
    }
    std::vector<std::string> cycles;
    std::set<std::string> told;
    for (const auto& [name, reached] : reach) {
        if (!reached.contains(name) || told.contains(name))
            continue;
        std::string names;
        for (const std::string& other : reached)
            if (const auto back = reach.find(other);
                back != reach.end() && back->second.contains(name)) {
                told.insert(other);
                names += (names.empty() ? "" : ", ") + other;
            }
        cycles.push_back(names);
    }
    return cycles;
}
