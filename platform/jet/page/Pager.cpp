#include "jet/page/Pager.h"

#include "jet/Waiting.h"
#include "jet/value/Checksum.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace jet {

namespace {

/// Enough to keep the upper levels of every index and the pages in work; a scan of a large table
/// passes through it without growing it.
constexpr std::size_t kCacheBytes = std::size_t{24} << 20;

/// Images kept for the next pages; no change of one row needs more.
constexpr std::size_t kMostSpares = 32;

} // namespace

Pager::Pager(File file, const Format& format, bool writable)
    : file_(std::move(file)), format_(format), writable_(writable),
      pageCount_(static_cast<std::uint32_t>(file_.size() / format.pageSize)),
      committedPageCount_(pageCount_) {
    spares_.reserve(kMostSpares);
}

void Pager::requireUsable() const {
    if (turns_ && turns_->isBroken())
        throw Error(Errc::io, "Uma gravação em \"" + file_.path().string() +
                                  "\" falhou no meio e não pôde ser desfeita. Feche o programa, "
                                  "verifique o disco ou a rede, e abra-o de novo: os dados voltam "
                                  "ao estado de antes dessa gravação.");
}

Pager::Section::Section(Pager& pager, Kind kind) : turns_(pager.turns_) {
    if (!turns_)
        return;
    if (kind == Kind::repeatable && pager.opensSection())
        turns_->beginOnSnapshot();
    else
        turns_->beginReading();
}

Pager::Section::~Section() {
    if (turns_)
        turns_->endReading();
}

/// Whether what has failed is to be tried again: a foreign program wrote meanwhile.
bool Pager::disturbed(int attempt) const {
    constexpr int kAttempts = 20;
    if (!turns_->disturbed() || attempt >= kAttempts)
        return false;
    if (attempt > 1) // the first time it may have been one of our stations, which is done by now
        pause(std::chrono::milliseconds(100));
    return true;
}

void Pager::breathe() noexcept {
    if (turns_ && mayBreathe_)
        turns_->breathe();
}

PageRef Pager::read(PageNo page) {
    requireUsable();
    if (inTransaction_)
        if (const auto mine = changed_.find(page); mine != changed_.end())
            return {page, mine->second};
    return readCommitted(page);
}

PageRef Pager::readCommitted(PageNo page) {
    if (Cached* const known = cached(page)) {
        requireStored(*known);
        known->wanted = true;
        return {page, known->image};
    }
    if (number(page) >= committedPageCount_)
        corrupt(page, "uma referência aponta para fora do arquivo");
    if (turns_)
        turns_->beforeRead();
    auto image = this->image();
    file_.read(std::uint64_t{number(page)} * format_.pageSize, *image);
    if (turns_)
        turns_->verifyPage();
    remember(page, image);
    return {page, std::move(image)};
}

/// A page's worth of memory, whatever is in it.
std::shared_ptr<PageImage> Pager::image() {
    if (spares_.empty())
        return std::make_shared<PageImage>(format_.pageSize);
    auto spare = std::move(spares_.back());
    spares_.pop_back();
    return spare;
}

std::shared_ptr<PageImage> Pager::copyOf(std::span<const std::byte> page) {
    auto copy = image();
    std::ranges::copy(page, copy->begin());
    return copy;
}

void Pager::giveBack(std::shared_ptr<PageImage> image) noexcept {
    if (image.use_count() == 1 && spares_.size() < kMostSpares) // else somebody looks at it still
        spares_.push_back(std::move(image));
}

/// What is changed is made from pages that the file has at this moment.
void Pager::requireStored(Cached& known) {
    if (known.claim == claims_ || !turns_ || !turns_->isWriting())
        return;
    PageImage stored(format_.pageSize);
    file_.read(std::uint64_t{number(known.page)} * format_.pageSize, stored);
    if (std::memcmp(stored.data(), known.image->data(), stored.size()) != 0)
        turns_->refuseOvertaken();
    known.claim = claims_;
}

Pager::Cached* Pager::cached(PageNo page) noexcept {
    const std::uint32_t place = number(page) < places_.size() ? places_[number(page)] : 0;
    return place != 0 ? &cache_[place - 1] : nullptr;
}

void Pager::remember(PageNo page, std::shared_ptr<PageImage> image) {
    if (Cached* const known = cached(page)) {
        known->image = std::move(image);
        known->claim = claims_;
        return;
    }
    if (number(page) >= places_.size())
        places_.resize(number(page) + std::size_t{1});
    if (cache_.size() * format_.pageSize < kCacheBytes) {
        cache_.push_back({page, std::move(image), claims_, false});
        places_[number(page)] = static_cast<std::uint32_t>(cache_.size());
        return;
    }
    const std::uint32_t place = leastWanted();
    places_[number(cache_[place].page)] = 0;
    places_[number(page)] = place + 1;
    giveBack(std::move(cache_[place].image));
    cache_[place] = {page, std::move(image), claims_, false};
}

/// Each is spared once for having been asked for, so that what a scan passes goes before what is
/// used again and again.
std::uint32_t Pager::leastWanted() noexcept {
    for (;; ++hand_) {
        hand_ = hand_ < cache_.size() ? hand_ : 0;
        if (!std::exchange(cache_[hand_].wanted, false))
            return hand_++;
    }
}

