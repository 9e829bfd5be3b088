#include "jet/page/NewFile.h"

#include "jet/Error.h"
#include "jet/page/MapLayout.h"

#include <algorithm>

namespace jet {

namespace {

/// A bitmap longer than this isn't kept in its row.
constexpr std::size_t kLongestInline = 512;

} // namespace

NewFile::NewFile(const std::filesystem::path& path, const Format& format, Disk& disk)
    : format_(format), file_(path, File::Mode::createNew, disk), pages_(kFirstUserDefinition) {}

void NewFile::takeRightsOf(const std::filesystem::path& other) {
    file_.takeRights(File(other, File::Mode::read, file_.disk()).attributes().rights);
}

PageNo NewFile::take() {
    if ((std::uint64_t{pages_} + 1) * format_.pageSize > format_.largestFile)
        throw Error(Errc::full, "O arquivo novo passaria do tamanho máximo do seu formato (" +
                                    std::to_string(format_.largestFile >> 30) + " GB).");
    return static_cast<PageNo>(pages_++);
}

void NewFile::writeInto(PageNo page, std::size_t at, std::span<const std::byte> bytes) {
    file_.write(std::uint64_t{number(page)} * format_.pageSize + at, bytes);
}

RowId NewFile::addMapRow(std::span<const std::byte> row) {
    const auto editor = [&] { return DataPageEditor(format_, maps_, *mapPage_); };
    if (!mapPage_ || !editor().view().hasRoom(row.size())) {
        flushMaps();
        mapPage_ = take();
        maps_.resize(format_.pageSize);
        DataPageEditor::format(format_, maps_, kMapOwner);
    }
    return {*mapPage_, static_cast<std::uint16_t>(editor().add(row))};
}

void NewFile::flushMaps() {
    if (mapPage_)
        write(*mapPage_, maps_);
}

PageNo NewFile::writeBitmap(std::span<const PageNo> pages, std::uint64_t first) {
    Bytes image(format_.pageSize);
    startPage(image.data(), PageKind::usageMap);
    for (const PageNo page : pages)
        setBit(std::span(image).subspan(MapPageLayout::bitmap), number(page) - first);
    const PageNo at = take();
    write(at, image);
    return at;
}

RowId NewFile::addMap(std::span<const PageNo> pages) {
    Bytes row = emptyMap(format_);
    if (pages.empty())
        return addMapRow(row);
    const std::uint32_t last = number(pages.back());
    const std::uint32_t first = last / 8 < format_.mapBitmap ? 0 : number(pages.front()) / 8 * 8;
    if (const std::size_t needed = (last - first) / 8 + 1; needed <= kLongestInline) {
        row.resize(MapRowLayout::bitmap + std::max(format_.mapBitmap, wholeWords(needed)));
        store(row.data(), MapRowLayout::first, static_cast<PageNo>(first));
        for (const PageNo page : pages)
            setBit(std::span(row).subspan(MapRowLayout::bitmap), number(page) - first);
        return addMapRow(row);
    }
    store(row.data(), MapRowLayout::type, MapType::reference);
    const std::size_t bits = MapPageLayout::bits(format_);
    for (auto from = pages.begin(); from != pages.end();) {
        const std::size_t part = number(*from) / bits;
        const auto to = std::find_if(from, pages.end(),
                                     [&](PageNo page) { return number(page) / bits != part; });
        store(row.data(), MapRowLayout::reference(part),
              writeBitmap(std::span(from, to), std::uint64_t{part} * bits));
        from = to;
    }
    return addMapRow(row);
}

/// A set bit is a free page: beyond the file's end all are, inside it none.
void NewFile::writeFreeMap() {
    Bytes page(format_.pageSize);
    DataPageEditor::format(format_, page, number(kMapsOfFile));
    DataPageEditor editor(format_, page, kMapsOfFile);
    const Bytes none = emptyMap(format_);
    Bytes row = none;

    const std::size_t mostInline =
        (editor.view().freeBytes() - row.size() - 2 * sizeof(std::uint32_t)) / 4 * 4 -
        MapRowLayout::bitmap;
    if (const std::size_t needed = wholeWords(pages_ / 8 + 1); needed <= mostInline) {
        row.resize(MapRowLayout::bitmap + std::max(format_.mapBitmap, needed));
        for (std::size_t bit = pages_; bit < 8 * (row.size() - MapRowLayout::bitmap); ++bit)
            setBit(std::span(row).subspan(MapRowLayout::bitmap), bit);
    } else {
        // The bitmap's own pages are in use as well: take them before it is drawn.
        store(row.data(), MapRowLayout::type, MapType::reference);
        const std::size_t bits = MapPageLayout::bits(format_);
        std::vector<PageNo> parts;
        while (parts.size() * bits < pages_)
            parts.push_back(take());
        for (std::size_t part = 0; part < parts.size(); ++part) {
            Bytes image(format_.pageSize);
            startPage(image.data(), PageKind::usageMap);
            for (std::size_t bit = 0; bit < bits; ++bit)
                if (part * bits + bit >= pages_)
                    setBit(std::span(image).subspan(MapPageLayout::bitmap), bit);
            write(parts[part], image);
            store(row.data(), MapRowLayout::reference(part), parts[part]);
        }
    }
    editor.add(row);
    editor.add(none);
    write(kMapsOfFile, page);
}

void NewFile::finish(std::span<const std::byte> header) {
    flushMaps();
    writeFreeMap();
    write(PageNo{0}, header);
    file_.sync();
}

PageFiller::PageFiller(NewFile& file, std::uint32_t owner, std::size_t openPages)
    : file_(file), owner_(owner), most_(openPages) {}

RowId PageFiller::add(std::span<const std::byte> row) {
    const Format& format = file_.format();
    auto open = std::ranges::find_if(open_, [&](const Open& candidate) {
        return DataPage(format, candidate.bytes, candidate.page).hasRoom(row.size());
    });
    if (open == open_.end()) {
        if (open_.size() == most_) {
            close(open_.front());
            open_.erase(open_.begin());
        }
        open_.push_back({file_.take(), Bytes(format.pageSize)});
        open = std::prev(open_.end());
        DataPageEditor::format(format, open->bytes, owner_);
        pages_.push_back(open->page);
    }
    return {open->page,
            static_cast<std::uint16_t>(DataPageEditor(format, open->bytes, open->page).add(row))};
}

void PageFiller::close(Open& open) {
    const DataPage page(file_.format(), open.bytes, open.page);
    if (page.freeBytes() >= file_.format().pageSize / 8 && page.slotCount() < kMaxSlots)
        roomy_.push_back(open.page);
    file_.write(open.page, open.bytes);
}

void PageFiller::flush() {
    for (Open& open : open_)
        close(open);
    open_.clear();
    std::ranges::sort(roomy_);
}

} // namespace jet
