#pragma once

#include "jet/Types.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What may stand on a command's line after its operands.
struct Option {
    const char* name;  ///< with its dashes
    const char* value; ///< what the help calls the value; null for one that takes none
    const char* meaning;
};

class Arguments;

/// One of the things the program does.
struct ToolCommand {
    const char* name;
    const char* operands; ///< their names as the help shows them, one word each
    const char* summary;
    const char* about; ///< what the help of this command adds
    std::span<const Option> options;
    int (*run)(const Arguments&); ///< returns the program's exit code
};

/// A command line that doesn't say what to do. what() is a sentence for the technician.
class UsageError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a command's line gave. Every question that finds a wrong value throws UsageError.
class Arguments {
public:
    /// `words` is what stands behind the command's name; an option's value follows it, or stands
    /// behind a "=". After "--" all words are operands.
    Arguments(const ToolCommand& command, std::span<const std::string_view> words);

    [[nodiscard]] const std::string& operand(std::size_t place) const { return operands_[place]; }
    [[nodiscard]] std::filesystem::path path() const;
    // Operands as what they have to be. @throws jet::Error{notFound, io} that says what they are.
    [[nodiscard]] std::filesystem::path file(std::size_t place = 0) const; ///< no folder
    /// In a folder that is there; it may be there itself.
    [[nodiscard]] std::filesystem::path newFile(std::size_t place = 0) const;
    [[nodiscard]] std::filesystem::path folder(std::size_t place) const;
    /// A server's address, if that stands in a file's place. One with a password is refused: who
    /// lists the programs that run could read it.
    [[nodiscard]] std::optional<std::string> server(std::size_t place = 0) const;
    [[nodiscard]] bool has(std::string_view option) const { return values_.contains(option); }
    [[nodiscard]] std::string text(std::string_view option, const std::string& otherwise) const;
    /// A whole number from 0 to `most`.
    [[nodiscard]] std::int64_t number(std::string_view option, std::int64_t otherwise,
                                      std::int64_t most) const;
    /// A day written yyyy-mm-dd.
    [[nodiscard]] std::optional<jet::CivilTime> day(std::string_view option) const;

private:
    std::vector<std::string> operands_;
    std::map<std::string, std::string, std::less<>> values_;
};
