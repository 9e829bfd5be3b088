#pragma once

#include <QString>

/// The number of a taxpayer, CPF (11 digits) or CGC/CNPJ (14 digits): bare as it is stored and
/// typed, punctuated as it is shown.
///
/// Deliberate: only the length counts. No check digit is looked at, and characters are taken by
/// their place, whatever they are; the box that the number is typed into takes digits only.
namespace Documento {

/// "12345678901" as "123.456.789-01", "12345678000195" as "12.345.678/0001-95".
///
/// A single character, like none, gives "". Any other length is said to be wrong ("CGC/CPF Inválido
/// !") and gives "".
[[nodiscard]] QString formatar(const QString& digitos);

/// The reverse: takes out what stands where the signs of a text of 14 or 18 characters should be.
/// A text of any other length comes back as it is. Deliberate: 14 bare digits lose three.
[[nodiscard]] QString semSinais(const QString& texto);

} // namespace Documento