void Pager::refresh() {
    assert(changed_.empty());
    const std::uint64_t pages = file_.size() / format_.pageSize;
    forgetCache();
    pageCount_ = committedPageCount_ = static_cast<std::uint32_t>(pages);
    ++generation_;
    ++refreshes_;
}

void Pager::forgetCache() noexcept {
    cache_.clear();
    places_.clear();
}

std::span<std::byte> Pager::change(PageNo page) {
    assert(inTransaction_);
    requireUsable();
    ++generation_;
    std::shared_ptr<PageImage>& mine = changed_[page];
    std::shared_ptr<PageImage> before = mine;
    try {
        const bool keepBefore = !undo_.empty() && !undo_.back().before.contains(page);
        if (!mine) {
            const PageRef committed = readCommitted(page);
            origins_.insert_or_assign(page, checksum(committed.bytes()));
            mine = copyOf(committed.bytes());
        } else if (keepBefore || mine.use_count() > 2) {
            // Somebody may still look at the image as it is: they go on seeing that one.
            mine = copyOf(*mine);
        }
        if (keepBefore)
            undo_.back().before.emplace(page, before);
    } catch (...) {
        if (!before)
            changed_.erase(page);
        else
            mine = before;
        throw;
    }
    return *mine;
}

PageNo Pager::append() {
    assert(inTransaction_);
    if ((std::uint64_t{pageCount_} + 1) * format_.pageSize > format_.largestFile)
        throw Error(Errc::full, "O banco de dados chegou ao tamanho máximo do seu formato (" +
                                    std::to_string(format_.largestFile >> 30) +
                                    " GB). Apague registros antigos e compacte o arquivo.");
    const auto page = static_cast<PageNo>(pageCount_);
    changed_.emplace(page, std::make_shared<PageImage>(format_.pageSize));
    if (!undo_.empty())
        undo_.back().before.emplace(page, nullptr);
    ++pageCount_;
    ++generation_;
    return page;
}

void Pager::begin() {
    assert(!inTransaction_ && writable_);
    inTransaction_ = true;
}

void Pager::claim() {
    if (!turns_ || turns_->isWriting())
        return;
    turns_->beginWriting();
    try {
        ++claims_;
        if (file_.size() != std::uint64_t{committedPageCount_} * format_.pageSize)
            turns_->refuseOvertaken();
    } catch (...) {
        turns_->endWriting();
        throw;
    }
}

ChangedPages Pager::changedPages() {
    ChangedPages changed{committedPageCount_, pageCount_, {}, {}};
    changed.pages.reserve(changed_.size());
    for (const auto& [page, image] : changed_)
        changed.pages.push_back({page, *image});
    std::ranges::sort(changed.pages, {}, &ChangedPages::Page::number);
    // From the file, whatever the cache says: what may have to be put back is what is there.
    changed.before = [this, old = PageImage()](PageNo page) mutable {
        old.resize(format_.pageSize);
        file_.read(std::uint64_t{number(page)} * format_.pageSize, old);
        if (turns_ && checksum(old) != origins_.at(page))
            turns_->refuseOvertaken();
        return std::span<const std::byte>(old);
    };
    return changed;
}

void Pager::commit() {
    assert(inTransaction_);
    requireUsable();
    if (!changed_.empty()) {
        const ChangedPages changed = changedPages();
        if (turns_) {
            turns_->commit(changed);
        } else {
            for (const ChangedPages::Page& page : changed.pages)
                file_.write(std::uint64_t{number(page.number)} * format_.pageSize, page.content);
            file_.sync();
        }
        try {
            for (auto& [page, image] : changed_)
                remember(page, std::move(image));
        } catch (const std::bad_alloc&) {
            // Written it is: what the cache has no room for is read again.
            forgetCache();
        }
        changed_.clear();
        origins_.clear();
    }
    undo_.clear();
    committedPageCount_ = pageCount_;
    inTransaction_ = false;
}

void Pager::rollback() noexcept {
    if (!inTransaction_)
        return;
    changed_.clear();
    origins_.clear();
    undo_.clear();
    pageCount_ = committedPageCount_;
    inTransaction_ = false;
    ++generation_;
}

Pager::Statement::Statement(Pager& pager) : pager_(pager), depth_(pager.undo_.size()) {
    assert(pager.inTransaction_);
    pager.undo_.push_back({pager.pageCount_, {}});
}

Pager::Statement::~Statement() {
    if (pager_.undo_.size() <= depth_)
        return;
    assert(pager_.undo_.size() == depth_ + 1);
    Undo& undo = pager_.undo_.back();
    for (auto& [page, image] : undo.before) {
        if (image)
            pager_.changed_[page] = std::move(image);
        else
            pager_.changed_.erase(page);
    }
    pager_.pageCount_ = undo.pageCount;
    pager_.undo_.pop_back();
    ++pager_.generation_;
}

void Pager::Statement::keep() {
    if (pager_.undo_.size() <= depth_)
        return;
    auto& mine = pager_.undo_.back().before;
    if (depth_ > 0) {
        auto& outer = pager_.undo_[depth_ - 1].before;
        outer.reserve(outer.size() + mine.size());
        outer.merge(mine); // of a page in both, the outer one's image is the older
    }
    for (auto& [page, image] : mine)
        pager_.giveBack(std::move(image));
    pager_.undo_.pop_back();
}

} // namespace jet
