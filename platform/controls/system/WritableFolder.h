#pragma once

class QString;

/// Whether this user may make files in that folder, which is there.
[[nodiscard]] bool mayWriteIn(const QString& folder);
