#pragma once

#include <QByteArray>
#include <QStringList>

/// The volumes of the machine, for who lets the operator choose a folder. Paths have "/" between
/// folders and none at the end, but for a root.

/// Where volumes that hold people's files are mounted, as the system's table of mounts
/// ("/proc/self/ mounts") lists them: disks, memory sticks, folders of other machines, and the
/// root. What the system keeps for itself (its own file systems, what it starts from, packed
/// programs) is not among them. In alphabetical order, each once.
[[nodiscard]] QStringList volumesOf(const QByteArray& mounts);

/// The volumes at hand now. Asks no volume anything, as the answer of a machine that is switched
/// off is waited for long.
[[nodiscard]] QStringList volumes();

/// A path as it is compared: "/" between folders, "\" being taken for one, nothing doubled or left
/// at the end.
[[nodiscard]] QString tidyPath(const QString& path);

/// Whether a tidy path is `folder` or lies in it.
[[nodiscard]] bool liesIn(const QString& path, const QString& folder);
