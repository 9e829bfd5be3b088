#pragma once

#include <cstdint>
#include <filesystem>

/// Makes a database as long as its format allows but for the last `pages`, and all there is in use:
/// with a hole, where the system has such. Closed meanwhile. The check of such a file is sound,
/// with a warning for each page that nobody has.
void leaveRoom(const std::filesystem::path& file, std::uint32_t pages);
