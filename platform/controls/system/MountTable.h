#pragma once

#include <QByteArray>
#include <QStringList>

/// Where volumes that hold people's files are mounted, as the system's table of mounts
/// ("/proc/self/mounts") lists them: disks, memory sticks, folders of other machines, and the
/// root. What the system keeps for itself (its own file systems, what it starts from, packed
/// programs) is not among them. In alphabetical order, each once.
[[nodiscard]] QStringList volumesOf(const QByteArray& mounts);
