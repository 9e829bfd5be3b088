#include "jet/Error.h"
#include "jet/Unfinished.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/Help.h"
#include "tools/system/Console.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <regex>
#include <string_view>
#include <vector>

namespace {

/// What is asked of the program itself: the words that stand where a command would.
struct Question {
    std::string_view word;
    void (*answer)();
};
constexpr Question kQuestions[] = {
    {"--help",       [] { printHelp(); }},
    {"-h",           [] { printHelp(); }},
    {"--version",    printVersion       },
    {"--man",        printManual        },
    {"--completion", printCompletion    },
};

/// Where more is told: of the program, of one command.
std::string seeHelp(const std::string& command = {}) {
    return std::string(" Veja \"") + kProgram + (command.empty() ? "" : " " + command) +
           " --help\".";
}

int run(std::span<const std::string_view> words) {
    if (words.empty())
        throw UsageError("Falta o comando." + seeHelp());
    for (const Question& question : kQuestions)
        if (words[0] == question.word) {
            question.answer();
            return kDone;
        }
    const auto command = std::ranges::find(commands(), words[0], &ToolCommand::name);
    if (command == commands().end())
        throw UsageError("O comando \"" + std::string(words[0]) + "\" não existe." + seeHelp());
    const auto rest = words.subspan(1);
    if (std::ranges::count(rest, "--help") > 0 || std::ranges::count(rest, "-h") > 0) {
        printHelp(*command);
        return kDone;
    }
    int code = kDone;
    try {
        code = command->run(Arguments(*command, rest));
    } catch (const UsageError& error) {
        throw UsageError(error.what() + seeHelp(command->name));
    }
    std::cout.flush();
    if (!std::cout)
        throw jet::Error(jet::Errc::io, "A saída não pôde ser gravada.");
    return code;
}

/// A file that is made under a name of its own is the one that was asked for.
std::string withNamesGiven(const std::string& sentence) {
    static const std::regex part(R"((\.parcial-[[:alnum:]]*-[0-9]+-[0-9]+)+)");
    return std::regex_replace(sentence, part, "");
}

} // namespace

int main(int count, char** given) {
    std::ios::sync_with_stdio(false);
    console::prepareOutput();
    // What this run has begun goes with it.
    console::beforeEarlyEnd(jet::Unfinished::removeAll);
    try {
        const std::vector<std::string> words = console::words(count, given);
        return run(std::vector<std::string_view>(words.begin(), words.end()));
    } catch (const UsageError& error) {
        std::cerr << kProgram << ": " << error.what() << '\n';
        return kWrongUsage;
    } catch (const jet::Error& error) {
        std::cerr << kProgram << ": " << withNamesGiven(error.what()) << '\n';
    } catch (const std::exception& error) {
        std::cerr << kProgram << ": falha inesperada: " << error.what() << '\n';
    }
    return kProblems;
}
