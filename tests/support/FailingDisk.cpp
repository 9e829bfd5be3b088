#include "support/FailingDisk.h"

#include "support/Program.h"

namespace {

class FailingHandle final : public jet::Disk::Handle {
public:
    FailingHandle(FailingDisk& disk, std::string name, std::unique_ptr<Handle> handle)
        : disk_(disk), name_(std::move(name)), handle_(std::move(handle)) {}

    std::int64_t size() override { return handle_->size(); }
    std::int64_t read(std::uint64_t offset, std::span<std::byte> into) override {
        return disk_.refuses(FailingDisk::Refuses::reading, name_) ? -disk_.error
                                                                   : handle_->read(offset, into);
    }
    std::int64_t write(std::uint64_t offset, std::span<const std::byte> from) override {
        return disk_.refuses(FailingDisk::Refuses::writing, name_) ? -disk_.error
                                                                   : handle_->write(offset, from);
    }
    int truncate(std::uint64_t size) override { return handle_->truncate(size); }
    int sync() override { return handle_->sync(); }
    int lock(jet::Disk::Lock kind, std::uint64_t offset, std::uint64_t count) override {
        return handle_->lock(kind, offset, count);
    }
    int claimWriting() override { return handle_->claimWriting(); }
    void endWriting() noexcept override { handle_->endWriting(); }
    std::int64_t firstHeld(jet::Disk::Lock meeting, std::uint64_t offset,
                           std::uint64_t count) override {
        return handle_->firstHeld(meeting, offset, count);
    }
    std::int64_t changedAt() override { return handle_->changedAt(); }
    bool isAt(const std::filesystem::path& path) override { return handle_->isAt(path); }

    int attributes(jet::Disk::Attributes& into) override { return handle_->attributes(into); }
    int setOwner(std::uint32_t owner, std::uint32_t group) override {
        return handle_->setOwner(owner, group);
    }
    int setMode(std::uint32_t mode) override { return handle_->setMode(mode); }
    [[nodiscard]] bool remembers() const noexcept override { return handle_->remembers(); }

private:
    FailingDisk& disk_;
    std::string name_;
    std::unique_ptr<Handle> handle_;
};

} // namespace

std::unique_ptr<jet::Disk::Handle> FailingDisk::open(const std::filesystem::path& path, Mode mode,
                                                     int& failure) {
    auto handle = system().open(path, mode, failure);
    if (!handle)
        return nullptr;
    return std::make_unique<FailingHandle>(*this, path.filename().string(), std::move(handle));
}

bool FailingDisk::refuses(Refuses call, const std::string& name) {
    const bool counts = (what == Refuses::reading) == (call == Refuses::reading);
    if (!counts || refused.empty() || !name.ends_with(refused))
        return false;
    if (spared-- > 0)
        return false;
    if (what == Refuses::life)
        endAtOnce();
    return true;
}
