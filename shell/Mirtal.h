#pragma once

#include "ado/Shown.h"
#include "shell/DatabaseFolder.h"

#include <QString>

#include <functional>
#include <optional>

class DropDownList;

namespace ado {
class Recordset;
}

/// What all windows share: the public state that ties them together, and the routines that each of
/// them would otherwise write again. What a control or a window can do by itself (Enter as Tab,
/// clearing, type-ahead, centring) is in platform/controls.
namespace Mirtal {

/// Which of its uses the next shared window is opened for: "Baixar", "localizarCH", "localizarSF",
/// "Consulta", "relch", "relsf", or "" for none.
extern QString modo;

/// Whether the operator has chosen a cheque in the list, and its `lancamento`.
extern bool registroEscolhido;
extern qint32 lancamentoEscolhido;

/// Shows a text in the prompt panel of the main window's status bar; "" clears it.
void mensagem(const QString& texto);
/// Where mensagem() shows its text. Without it, nowhere.
void aoMostrarMensagem(std::function<void(const QString&)> mostrar);

/// Shows news in the panel beside it, where they stay while the focus moves; "" clears it.
void noticia(const QString& texto);
/// Where noticia() shows its text. Without it, nowhere.
void aoMostrarNoticia(std::function<void(const QString&)> mostrar);

/// Deletes the first row of `tabela` whose `campo` equals `valor`; a value that is text is put
/// between single quotes. Deliberate: the value goes in as it stands, an apostrophe in it breaks
/// the search. With `visto` the row must be as it was shown.
/// @throws jet::Error{noCurrentRow} if no row has the value; with `visto` jet::Error{gone} then,
///         and jet::Error{conflict} if the row has been changed since.
void apagarPorChave(const QString& tabela, const QString& campo, const QString& valor, bool texto,
                    const std::optional<ado::Shown>& visto = std::nullopt);

/// Runs work that deletes many cheques one by one and returns when the disk has all of it. Where it
/// can't go on, what isn't on the disk is undone, and the error says how many cheques are gone.
/// `feito` is what was done with them: "excluído"; `operacao` is what the history calls it.
/// @throws what the work or the writing throws.
void excluirMuitos(const char* feito, const char* operacao, const std::function<void()>& trabalho);

/// Lists a recordset: an entry for each row, showing `campo`, with the whole number of `campoChave`
/// as its item data. Sorts the recordset by `campo` and leaves it past its end. Lets the windows
/// repaint meanwhile; keys and clicks wait until it is done.
void preencherLista(DropDownList& lista, ado::Recordset& rs, const QString& campo,
                    const QString& campoChave);

/// Goes where a button of the navigation bar says: 0 first, 1 previous, 2 next, 3 last; at an end
/// it stays there. Any other number moves nothing.
/// @return false, and nothing happens, if there are no records.
bool navegar(ado::Recordset& rs, int botao);

/// The beginning of a statement over a table of cheques ("cheques", "semfundos"): each with its
/// client and its bank, all fields. What follows is a where clause or an order; a blank stands
/// before it.
[[nodiscard]] QString comClienteEBanco(const char* tabela);

/// Goes to the first row of all that meets a criterion; to the end if there is none.
/// @return whether there is one.
bool localizar(ado::Recordset& rs, const QString& criterio);

/// Goes to the row that meets a criterion and begins to change it, as it was shown.
/// @throws as ado::Recordset::Edit(); jet::Error{conflict} if it is there but left out by the
///         filter.
void editar(ado::Recordset& rs, const QString& criterio, const ado::Shown& visto);
/// Goes to the same row, without the filter if that leaves it out. @return whether it is there and
/// no longer as it was shown; false if none was shown.
bool foiAlterado(ado::Recordset& rs, const QString& criterio, const ado::Shown& visto);

/// The text with zeros before it to make 8 characters; a longer one as it is.
[[nodiscard]] QString zerosAEsquerda(const QString& texto);

/// Says what a report has failed of, under the title "Impressão": `codigo` as the report's error
/// event gives it, 0x80040000 + 1001 to 1007. Deliberate: another negative code gives an empty
/// message. With a code from 0 on it is an error that nobody foresaw, told with its `detalhes`.
void erroDeRelatorio(qint32 codigo, const QString& detalhes);

} // namespace Mirtal
