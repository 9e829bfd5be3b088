#include "jet/page/Pager.h"

#include "jet/Waiting.h"
#include "jet/system/System.h"
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
    passing_.resize(std::size_t{2} * kMostAhead, PageNo{~std::uint32_t{0}});
}

void Pager::requireUsable() const {
    if (turns_ && turns_->isBroken())
        throw Error(Errc::io, "Uma gravação em \"" + file_.path().string() +
                                  "\" falhou no meio e não pôde ser desfeita. Feche o programa, "
                                  "verifique o disco ou a rede, e abra-o de novo: essa gravação "
                                  "valeu inteira ou nada dela valeu. Confira o que foi feito por "
                                  "último.");
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
    if (const Changed* const mine = changed_.find(page))
        return {page, mine->image};
    return readCommitted(page);
}

PageRef Pager::readCommitted(PageNo page) {
    if (Cached* const known = cache_.find(page)) {
        requireStored(*known);
        known->use = known->use == Use::ahead ? Use::once : Use::again;
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

PageRef Pager::readAhead(PageNo first, std::uint32_t count) {
    assert(count <= kMostAhead);
    std::uint32_t lacking = 0; // from the first on, up to one that is at hand
    while (lacking < count && number(first) + lacking < committedPageCount_) {
        const auto page = static_cast<PageNo>(number(first) + lacking);
        if (cache_.find(page) != nullptr || changed_.find(page) != nullptr)
            break;
        ++lacking;
    }
    if (lacking > 1)
        fetchAhead(first, lacking);
    return read(first);
}

void Pager::fetchAhead(PageNo first, std::uint32_t count) {
    const std::size_t size = format_.pageSize;
    ahead_.resize(kMostAhead * size);
    const auto pages = std::span(ahead_).first(count * size);
    try {
        read(first, pages);
    } catch (const Error& error) {
        if (error.code() ==
            Errc::io) // of one of them: the others are fetched when it is their turn
            return;
        throw;
    }
    for (std::size_t i = 0; i < count; ++i)
        remember(static_cast<PageNo>(number(first) + i), copyOf(pages.subspan(i * size, size)),
                 Use::ahead);
}

void Pager::read(PageNo first, std::span<std::byte> into) {
    requireUsable();
    const std::size_t size = format_.pageSize;
    const std::uint64_t end = number(first) + into.size() / size;
    if (end > pageCount_)
        corrupt(first, "uma referência aponta para fora do arquivo");
    if (number(first) < committedPageCount_) {
        const std::uint64_t stored = std::min<std::uint64_t>(end, committedPageCount_);
        if (turns_)
            turns_->beforeRead();
        file_.read(std::uint64_t{number(first)} * size,
                   into.first(static_cast<std::size_t>(stored - number(first)) * size));
        if (turns_)
            turns_->verifyPage();
    }
    for (std::size_t at = 0; !changed_.empty() && at < into.size(); at += size) {
        const auto page = static_cast<PageNo>(number(first) + at / size);
        if (const Changed* const mine = changed_.find(page))
            std::ranges::copy(*mine->image, into.subspan(at).begin());
    }
}

std::shared_ptr<PageImage> Pager::newImage() const {
    return std::make_shared<PageImage>(format_.pageSize, &sys::pageMemory());
}

/// A page's worth of memory, whatever is in it.
std::shared_ptr<PageImage> Pager::image() {
    if (spares_.empty())
        return newImage();
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

void Pager::remember(PageNo page, std::shared_ptr<PageImage> image, Use use) {
    if (Cached* const known = cache_.find(page)) {
        known->image = std::move(image);
        known->claim = claims_;
        return;
    }
    if (cache_.size() * format_.pageSize < kCacheBytes) {
        cache_.add({page, std::move(image), claims_, use});
        return;
    }
    Cached& last = use == Use::ahead ? passedBy(page) : leastWanted();
    giveBack(std::move(last.image));
    cache_.replace(last, {page, std::move(image), claims_, use});
}

/// Each is spared once for having been asked for, so that what a scan passes goes before what is
/// used again and again.
Pager::Cached& Pager::leastWanted() noexcept {
    for (;; ++hand_) {
        hand_ = hand_ < cache_.size() ? hand_ : 0;
        if (std::exchange(cache_[hand_].use, Use::once) != Use::again)
            return cache_[hand_++];
    }
}

/// The place of a page that the same walk has fetched and left behind. So a walk over a table that
/// is larger than the cache leaves in it what was there, and its pages lie in the machine's own.
Pager::Cached& Pager::passedBy(PageNo page) noexcept {
    const PageNo before = std::exchange(passing_[passingAt_], page);
    passingAt_ = (passingAt_ + 1) % passing_.size();
    Cached* const old = cache_.find(before);
    return old != nullptr && old->use == Use::once ? *old : leastWanted();
}

void Pager::refresh(const std::optional<std::vector<PageNo>>& changed) {
    assert(changed_.empty());
    if (!changed)
        log_.lose();
    else
        for (const PageNo page : *changed)
            log_.note(page);
    const std::uint64_t pages = file_.size() / format_.pageSize;
    cache_.clear();
    pageCount_ = committedPageCount_ = static_cast<std::uint32_t>(pages);
    ++generation_;
    ++refreshes_;
}

std::span<std::byte> Pager::change(PageNo page) {
    assert(inTransaction_);
    requireUsable();
    ++generation_;
    log_.note(page);
    Changed* mine = changed_.find(page);
    if (mine == nullptr) {
        const PageRef committed = readCommitted(page);
        mine = &changed_.add({page, copyOf(committed.bytes()), checksum(committed.bytes()),
                              keepBefore({page, nullptr, 0})});
    } else if (!undo_.empty() && mine->keptFor < undo_.back().statement) {
        auto copy = copyOf(*mine->image);
        mine->keptFor = keepBefore({page, mine->image, mine->keptFor});
        mine->image = std::move(copy);
    } else if (mine->image.use_count() > 1) {
        // Somebody may still look at the image as it is: they go on seeing that one.
        mine->image = copyOf(*mine->image);
    }
    return *mine->image;
}

/// For the innermost statement, whose number it returns; 0 if there is none.
std::uint64_t Pager::keepBefore(Before before) {
    if (undo_.empty())
        return 0;
    undo_.back().before.push_back(std::move(before));
    return undo_.back().statement;
}

PageNo Pager::append() {
    assert(inTransaction_);
    if ((std::uint64_t{pageCount_} + 1) * format_.pageSize > format_.largestFile)
        throw Error(Errc::full, "O banco de dados chegou ao tamanho máximo do seu formato (" +
                                    std::to_string(format_.largestFile >> 30) +
                                    " GB). Apague registros antigos e compacte o arquivo.");
    const auto page = static_cast<PageNo>(pageCount_);
    changed_.add({page, newImage(), 0, keepBefore({page, nullptr, 0})});
    ++pageCount_;
    ++generation_;
    log_.note(page);
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
    for (const Changed& mine : changed_)
        changed.pages.push_back({mine.page, *mine.image});
    std::ranges::sort(changed.pages, {}, &ChangedPages::Page::number);
    // From the file, whatever the cache says: what may have to be put back is what is there.
    changed.before = [this, old = PageImage()](PageNo page) mutable {
        old.resize(format_.pageSize);
        file_.read(std::uint64_t{number(page)} * format_.pageSize, old);
        if (turns_ && checksum(old) != changed_.find(page)->origin)
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
            for (Changed& mine : changed_)
                remember(mine.page, std::move(mine.image));
        } catch (const std::bad_alloc&) {
            // Written it is: what the cache has no room for is read again.
            cache_.clear();
        }
        changed_.clear();
    }
    undo_.clear();
    committedPageCount_ = pageCount_;
    inTransaction_ = false;
}

void Pager::rollback() noexcept {
    if (!inTransaction_)
        return;
    for (const Changed& mine : changed_)
        log_.note(mine.page);
    changed_.clear();
    undo_.clear();
    pageCount_ = committedPageCount_;
    inTransaction_ = false;
    ++generation_;
}

Pager::Statement::Statement(Pager& pager) : pager_(pager), depth_(pager.undo_.size()) {
    assert(pager.inTransaction_);
    pager.undo_.push_back({++pager.statements_, pager.pageCount_, {}});
}

Pager::Statement::~Statement() {
    if (pager_.undo_.size() <= depth_)
        return;
    assert(pager_.undo_.size() == depth_ + 1);
    Undo& undo = pager_.undo_.back();
    for (Before& before : undo.before) {
        pager_.log_.note(before.page);
        if (!before.image) {
            pager_.changed_.remove(before.page);
        } else {
            Changed& mine = *pager_.changed_.find(before.page);
            mine.image = std::move(before.image);
            mine.keptFor = before.keptFor;
        }
    }
    pager_.pageCount_ = undo.pageCount;
    pager_.undo_.pop_back();
    ++pager_.generation_;
}

void Pager::Statement::keep() {
    if (pager_.undo_.size() <= depth_)
        return;
    Undo* const outer = depth_ > 0 ? &pager_.undo_[depth_ - 1] : nullptr;
    for (Before& before : pager_.undo_.back().before) {
        if (outer != nullptr && before.keptFor < outer->statement)
            outer->before.push_back(before); // a copy: memory may end, and then this is undone
        else                                 // nobody wants it, or the outer one has an older one
            pager_.giveBack(std::move(before.image));
    }
    pager_.undo_.pop_back();
}

} // namespace jet
