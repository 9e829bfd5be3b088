#pragma once

#include <QStringList>

/// The volumes of the machine, for who lets the operator choose a folder. Paths have "/" between
/// folders and none at the end, but for a root.

/// The volumes at hand now, in alphabetical order: where people's files are, "/" or "C:/" first.
/// Asks no volume anything, as the answer of a machine that is switched off is waited for long.
[[nodiscard]] QStringList volumes();

/// A folder's or file's name, or a path, as it is compared: whether capitals tell two names apart
/// is the system's.
[[nodiscard]] QString asCompared(const QString& name);

/// A path as it is handled: "/" between folders, "\" being taken for one, nothing doubled or left
/// at the end.
[[nodiscard]] QString tidyPath(const QString& path);

/// Whether a tidy path is `folder` or lies in it.
[[nodiscard]] bool liesIn(const QString& path, const QString& folder);
