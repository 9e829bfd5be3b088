#pragma once

#include <QString>

/// The program's one setting: the folder of the shop's database, the first line of "init.ini". Read
/// once, at the start; a changed file counts from the next start on. Written by the folder chooser.
///
/// A program whose own folder can be written has init.ini there, and nowhere else. One that was
/// installed where its user can't write takes the first of these that is there:
///
///     the user's      $XDG_CONFIG_HOME/valtrino/init.ini (~/.config/valtrino/init.ini)
///     the program's   beside the program, where whoever installed it may have put one
///     the system's    valtrino/init.ini in each of $XDG_CONFIG_DIRS (/etc/xdg)
///
/// and its folder chooser writes the user's. On Windows the folder of the user's settings is
/// %LOCALAPPDATA%, that of the system's %ProgramData%.
namespace Configuracao {

/// The folder of the program's executable, written as the system writes paths.
[[nodiscard]] QString pastaDoPrograma();

/// Where init.ini stands beside the program: its folder, the system's separator, the name.
[[nodiscard]] QString caminho(const QString& pastaPrograma);

/// Whether there is that folder and this user may not write in it.
[[nodiscard]] bool soDeLeitura(const QString& pasta);

/// The init.ini that gravarPasta() writes.
[[nodiscard]] QString arquivoParaGravar(const QString& pastaPrograma);

/// The init.ini that counts: the first that is there, else the one that would be written.
[[nodiscard]] QString arquivoParaLer(const QString& pastaPrograma);

/// The first line of init.ini, whole: no blanks are trimmed, no separator is added or removed, and
/// an empty line or an empty file is an empty folder. Only what ends the line, a byte order mark
/// and the password in a server's address go. The text is UTF-8, or else, as older machines write
/// it, one byte a character (Latin-1). Without a file, the program's folder itself: the database is
/// then expected beside the program.
/// @throws jet::Error{io} if the file is there but can't be read.
[[nodiscard]] QString pastaDosDados(const QString& pastaPrograma);

/// A folder line without the password that a server's address may have.
[[nodiscard]] QString semSenha(const QString& linha);

/// Makes the folder the one line of init.ini, as pastaDosDados() reads it back: whole, in UTF-8,
/// without the password in a server's address, then a line break. Line breaks within it, which a
/// paste may bring along, are left out. Whatever fails or breaks off, the file is the old one or
/// the new one, whole. The folder of the user's file is made if there is none.
/// @throws jet::Error{full, readOnly} if it can't be written; the file is then as it was, and the
///         operator may try again.
void gravarPasta(const QString& pastaPrograma, const QString& pasta);

} // namespace Configuracao
