#pragma once

#include "jet/disk/File.h"
#include "jet/page/ByteView.h"
#include "jet/page/DataPage.h"
#include "jet/page/Format.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace jet {

/// The pages of a file that is being made beside the others: taken one after the other, written as
/// each becomes complete. Nobody reads it before finish(), so there is nothing to undo, only a file
/// to take away.
class NewFile {
public:
    /// Makes the file. The header, the map of free pages and the first definitions of the system
    /// tables have their places already: pages 0 to 5.
    /// @throws Error{exists, io, full}.
    NewFile(const std::filesystem::path& path, const Format& format, Disk& disk = Disk::system());

    [[nodiscard]] const Format& format() const noexcept { return format_; }
    /// Before anything is written: as far as we may, the same accounts may use it as that file.
    void takeRightsOf(const std::filesystem::path& other);
    /// The file, to read what has been written of it.
    [[nodiscard]] File reopened() const { return {file_.path(), File::Mode::read, file_.disk()}; }

    /// The next page, nothing on it yet.
    /// @throws Error{full} at the largest size the format allows.
    [[nodiscard]] PageNo take();
    void write(PageNo page, std::span<const std::byte> bytes) { writeInto(page, 0, bytes); }
    /// Writes a part of a page that has been written.
    void writeInto(PageNo page, std::size_t at, std::span<const std::byte> bytes);

    /// Writes a map of these pages (ascending) and tells where it is.
    [[nodiscard]] RowId addMap(std::span<const PageNo> pages);

    /// Writes what is still open, the map of free pages (there are none) and `header`, and returns
    /// when the disk has everything.
    void finish(std::span<const std::byte> header);

private:
    [[nodiscard]] RowId addMapRow(std::span<const std::byte> row);
    void flushMaps();
    [[nodiscard]] PageNo writeBitmap(std::span<const PageNo> pages, std::uint64_t first);
    void writeFreeMap();

    const Format& format_;
    File file_;
    std::uint32_t pages_;
    std::optional<PageNo> mapPage_;
    Bytes maps_; ///< of mapPage_
};

/// Rows put on pages in the order they come: those of a table, or the parts of a column's long
/// values. A part may go on any of the last few pages that have room.
class PageFiller {
public:
    PageFiller(NewFile& file, std::uint32_t owner, std::size_t openPages);

    RowId add(std::span<const std::byte> row);
    /// Writes the pages still open.
    void flush();

    /// All pages so far, ascending.
    [[nodiscard]] const std::vector<PageNo>& pages() const noexcept { return pages_; }
    /// After flush(): those with room worth using.
    [[nodiscard]] const std::vector<PageNo>& roomy() const noexcept { return roomy_; }

private:
    struct Open {
        PageNo page;
        Bytes bytes;
    };
    void close(Open& open);

    NewFile& file_;
    std::uint32_t owner_;
    std::size_t most_;
    std::vector<Open> open_; ///< oldest first
    std::vector<PageNo> pages_;
    std::vector<PageNo> roomy_;
};

} // namespace jet
