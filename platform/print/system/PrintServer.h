#pragma once

/// Whether the system's print server has taken the last job, where Qt doesn't tell.
[[nodiscard]] bool printServerTookJob();
