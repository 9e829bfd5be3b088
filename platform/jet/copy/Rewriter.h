#pragma once

#include "jet/Progress.h"
#include "jet/copy/SourceTable.h"
#include "jet/index/IndexBuilder.h"
#include "jet/row/DefinitionImage.h"

#include <map>
#include <unordered_map>
#include <unordered_set>

namespace jet {

/// Whether a column of one of the system's tables holds the number of a definition page, which is
/// another in the new file.
[[nodiscard]] bool holdsDefinitionPage(const std::string& table, const std::string& column);

/// The numbers of definition pages before and now.
class PageNumbers {
public:
    void add(PageNo before, PageNo now) {
        now_[number(before)] = number(now);
        taken_.insert(number(now));
    }
    /// A new table that the source doesn't have.
    void add(PageNo now) { taken_.insert(number(now)); }

    /// The number in the new file of an object that has `object` in the source. One that belongs to
    /// no table any more (rights outlive what they were given on) doesn't become that of another.
    [[nodiscard]] std::uint32_t translated(std::uint32_t object) const;

private:
    std::unordered_map<std::uint32_t, std::uint32_t> now_;
    std::unordered_set<std::uint32_t> taken_;
};

/// A table on its way into the new file.
struct RewrittenTable {
    std::shared_ptr<SourceTable> source; ///< shared by a table and the one beside it
    DefinitionImage image;
    std::string name;
    bool user = false;
    bool listed = true;  ///< the source's catalog has a row for it, which goes into the new one's
    bool beside = false; ///< takes exactly the rows that are `apart`, else all but these
    std::vector<std::uint32_t> apart{};   ///< packed() places in the source, ascending
    std::vector<std::uint32_t> leftOut{}; ///< rows that go nowhere, ascending
    std::vector<PageNo> pages{};          ///< of the new definition
    std::uint64_t rows = 0;               ///< written

    [[nodiscard]] PageNo before() const noexcept { return source->definition().page(); }
    [[nodiscard]] PageNo page() const noexcept { return pages.front(); }
};

/// Writes the tables of one file into another that is new: every definition byte for byte but for
/// the places that name pages, the rows in their order with their long values, the indexes built
/// from the rows. What this engine knows nothing of goes along as it is.
///
/// Definitions get new pages, so the few fields that hold the number of one are translated: the
/// catalog's and the rights' object numbers, and the ends of relationships.
class Rewriter {
public:
    Rewriter(SourceFile& source, NewFile& target, std::vector<RewrittenTable>& tables,
             Progress progress);

    /// Everything but finish() of the new file.
    /// @throws Error{corrupt} of a sound source that isn't; Error{unsupported} for an index whose
    ///         order of texts this engine doesn't know; Error{full, io}.
    void run();

private:
    class Copy;

    void takePages();
    void linkRelationships(RewrittenTable& table) const;
    [[nodiscard]] const RewrittenTable* otherEnd(const RewrittenTable& table,
                                                 const DefinitionImage::End& end) const;

    SourceFile& source_;
    NewFile& target_;
    std::vector<RewrittenTable>& tables_;
    Progress progress_;
    std::unordered_map<PageNo, std::size_t> places_; ///< in tables_, by the definition before
    PageNumbers numbers_;
};

} // namespace jet
