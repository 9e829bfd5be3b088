#include "jet/MemoryDisk.h"

#include <algorithm>
#include <cerrno>

using jet::Bytes;
using jet::Disk;

namespace {

constexpr std::size_t kSector = 512;

} // namespace

struct MemoryDisk::Content {
    struct Held {
        const Disk::Handle* who;
        Disk::Lock kind;
        std::uint64_t from;
        std::uint64_t end;
    };
    std::size_t number = 0;
    Bytes bytes;
    std::int64_t changes = 0;
    std::vector<Held> locks;
    MemoryDisk::Kind kind = MemoryDisk::Kind::file;
    std::string target = {}; ///< of a link
    Disk::Rights rights = {};
};

class MemoryHandle final : public Disk::Handle {
public:
    MemoryHandle(MemoryDisk& disk, std::shared_ptr<MemoryDisk::Content> content, bool writes)
        : disk_(disk), content_(std::move(content)), writes_(writes) {}
    MemoryHandle(const MemoryHandle&) = delete;
    MemoryHandle& operator=(const MemoryHandle&) = delete;
    ~MemoryHandle() override {
        std::erase_if(content_->locks, [&](const auto& held) { return held.who == this; });
    }

    std::int64_t size() override {
        const int failure = disk_.next();
        return failure ? -failure : static_cast<std::int64_t>(content_->bytes.size());
    }
    std::int64_t read(std::uint64_t offset, std::span<std::byte> into) override {
        const MemoryDisk::Busy busy;
        if (const int failure = disk_.next())
            return -failure;
        if (disk_.onRead)
            disk_.onRead(offset);
        if (const auto& lost = disk_.lost; lost && lost->second >= offset &&
                                           lost->second < offset + into.size() && isAt(lost->first))
            return -EIO;
        const Bytes& bytes = content_->bytes;
        if (offset >= bytes.size())
            return 0;
        const std::size_t count = std::min(into.size(), bytes.size() - offset);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), count, into.begin());
        return static_cast<std::int64_t>(count);
    }
    std::int64_t write(std::uint64_t offset, std::span<const std::byte> from) override {
        const MemoryDisk::Busy busy;
        int failure = disk_.next();
        if (!writes_)
            return -EBADF;
        if (!disk_.failWrites.empty() && isAt(disk_.failWrites))
            failure = ENOSPC;
        if (failure)
            from = from.first(from.size() / 2 / kSector * kSector);
        Bytes written(from.begin(), from.end());
        if (disk_.onWrite)
            disk_.onWrite(written);
        Bytes& bytes = content_->bytes;
        bytes.resize(std::max<std::size_t>(bytes.size(), offset + from.size()));
        ++content_->changes;
        std::ranges::copy(written, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
        disk_.record_.push_back({MemoryDisk::Operation::Kind::write,
                                 content_->number,
                                 offset,
                                 std::move(written),
                                 {},
                                 {}});
        return failure ? -failure : static_cast<std::int64_t>(from.size());
    }
    int truncate(std::uint64_t size) override {
        const MemoryDisk::Busy busy;
        if (const int failure = disk_.next())
            return -failure;
        content_->bytes.resize(size);
        ++content_->changes;
        disk_.record_.push_back(
            {MemoryDisk::Operation::Kind::truncate, content_->number, size, {}, {}, {}});
        return 0;
    }
    int sync() override {
        const MemoryDisk::Busy busy;
        const int failure = disk_.next();
        disk_.record_.push_back(
            {failure ? MemoryDisk::Operation::Kind::loss : MemoryDisk::Operation::Kind::sync,
             content_->number,
             0,
             {},
             {},
             {}});
        return failure ? -failure : 0;
    }
    int lock(Disk::Lock kind, std::uint64_t offset, std::uint64_t count) override {
        const MemoryDisk::Busy busy;
        if (disk_.onLock)
            disk_.onLock(offset);
        if (const int failure = disk_.next(); failure && kind != Disk::Lock::none)
            return -failure;
        const std::uint64_t end = offset + count;
        auto& locks = content_->locks;
        for (const auto& held : locks)
            if (held.who != this && held.from < end && offset < held.end &&
                (kind == Disk::Lock::exclusive ||
                 (kind == Disk::Lock::shared && held.kind == Disk::Lock::exclusive)))
                return 0;
        std::vector<MemoryDisk::Content::Held> rest;
        std::erase_if(locks, [&](const auto& held) {
            if (held.who != this || held.from >= end || offset >= held.end)
                return false;
            if (held.from < offset)
                rest.push_back({this, held.kind, held.from, offset});
            if (held.end > end)
                rest.push_back({this, held.kind, end, held.end});
            return true;
        });
        locks.insert(locks.end(), rest.begin(), rest.end());
        if (kind != Disk::Lock::none)
            locks.push_back({this, kind, offset, end});
        return 1;
    }
    std::int64_t firstHeld(Disk::Lock meeting, std::uint64_t offset, std::uint64_t count) override {
        if (disk_.onAsk)
            disk_.onAsk(offset);
        if (const int failure = disk_.next())
            return -failure;
        std::uint64_t first = offset + count;
        for (const auto& held : content_->locks)
            if (held.who != this && held.from < offset + count && offset < held.end &&
                (meeting == Disk::Lock::exclusive || held.kind == Disk::Lock::exclusive))
                first = std::min(first, std::max(held.from, offset));
        return static_cast<std::int64_t>(first);
    }
    std::int64_t changedAt() override {
        const int failure = disk_.next();
        return failure ? -failure : content_->changes;
    }
    bool isAt(const std::filesystem::path& path) override {
        const MemoryDisk::Busy busy;
        const auto there = disk_.names_.find(path.generic_string());
        return there != disk_.names_.end() && there->second == content_->number;
    }
    int attributes(Disk::Attributes& into) override {
        const MemoryDisk::Busy busy;
        if (const int failure = disk_.next())
            return -failure;
        into.rights = content_->rights;
        into.names = static_cast<std::uint64_t>(std::ranges::count_if(
            disk_.names_, [&](const auto& name) { return name.second == content_->number; }));
        return 0;
    }
    int setOwner(std::uint32_t owner, std::uint32_t group) override {
        const bool own = disk_.account == content_->rights.owner;
        const bool allowed =
            disk_.account == 0 || (own && owner == Disk::kSameOwner && group == disk_.group);
        if (const int failure = disk_.next())
            return -failure;
        if (!allowed)
            return -EPERM;
        if (owner != Disk::kSameOwner)
            content_->rights.owner = owner;
        content_->rights.group = group;
        return 0;
    }
    int setMode(std::uint32_t mode) override {
        if (const int failure = disk_.next())
            return -failure;
        if (disk_.account != 0 && disk_.account != content_->rights.owner)
            return -EPERM;
        content_->rights.mode = mode;
        return 0;
    }
    [[nodiscard]] bool remembers() const noexcept override { return disk_.remembers; }

private:
    MemoryDisk& disk_;
    std::shared_ptr<MemoryDisk::Content> content_;
    bool writes_;
};

