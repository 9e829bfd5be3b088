#pragma once

#include <initializer_list>
#include <span>

class QWidget;

namespace ado {
class Recordset;
}

/// What the windows do where the shop's file isn't quite as they know it. The back-office system
/// makes the tables, and not all of its versions make them alike.
namespace Estrutura {

/// For a window that is of no use without these fields.
/// @throws jet::Error{notFound} with a sentence that names the first one missing.
void exigir(const ado::Recordset& rs, std::initializer_list<const char*> campos);

/// A field that a window can do without, and the control that shows it.
struct Dispensavel {
    const char* campo;
    QWidget* controle; ///< null: it is only reckoned with
};
/// Switches off the controls whose fields are missing, and says once which these are.
void dispensar(const ado::Recordset& rs, std::span<const Dispensavel> campos);
inline void dispensar(const ado::Recordset& rs, std::initializer_list<Dispensavel> campos) {
    dispensar(rs, std::span(campos.begin(), campos.size()));
}

/// Begins a new record, whose key the file must number: without a number nobody would find it
/// again. @throws jet::Error{nullValue} if it doesn't.
void acrescentar(ado::Recordset& rs, const char* chave);

} // namespace Estrutura
