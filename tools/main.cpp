#include "jet/Error.h"
#include "jet/Unfinished.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kProgram = "valtrino-mdb";

std::size_t letters(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

/// Two columns, the second one aligned.
void printPair(const std::string& left, std::string_view right, std::size_t width) {
    std::cout << "  " << left << std::string(width - std::min(width, letters(left)), ' ') << "  "
              << right << '\n';
}

void printHelp() {
    std::cout << "Ferramenta do técnico para o arquivo automacao.mdb.\n\n"
              << "Uso: " << kProgram << " COMANDO ARQUIVO ... [opções]\n\nComandos:\n";
    for (const ToolCommand& command : commands())
        printPair(command.name, command.summary, 8);
    std::cout
        << "\n\"" << kProgram << " COMANDO --help\" explica cada um.\n\n"
        << "Saída: 0 se tudo correu bem, 1 se houve falha ou erro, 2 se o pedido foi mal escrito,\n"
           "3 se uma verificação não achou erros, mas algo a avisar.\n";
}

void printHelp(const ToolCommand& command) {
    std::cout << "Uso: " << kProgram << ' ' << command.name << ' ' << command.operands
              << (command.options.empty() ? "" : " [opções]") << "\n\n"
              << command.summary << ".\n\n"
              << command.about << '\n';
    if (command.options.empty())
        return;
    std::cout << "\nOpções:\n";
    const auto left = [](const Option& option) {
        return option.name + (option.value != nullptr ? " " + std::string(option.value) : "");
    };
    std::size_t width = 0;
    for (const Option& option : command.options)
        width = std::max(width, letters(left(option)));
    for (const Option& option : command.options)
        printPair(left(option), option.meaning, width);
}

int run(std::span<const std::string_view> words) {
    if (words.empty())
        throw UsageError("Falta o comando.");
    if (words[0] == "--help" || words[0] == "-h") {
        printHelp();
        return kDone;
    }
    const auto command = std::ranges::find(commands(), words[0], &ToolCommand::name);
    if (command == commands().end())
        throw UsageError("O comando \"" + std::string(words[0]) + "\" não existe.");
    const auto rest = words.subspan(1);
    if (std::ranges::count(rest, "--help") > 0 || std::ranges::count(rest, "-h") > 0) {
        printHelp(*command);
        return kDone;
    }
    const int code = command->run(Arguments(*command, rest));
    std::cout.flush();
    if (!std::cout)
        throw jet::Error(jet::Errc::io, "A saída não pôde ser gravada.");
    return code;
}

/// Ctrl+C, or the machine going down: what this run has begun goes with it.
extern "C" void endEarly(int signal) {
    jet::Unfinished::removeAll();
    static_cast<void>(::raise(signal)); // handled no more: it ends the program
}

void tidyWhenEnded() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        struct sigaction before {};
        action.sa_handler = endEarly;
        action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            static_cast<void>(::sigaction(signal, &action, nullptr));
    }
}

} // namespace

int main(int count, char** words) {
    std::ios::sync_with_stdio(false);
    tidyWhenEnded();
    try {
        return run(std::vector<std::string_view>(words + 1, words + std::max(count, 1)));
    } catch (const UsageError& error) {
        std::cerr << kProgram << ": " << error.what() << " Veja \"" << kProgram << " --help\".\n";
        return kWrongUsage;
    } catch (const jet::Error& error) {
        std::cerr << kProgram << ": " << error.what() << '\n';
    } catch (const std::exception& error) {
        std::cerr << kProgram << ": falha inesperada: " << error.what() << '\n';
    }
    return kProblems;
}