MemoryDisk::MemoryDisk(const DiskImage& image) {
    for (const auto& [name, bytes] : image) {
        names_[name] = files_.size();
        files_.push_back(
            std::make_shared<Content>(Content{files_.size(), bytes, 0, {}, Kind::file, {}, {}}));
    }
}

MemoryDisk::~MemoryDisk() = default;

std::unique_ptr<Disk::Handle> MemoryDisk::open(const std::filesystem::path& path, Mode mode,
                                               int& error) {
    const Busy busy;
    error = next();
    const auto known = names_.find((isBeside(mode) ? path : resolved(path)).generic_string());
    const Content* there = known == names_.end() ? nullptr : files_[known->second].get();
    if (!error && writes(mode) && failing && failing(path.generic_string()))
        error = EACCES;
    if (!error && makes(mode) && there)
        error = EEXIST;
    if (!error && !makes(mode) && !there)
        error = ENOENT;
    if (!error && there && there->kind != Kind::file)
        error = there->kind == Kind::link ? ELOOP : EISDIR;
    if (!error && there && !allows(*there, mode))
        error = EACCES;
    if (error)
        return nullptr;
    if (there)
        return std::make_unique<MemoryHandle>(*this, files_[known->second], writes(mode));
    put(path.generic_string(), Kind::file);
    files_.back()->rights = {account, group, 0600};
    record_.push_back({Operation::Kind::name, files_.size() - 1, 0, {}, path.generic_string(), {}});
    return std::make_unique<MemoryHandle>(*this, files_.back(), true);
}

