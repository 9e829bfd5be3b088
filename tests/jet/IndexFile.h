#pragma once

#include "jet/index/IndexTree.h"
#include "jet/page/DataPage.h"
#include "jet/system/System.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// A file that holds one index and nothing else: a page in the place of the header, the map of free
/// pages, a page standing for the table's definition, and the tree. A transaction is always open.
/// Beside the tree goes a std::set of the same entries, which the tree is compared with.
class IndexFile {
public:
    using Entry = std::pair<jet::Bytes, std::int64_t>; ///< key, packed row
    using Model = std::set<Entry>;

    explicit IndexFile(jet::Version version)
        : path_(freshPath()),
          pager_(makeFile(path_, jet::formatOf(version)), jet::formatOf(version), true),
          pages_(pager_) {
        pager_.begin();
        const jet::PageNo owner = pages_.take();
        const jet::RowId map = pages_.createMap();
        root_ = jet::IndexTree::create(pager_, pages_, owner, map);
        tree_.emplace(pager_, owner, root_, map);
        owner_ = owner;
    }
    ~IndexFile() {
        pager_.rollback();
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    IndexFile(const IndexFile&) = delete;
    IndexFile& operator=(const IndexFile&) = delete;

    jet::Pager& pager() { return pager_; }
    jet::PageAllocator& pages() { return pages_; }
    jet::IndexTree& tree() { return *tree_; }
    [[nodiscard]] jet::PageNo owner() const { return owner_; }
    [[nodiscard]] const jet::Format& format() const { return pager_.format(); }
    Model& model() { return model_; }

    /// False, and nothing done, if the entry is there already.
    bool insert(const jet::Bytes& key, std::int64_t row) {
        if (!model_.insert({key, row}).second)
            return false;
        tree_->insert(pages_, key, jet::unpacked(row));
        return true;
    }
    void erase(const Entry& entry) {
        tree_->erase(pages_, entry.first, jet::unpacked(entry.second));
        model_.erase(entry);
    }

    /// Valid until the page changes.
    jet::IndexPage page(jet::PageNo page) {
        return jet::IndexPage::open(format(), pager_.read(page).view(), owner_);
    }
    unsigned level() { return page(root_).level(); }
    std::vector<jet::PageNo> members() {
        std::vector<jet::PageNo> found;
        for (auto at = tree_->map().next(0); at; at = tree_->map().next(number(*at) + 1))
            found.push_back(*at);
        return found;
    }

    /// Every entry the tree holds, by verify(), which must find no problem.
    std::vector<Entry> verified() {
        std::vector<Entry> found;
        tree_->verify({[](jet::PageNo page, const std::string& reason) {
                           ADD_FAILURE() << "page " << number(page) << ": " << reason;
                       },
                       [&](std::span<const std::byte> key, jet::RowId row) {
                           found.emplace_back(jet::Bytes(key.begin(), key.end()), packed(row));
                       }});
        return found;
    }
    /// The tree is sound and holds what the model holds, walked either way.
    void expectSound() {
        const std::vector<Entry> expected(model_.begin(), model_.end());
        EXPECT_TRUE(verified() == expected) << "of " << expected.size() << " entries";
        jet::IndexTree::Cursor cursor(*tree_);
        std::vector<Entry> walked;
        while (cursor.next())
            walked.push_back(entryOf(cursor));
        EXPECT_TRUE(walked == expected) << "forward " << walked.size();
        walked.clear();
        while (cursor.previous())
            walked.push_back(entryOf(cursor));
        std::reverse(walked.begin(), walked.end());
        EXPECT_TRUE(walked == expected) << "backward " << walked.size();
    }

    static Entry entryOf(const jet::IndexTree::Cursor& cursor) {
        return {jet::Bytes(cursor.key().begin(), cursor.key().end()), packed(cursor.row())};
    }

private:
    static std::filesystem::path freshPath() {
        static int count = 0;
        return std::filesystem::temp_directory_path() /
               ("index-" + std::to_string(jet::sys::processNumber()) + "-" +
                std::to_string(++count) + ".mdb");
    }
    static jet::File makeFile(const std::filesystem::path& path, const jet::Format& format) {
        std::vector<std::byte> bytes(2 * format.pageSize);
        const auto mapPage = std::span(bytes).subspan(format.pageSize);
        jet::DataPageEditor::format(format, mapPage, 1);
        jet::DataPageEditor maps(format, mapPage, jet::PageNo{1});
        jet::Bytes map(5 + format.mapBitmap);
        static_cast<void>(maps.add(map));
        static_cast<void>(maps.add(map));
        const auto free = maps.slotBytes(0).subspan(5);
        std::fill(free.begin(), free.end(), std::byte{0xFF});
        free[0] = std::byte{0xFC}; // page 0 and this one
        jet::File file(path, jet::File::Mode::createNew);
        file.write(0, bytes);
        return file;
    }

    std::filesystem::path path_;
    jet::Pager pager_;
    jet::PageAllocator pages_;
    jet::PageNo owner_{};
    jet::PageNo root_{};
    std::optional<jet::IndexTree> tree_;
    Model model_;
};

using Random = std::mt19937;

inline std::uint32_t below(Random& random, std::uint32_t end) {
    return static_cast<std::uint32_t>(random() % end);
}

/// The key of a whole number.
inline jet::Bytes numberKey(std::uint32_t value) {
    jet::Bytes key{std::byte{0x7F}};
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        key.push_back(static_cast<std::byte>(value >> shift));
    return key;
}

/// The longest key that an index takes.
inline std::size_t longestKey(const jet::Format& format) { return format.indexCapacity() / 2 - 8; }

/// Tests that run over a file of each format.
class IndexTreeOf : public testing::TestWithParam<jet::Version> {
protected:
    IndexFile file{GetParam()};

    template <class Action>
    static jet::Errc failure(Action&& action) {
        try {
            action();
        } catch (const jet::Error& error) {
            return error.code();
        }
        ADD_FAILURE() << "nothing was thrown";
        return jet::Errc::misuse;
    }
    std::vector<std::string> problems() {
        std::vector<std::string> found;
        file.tree().verify(
            {[&](jet::PageNo, const std::string& reason) { found.push_back(reason); },
             [](std::span<const std::byte>, jet::RowId) {}});
        return found;
    }
    /// Long keys, so that few entries make a tall tree.
    void grow(std::uint32_t entries) {
        for (std::uint32_t n = 0; n < entries; ++n) {
            jet::Bytes key = numberKey(n * 7919 % 100'003);
            key.resize(longestKey(file.format()) - 100, std::byte{0x22});
            file.insert(key, 256 + n);
        }
    }
};
