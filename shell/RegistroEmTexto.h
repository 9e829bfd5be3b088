#pragma once

#include "jet/Table.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// A whole row as one line of text that people can read and that gives exactly the row again:
///
///     [lancamento]=12 [numero]="000101" [valor]=1234,5600 [bompara]=2026-04-01 [agencia]=nulo
///
/// Texts stand in quotes, with \" \\ \n \r inside; amounts have four decimals; a moment that is no
/// whole second, and any other number with decimals, is written with all its digits; yes/no is
/// verdadeiro or falso; bytes and identifiers are hexadecimal.
namespace RegistroEmTexto {

[[nodiscard]] std::string escrever(std::span<const jet::Column> campos, const jet::Row& registro);

/// The values that the text has for these columns, by their names and types. Columns that it
/// doesn't name aren't given.
/// @throws jet::Error{notFound} if it names a column that isn't there, Error{corrupt} if it is no
///         such text.
[[nodiscard]] std::vector<jet::Assignment> ler(std::span<const jet::Column> campos,
                                               std::string_view texto);

} // namespace RegistroEmTexto