void MemoryDisk::put(const std::string& name, Kind kind, const std::string& target) {
    names_[name] = files_.size();
    files_.push_back(
        std::make_shared<Content>(Content{files_.size(), {}, 0, {}, kind, target, {}}));
}

Disk::Rights& MemoryDisk::rightsOf(const std::string& name) {
    return files_[names_.at(name)]->rights;
}

bool MemoryDisk::allows(const Content& file, Mode mode) const {
    const unsigned shift = file.rights.owner == account ? 6 : file.rights.group == group ? 3 : 0;
    const unsigned wanted = writes(mode) ? 6 : 4;
    return account == 0 || (file.rights.mode >> shift & wanted) == wanted;
}

bool MemoryDisk::mayTouch(const std::string& name) const {
    return !eachItsOwn || account == 0 || files_[names_.at(name)]->rights.owner == account;
}

std::filesystem::path MemoryDisk::resolved(const std::filesystem::path& path) {
    const Busy busy;
    const auto known = names_.find(path.generic_string());
    return known == names_.end() || files_[known->second]->kind != Kind::link
               ? path
               : std::filesystem::path(files_[known->second]->target);
}

bool MemoryDisk::exists(const std::filesystem::path& path) {
    const Busy busy;
    return names_.contains(path.generic_string());
}

int MemoryDisk::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    const Busy busy;
    if (const int failure = next())
        return -failure;
    const auto known = names_.find(from.generic_string());
    if (known == names_.end())
        return -ENOENT;
    if (!mayTouch(from.generic_string()))
        return -EPERM;
    if (foldersApart && from.parent_path() != to.parent_path())
        return -EXDEV;
    record_.push_back({Operation::Kind::rename,
                       known->second,
                       0,
                       {},
                       from.generic_string(),
                       to.generic_string()});
    names_[to.generic_string()] = known->second;
    names_.erase(from.generic_string());
    return 0;
}

int MemoryDisk::link(const std::filesystem::path& file, const std::filesystem::path& name) {
    const Busy busy;
    if (const int failure = next())
        return -failure;
    const auto known = names_.find(file.generic_string());
    if (known == names_.end())
        return -ENOENT;
    if (!names_.emplace(name.generic_string(), known->second).second)
        return -EEXIST;
    record_.push_back({Operation::Kind::name, known->second, 0, {}, name.generic_string(), {}});
    return 0;
}

int MemoryDisk::remove(const std::filesystem::path& path) {
    const Busy busy;
    if (const int failure = next())
        return -failure;
    if (!names_.contains(path.generic_string()))
        return -ENOENT;
    if (!mayTouch(path.generic_string()))
        return -EPERM;
    names_.erase(path.generic_string());
    record_.push_back({Operation::Kind::remove, 0, 0, {}, path.generic_string(), {}});
    return 0;
}

int MemoryDisk::list(const std::filesystem::path& folder, std::vector<Entry>& entries) {
    const Busy busy;
    if (const int failure = next())
        return -failure;
    for (const auto& [name, file] : names_)
        if (const std::filesystem::path path(name); path.parent_path() == folder)
            entries.push_back({path.filename().string(), files_[file]->kind == Kind::file,
                               files_[file]->bytes.size(), files_[file]->changes});
    return 0;
}

/// Every folder is there.
int MemoryDisk::makeFolder(const std::filesystem::path&) {
    const Busy busy;
    const int failure = next();
    return failure ? -failure : 0;
}

int MemoryDisk::copyRights(const std::filesystem::path& from, const std::filesystem::path& to) {
    const Busy busy;
    if (const int failure = next())
        return -failure;
    return exists(from) && exists(to) ? 0 : -ENOENT;
}

int MemoryDisk::syncFolderOf(const std::filesystem::path& path) {
    const Busy busy;
    if (const int failure = next())
        return -failure;
    record_.push_back(
        {Operation::Kind::syncNames, 0, 0, {}, path.parent_path().generic_string(), {}});
    return 0;
}

DiskImage MemoryDisk::image() const {
    DiskImage image;
    for (const auto& [name, file] : names_)
        image[name] = files_[file]->bytes;
    return image;
}

void MemoryDisk::failFrom(std::uint64_t call, bool forever, int error) {
    failAt_ = call;
    failForever_ = forever;
    failure_ = error;
}

