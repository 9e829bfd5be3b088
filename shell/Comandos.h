#pragma once

#include <Qt>

#include <span>

/// What the operator can choose in the main window and what each choice does, as tables.
namespace Comandos {

/// A choice: the mode word it sets, where the window has several uses, and the window it opens.
/// Entry and button of the same choice share one.
struct Comando {
    const char* modo;
    void (*abrir)(); ///< null: the program ends
};

struct Entrada {
    const char* nome;    ///< of the control; a separator has a name and no caption
    const char* legenda; ///< "&" marks the access key
    const char* imagem = nullptr;
    const Comando* comando = nullptr; ///< nothing: the entry does nothing
    bool ligada = true;
};

struct Menu {
    const char* nome;
    const char* legenda;
    std::span<const Entrada> entradas;
};

struct Botao {
    const char* chave;
    const char* texto; ///< the short text under the image
    const char* dica;  ///< the tool-tip
    const char* imagem;
    const Comando* comando;
    bool iniciaGrupo; ///< parted from the one before it
};

/// A key that opens a window from any other; on no menu, so that these stay as the shop knows them.
struct Tecla {
    Qt::Key tecla;
    const Comando* comando;
    const char* janela;  ///< the name of the window that it opens
    const char* legenda; ///< in the menus of lists; null: in none; "&" marks the access key
};

[[nodiscard]] std::span<const Menu> menus();
[[nodiscard]] std::span<const Botao> botoes();
[[nodiscard]] std::span<const Tecla> teclas();

} // namespace Comandos
