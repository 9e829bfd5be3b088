#pragma once

#include <QString>

/// The program's one setting: the folder of the shop's database, the first line of "init.ini" in
/// the program's own folder. Read once, at the start; a changed file counts from the next start on.
/// Written by the folder chooser.
namespace Configuracao {

/// The folder of the program's executable, written as the system writes paths.
[[nodiscard]] QString pastaDoPrograma();

/// Where init.ini is looked for: the program's folder, the system's separator, the name.
[[nodiscard]] QString caminho(const QString& pastaPrograma);

/// The first line of init.ini, whole: no blanks are trimmed, no separator is added or removed, and
/// an empty line or an empty file is an empty folder. Only what ends the line and a byte order mark
/// go. The text is UTF-8, or else, as older machines write it, one byte a character (Latin-1).
/// Without a file, the program's folder itself: the database is then expected beside the program.
/// @throws jet::Error{io} if the file is there but can't be read.
[[nodiscard]] QString pastaDosDados(const QString& pastaPrograma);

/// Makes the folder the one line of init.ini, as pastaDosDados() reads it back: whole, in UTF-8,
/// then a line break. Line breaks within it, which a paste may bring along, are left out. Whatever
/// fails or breaks off, the file is the old one or the new one, whole.
/// @throws jet::Error{full, readOnly} if it can't be written; the file is then as it was, and the
///         operator may try again.
void gravarPasta(const QString& pastaPrograma, const QString& pasta);

} // namespace Configuracao