int MemoryDisk::next() {
    ++calls_;
    if (failAt_ == 0 || calls_ < failAt_ || (calls_ > failAt_ && !failForever_))
        return 0;
    return failure_;
}

// ---- PowerCut ---------------------------------------------------------------------------------

namespace {

void apply(const MemoryDisk::Operation& operation, Bytes& bytes) {
    if (operation.kind == MemoryDisk::Operation::Kind::truncate) {
        bytes.resize(operation.offset);
        return;
    }
    const std::size_t end = operation.offset + operation.bytes.size();
    bytes.resize(std::max(bytes.size(), end));
    std::ranges::copy(operation.bytes,
                      bytes.begin() + static_cast<std::ptrdiff_t>(operation.offset));
}

void applyName(const MemoryDisk::Operation& change, std::map<std::string, std::size_t>& names,
               const std::function<bool()>& keep) {
    using Kind = MemoryDisk::Operation::Kind;
    if (!keep())
        return;
    if (change.kind == Kind::name)
        names[change.name] = change.file;
    if (change.kind == Kind::rename)
        names[change.newName] = change.file;
    if (change.kind == Kind::remove || (change.kind == Kind::rename && keep()))
        names.erase(change.name);
}

bool isIn(const std::string& folder, const std::string& name) {
    return std::filesystem::path(name).parent_path() == folder;
}

} // namespace

PowerCut::PowerCut(const DiskImage& before) {
    for (const auto& [name, bytes] : before) {
        names_[name] = files_.size();
        files_.push_back({bytes, {}});
    }
}

void PowerCut::advance(const MemoryDisk::Operation& operation) {
    using Kind = MemoryDisk::Operation::Kind;
    switch (operation.kind) {
    case Kind::write:
    case Kind::truncate:
        files_[operation.file].pending.push_back(&operation);
        break;
    case Kind::sync: {
        FileState& file = files_[operation.file];
        for (const auto* done : file.pending)
            apply(*done, file.durable);
        file.pending.clear();
        break;
    }
    case Kind::loss: {
        // Not the size: that is no page of the file's.
        FileState& file = files_[operation.file];
        Bytes seen = file.durable;
        for (const auto* done : file.pending)
            apply(*done, seen);
        file.durable.resize(seen.size());
        file.pending.clear();
        break;
    }
    case Kind::name:
        files_.resize(std::max(files_.size(), operation.file + 1));
        [[fallthrough]];
    case Kind::rename:
    case Kind::remove:
        pendingNames_.push_back(&operation);
        break;
    case Kind::syncNames:
        std::erase_if(pendingNames_, [&](const auto* change) {
            const bool synced =
                isIn(operation.name, change->kind == Kind::rename ? change->newName : change->name);
            if (synced)
                applyName(*change, names_, [] { return true; });
            return synced;
        });
        break;
    }
}

Bytes PowerCut::contentOf(const FileState& file, const Chooser& keep) const {
    Bytes result = file.durable;
    Bytes current = file.durable;
    std::size_t size = current.size();
    for (const auto* operation : file.pending) {
        const std::size_t before = current.size();
        apply(*operation, current);
        if (current.size() != before && keep())
            size = current.size();
        const bool cut = operation->kind == MemoryDisk::Operation::Kind::truncate;
        const std::size_t from = cut ? std::min(before, current.size()) : operation->offset;
        const std::size_t end =
            cut ? std::max(before, current.size()) : from + operation->bytes.size();
        result.resize(std::max({result.size(), current.size(), end}));
        for (std::size_t at = from / kSector * kSector; at < end; at += kSector) {
            if (!keep())
                continue;
            const std::size_t stop = std::min(at + kSector, result.size());
            for (std::size_t i = at; i < stop; ++i)
                result[i] = i < current.size() ? current[i] : std::byte{};
        }
    }
    result.resize(size);
    return result;
}

DiskImage PowerCut::build(const Chooser& keep) const {
    auto names = names_;
    for (const auto* change : pendingNames_)
        applyName(*change, names, keep);
    DiskImage image;
    for (const auto& [name, file] : names)
        image[name] = contentOf(files_[file], keep);
    return image;
}

DiskImage PowerCut::nothingMore() const {
    return build([] { return false; });
}

DiskImage PowerCut::everything() const {
    return build([] { return true; });
}

DiskImage PowerCut::some(std::mt19937_64& random, unsigned kept) const {
    return build([&] { return random() % 100 < kept; });
}
