#pragma once

#include "jet/ShopWork.h"

#include <unordered_map>
#include <unordered_set>

[[nodiscard]] std::uint64_t hashOf(const DiskImage& image);

/// Opens the database that a power cut has left on a disk, with what lies beside it, and says how
/// it is. The same one is opened once only.
class Afterwards {
public:
    struct Outcome {
        std::uint64_t content = 0;
        std::string problem; ///< "" if all is well
        bool recovered = false;
    };

    const Outcome& of(const DiskImage& image, const std::string& path = kPath);

    /// How often it has been asked, of how many different disks, and how many different files of
    /// these have been checked page by page.
    [[nodiscard]] std::size_t points() const noexcept { return points_; }
    [[nodiscard]] std::size_t images() const noexcept { return known_.size(); }
    [[nodiscard]] std::size_t checks() const noexcept { return checked_.size(); }

private:
    Outcome open(const DiskImage& image, const std::string& path);

    std::size_t points_ = 0;
    std::unordered_map<std::uint64_t, Outcome> known_;
    std::unordered_set<std::uint64_t> checked_;
};

/// What may be on the disk if the power goes now: nothing more, everything, and `rounds` times six
/// parts of it, small and large.
[[nodiscard]] std::vector<DiskImage> imagesOf(const PowerCut& cut, std::mt19937_64& random,
                                              int rounds = 1);
