#pragma once

#include "jet/TableDefinition.h"
#include "jet/copy/Losses.h"
#include "jet/page/Header.h"

#include <unordered_map>

namespace jet {

/// A file that is read to be written anew. A sound one is taken at the word of its maps and its
/// catalog; of a damaged one every page is looked at first, and says itself what it is.
class SourceFile {
public:
    /// @throws Error{notFound, io, unsupported}; Error{corrupt} if `losses` allows no loss.
    SourceFile(const std::filesystem::path& path, Losses& losses, Disk& disk);

    [[nodiscard]] Losses& losses() noexcept { return losses_; }
    [[nodiscard]] bool damaged() const noexcept { return losses_.mayLose(); }
    [[nodiscard]] Pager& pager() noexcept { return *pager_; }
    [[nodiscard]] Disk& disk() noexcept { return pager_->file().disk(); }
    [[nodiscard]] const Format& format() const noexcept { return pager_->format(); }
    [[nodiscard]] const Header& header() const noexcept { return header_; }
    [[nodiscard]] const TextSettings& texts() const noexcept { return texts_; }
    /// The first page as a new file has it: everything of this one's, nobody at work in it.
    [[nodiscard]] const Bytes& newHeader() const noexcept { return newHeader_; }

    /// The page; of a damaged file nothing if the file hasn't got it or the disk doesn't give it.
    [[nodiscard]] std::optional<PageRef> page(PageNo page);

    /// What the first byte of a page says. Of a damaged file only, like the questions below.
    [[nodiscard]] PageKind kind(PageNo page) const noexcept;
    /// Whose a data page says it is.
    [[nodiscard]] std::uint32_t owner(PageNo page) const noexcept;
    [[nodiscard]] bool isFree(PageNo page) const noexcept;
    /// The pages that say they hold rows of `owner` and aren't free, ascending.
    [[nodiscard]] const std::vector<PageNo>& pagesOf(std::uint32_t owner) const noexcept;

private:
    void readHeader(const File& file);
    [[nodiscard]] bool isKnownCodePage() const;
    void survey();
    void readFreeMap();
    void listOwned();

    Losses& losses_;
    Header header_;
    TextSettings texts_;
    Bytes newHeader_;
    bool rebuiltHeader_ = false;
    std::unique_ptr<Pager> pager_;
    std::vector<PageKind> kinds_;
    std::vector<std::uint32_t> owners_;
    std::vector<bool> free_;
    std::unordered_map<std::uint32_t, std::vector<PageNo>> owned_; ///< by owner
};

} // namespace jet
