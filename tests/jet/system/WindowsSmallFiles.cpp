#include "jet/SmallFiles.h"

struct SmallFiles::Before {};

bool SmallFiles::canBeHad() { return false; }

SmallFiles::SmallFiles(std::uint64_t) {}
SmallFiles::~SmallFiles() = default;
