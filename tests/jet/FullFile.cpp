#include "jet/FullFile.h"

#include "jet/Database.h"
#include "jet/database/DatabasePager.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapLayout.h"

#include <algorithm>
#include <vector>

using namespace jet;

namespace {

/// Puts the pages into use in the map of free ones, to which what lies beyond a file's end is free;
/// returns the size, in bytes, that the file has with them.
std::uint64_t useUp(Database& database, std::uint32_t room) {
    Pager& pager = DatabasePager::of(database);
    const Format& format = pager.format();
    const auto bits = static_cast<std::uint32_t>(MapPageLayout::bits(format));
    const auto last = static_cast<std::uint32_t>(format.largestFile / format.pageSize) - room;
    DatabaseTransaction open(database);
    database.claim();
    const UsageMap free(pager, kFreePagesMap, UsageMap::Kind::global);
    for (std::uint32_t page = last - 1; page > pager.pageCount(); page -= std::min(page, bits))
        PageAllocator(pager).remove(free, static_cast<PageNo>(page)); // makes its part
    std::vector<PageNo> parts;
    const PageRef holder = pager.read(kFreePagesMap.page);
    const auto row = DataPage(format, holder.bytes(), kFreePagesMap.page).slot(kFreePagesMap.slot);
    const std::size_t count = MapRowLayout::referencesIn(row.bytes.size());
    parts.reserve(count);
    for (std::size_t part = 0; part < count; ++part)
        parts.push_back(load(row.bytes.data(), MapRowLayout::reference(part)));
    for (std::uint32_t page = pager.pageCount(); page < last; ++page)
        setBit(pager.change(parts[page / bits]).subspan(MapPageLayout::bitmap), page % bits, false);
    open.commit();
    return last * std::uint64_t{format.pageSize};
}

} // namespace

void leaveRoom(const std::filesystem::path& file, std::uint32_t pages) {
    std::uint64_t size = 0;
    {
        Database database(file);
        size = useUp(database, pages);
    }
    std::filesystem::resize_file(file, size);
}
