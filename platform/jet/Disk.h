#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// What the engine asks of the operating system about files, call by call: the one place where it
/// touches files, so that a test can put another disk here, which remembers every write or fails at
/// a chosen call.
///
/// As with the system's own calls a result below zero is an error number with its sign turned, and
/// read() and write() may do a part only. File makes errors and whole reads of that.
class Disk {
public:
    /// The last three are for what lies beside a database, where anybody may have put anything
    /// under the name: a link isn't followed, but an error.
    enum class Mode : std::uint8_t {
        read,
        readWrite,
        createNew,
        readBeside,
        writeBeside,
        makeBeside
    };
    enum class Lock : std::uint8_t { none, shared, exclusive };

    [[nodiscard]] static constexpr bool writes(Mode mode) noexcept {
        return mode != Mode::read && mode != Mode::readBeside;
    }
    [[nodiscard]] static constexpr bool makes(Mode mode) noexcept {
        return mode == Mode::createNew || mode == Mode::makeBeside;
    }
    [[nodiscard]] static constexpr bool isBeside(Mode mode) noexcept {
        return mode >= Mode::readBeside;
    }

    /// Whose a file is and who may do what with it, in the system's numbers.
    struct Rights {
        std::uint32_t owner = 0;
        std::uint32_t group = 0;
        std::uint32_t mode = 0666;
        friend bool operator==(const Rights&, const Rights&) = default;
        /// The mode for a file that should have `mode`: of another group than it is meant for only
        /// what everybody has.
        [[nodiscard]] static constexpr std::uint32_t allowed(std::uint32_t mode,
                                                             bool sameGroup) noexcept {
            constexpr std::uint32_t kOfGroup = 070;
            return sameGroup ? mode : mode & (~kOfGroup | (mode << 3));
        }
    };
    struct Attributes {
        Rights rights;
        std::uint64_t names = 1; ///< by how many the file can be found
    };
    /// For setOwner(): the owner stays.
    static constexpr std::uint32_t kSameOwner = ~std::uint32_t{0};

    /// An open file. Its locks are its own, not those of the process, and go when it is closed. A
    /// range that is given back, or taken otherwise, is one that was taken so.
    class Handle {
    public:
        Handle() = default;
        Handle(const Handle&) = delete;
        Handle& operator=(const Handle&) = delete;
        virtual ~Handle() = default;

        [[nodiscard]] virtual std::int64_t size() = 0;
        [[nodiscard]] virtual std::int64_t read(std::uint64_t offset,
                                                std::span<std::byte> into) = 0;
        [[nodiscard]] virtual std::int64_t write(std::uint64_t offset,
                                                 std::span<const std::byte> from) = 0;
        [[nodiscard]] virtual int truncate(std::uint64_t size) = 0;
        /// Content and size are on the disk when it returns.
        [[nodiscard]] virtual int sync() = 0;
        /// Until endWriting() nobody else can write in the file, where the system sees to such
        /// things: an error if somebody has it open for that.
        [[nodiscard]] virtual int claimWriting() { return 0; }
        virtual void endWriting() noexcept {}
        /// Takes or gives back `count` bytes from `offset`, at once: 1 if done, 0 if another has
        /// some of them.
        [[nodiscard]] virtual int lock(Lock kind, std::uint64_t offset, std::uint64_t count) = 0;
        /// The first byte of the range on which a lock of that kind would meet another's, or
        /// `offset` + `count`. Where a system can tell that only by taking it for a moment, who
        /// asks for a shared one is in the way of nobody who asks the same.
        [[nodiscard]] virtual std::int64_t firstHeld(Lock meeting, std::uint64_t offset,
                                                     std::uint64_t count) = 0;
        /// When it was last changed, on a clock of the disk's own: good for telling whether it has
        /// been changed since.
        [[nodiscard]] virtual std::int64_t changedAt() = 0;
        /// Whether `path` still names this very file; a link to it doesn't.
        [[nodiscard]] virtual bool isAt(const std::filesystem::path& path) = 0;
        [[nodiscard]] virtual int attributes(Attributes& into) = 0;
        [[nodiscard]] virtual int setOwner(std::uint32_t owner, std::uint32_t group) = 0;
        [[nodiscard]] virtual int setMode(std::uint32_t mode) = 0;
        /// Whether what is read may be what this machine remembers, not what another has written,
        /// until a byte of the file is locked. Costs no call of the system.
        [[nodiscard]] virtual bool remembers() const noexcept = 0;
    };

    /// A name in UTF-8 as a path. Made of a plain string one has the letters that the system takes
    /// the bytes for.
    [[nodiscard]] static std::filesystem::path pathOf(std::string_view name) {
        return std::u8string(name.begin(), name.end());
    }

    /// What a folder holds, as it was when it was listed.
    struct Entry {
        std::string name; ///< within the folder, in UTF-8
        bool isFile{};    ///< a regular file; no link to one
        std::uint64_t size{};
        std::int64_t changedAt{}; ///< as Handle::changedAt()
        [[nodiscard]] std::filesystem::path path() const { return pathOf(name); }
        friend bool operator==(const Entry&, const Entry&) = default;
    };

    Disk() = default;
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;
    virtual ~Disk() = default;

    /// Never waits for anybody. Null, and the error number in `error`, if it can't be opened:
    /// EISDIR for anything that isn't a regular file.
    [[nodiscard]] virtual std::unique_ptr<Handle> open(const std::filesystem::path& path, Mode mode,
                                                       int& error) = 0;
    /// The name by which everybody finds the file of that name: without links, from the root on.
    [[nodiscard]] virtual std::filesystem::path resolved(const std::filesystem::path& path) {
        return path;
    }
    /// Whether there is anything of that name.
    [[nodiscard]] virtual bool exists(const std::filesystem::path& path) = 0;
    [[nodiscard]] virtual int rename(const std::filesystem::path& from,
                                     const std::filesystem::path& to) = 0;
    /// A second name for the same file; not every disk knows such a thing.
    [[nodiscard]] virtual int link(const std::filesystem::path& file,
                                   const std::filesystem::path& name) = 0;
    [[nodiscard]] virtual int remove(const std::filesystem::path& path) = 0;
    /// Everything in a folder, in no order. An entry that goes meanwhile may be left out.
    [[nodiscard]] virtual int list(const std::filesystem::path& folder,
                                   std::vector<Entry>& entries) = 0;
    /// Makes a folder, in one that is there: 1 if done, 0 if there is one of that name.
    [[nodiscard]] virtual int makeFolder(const std::filesystem::path& folder) = 0;
    /// Who may use `from` may use `to`, nobody else, as far as we may see to that; an error if they
    /// aren't all the same then.
    [[nodiscard]] virtual int copyRights(const std::filesystem::path& from,
                                         const std::filesystem::path& to) = 0;
    /// The names in the folder that holds `path` are on the disk when it returns.
    [[nodiscard]] virtual int syncFolderOf(const std::filesystem::path& path) = 0;

    /// That of the operating system.
    [[nodiscard]] static Disk& system();
};

} // namespace jet
