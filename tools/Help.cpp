#include "tools/Help.h"

#include "tools/Commands.h"
#include "tools/ValueText.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr const char* kSummary = "Ferramenta do técnico para o arquivo automacao.mdb";
constexpr const char* kExitCodes =
    "0 se tudo correu bem, 1 se houve falha ou erro, 2 se o pedido foi mal escrito,\n"
    "3 se uma verificação não achou erros, mas algo a avisar.";

/// Two columns, the second one aligned.
void printPair(const std::string& left, std::string_view right, std::size_t width) {
    std::cout << "  " << left << std::string(width - std::min(width, widthOf(left)), ' ') << "  "
              << right << '\n';
}

std::string nameAndValue(const Option& option) {
    return option.name + (option.value != nullptr ? " " + std::string(option.value) : "");
}

std::size_t widest(const auto& all, auto&& text) {
    std::size_t width = 0;
    for (const auto& one : all)
        width = std::max(width, widthOf(text(one)));
    return width;
}

std::string usage(const ToolCommand& command) {
    return std::string(command.name) + ' ' + command.operands +
           (command.options.empty() ? "" : " [opções]");
}

/// As the formatter of manuals takes it for itself: no line begins with a command of its own, and a
/// hyphen is the one that is typed.
std::string roff(std::string_view text) {
    std::string out;
    bool beginsLine = true;
    for (const char c : text) {
        if (beginsLine && (c == '.' || c == '\''))
            out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
        beginsLine = c == '\n';
    }
    return out;
}

} // namespace

void printVersion() { std::cout << kProgram << " " VALTRINO_VERSION "\n"; }

void printHelp() {
    std::cout << kSummary << ".\n\nUso: " << kProgram
              << " COMANDO ARQUIVO ... [opções]\n\nComandos:\n";
    const std::size_t width = widest(commands(), [](const ToolCommand& c) { return c.name; });
    for (const ToolCommand& command : commands())
        printPair(command.name, command.summary, width);
    std::cout << "\n\"" << kProgram << " COMANDO --help\" explica cada um, \"" << kProgram
              << " --version\" diz a versão.\n\nSaída: " << kExitCodes << '\n';
}

void printHelp(const ToolCommand& command) {
    std::cout << "Uso: " << kProgram << ' ' << usage(command) << "\n\n"
              << command.summary << ".\n\n"
              << command.about << '\n';
    if (command.options.empty())
        return;
    std::cout << "\nOpções:\n";
    const std::size_t width = widest(command.options, nameAndValue);
    for (const Option& option : command.options)
        printPair(nameAndValue(option), option.meaning, width);
}

void printManual() {
    std::cout << ".TH VALTRINO\\-MDB 1 \"\" \"Valtrino " VALTRINO_VERSION "\" \"Valtrino\"\n"
              << ".SH NOME\nvaltrino\\-mdb \\- " << roff(kSummary) << "\n.SH SINOPSE\n"
              << ".B valtrino\\-mdb\n.I COMANDO ARQUIVO\n[opções]\n.SH COMANDOS\n";
    for (const ToolCommand& command : commands()) {
        std::cout << ".SS " << roff(usage(command)) << '\n'
                  << roff(command.summary) << ".\n.PP\n"
                  << roff(command.about) << '\n';
        for (const Option& option : command.options)
            std::cout << ".TP\n.B " << roff(nameAndValue(option)) << '\n'
                      << roff(option.meaning) << '\n';
    }
    std::cout << ".SH \"ESTADO DE SAÍDA\"\n"
              << roff(kExitCodes) << "\n.SH \"VEJA TAMBÉM\"\n.BR valtrino (1)\n";
}

void printCompletion() {
    std::cout << "# bash\n_valtrino_mdb() {\n    local words=\n"
                 "    case ${COMP_CWORD}:${COMP_WORDS[1]} in\n    1:*) words='--help --version";
    for (const ToolCommand& command : commands())
        std::cout << ' ' << command.name;
    std::cout << "' ;;\n";
    for (const ToolCommand& command : commands()) {
        std::cout << "    *:" << command.name << ") words='--help";
        for (const Option& option : command.options)
            std::cout << ' ' << option.name;
        std::cout << "' ;;\n";
    }
    std::cout << "    esac\n"
                 "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$2\")\n"
                 "}\ncomplete -o default -F _valtrino_mdb valtrino-mdb\n";
}
