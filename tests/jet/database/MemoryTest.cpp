// Memory that runs out: every request for some, one after the other, is refused once. What was
// being done fails as a whole, and the file is sound. A program of its own, since it has the
// process's operator new in hand.
#include "jet/Check.h"
#include "jet/MemoryDisk.h"
#include "jet/ShopWork.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::size_t requests = 0;
std::size_t refused = 0; ///< the number of the request that fails; 0: none

} // namespace

void* operator new(std::size_t size) {
    if (!MemoryDisk::isBusy() && ++requests == refused)
        throw std::bad_alloc();
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

constexpr int kSteps = 5;

/// True if the work ran to its end without meeting the refusal.
bool workOnce(const DiskImage& shop, const std::vector<std::uint64_t>& contents, std::size_t at) {
    MemoryDisk disk(shop);
    std::size_t done = 0;
    requests = 0;
    refused = at;
    bool ended = false;
    try {
        jet::Database file(kPath, on(disk));
        ShopWork work(5);
        for (int i = 1; i <= kSteps; ++i) {
            work.step(file, i);
            done = static_cast<std::size_t>(i);
        }
        ended = true;
    } catch (const std::bad_alloc&) {
    } catch (const jet::Error&) {
    }
    ended = ended && requests < at;
    refused = 0;
    jet::Database file(kPath, on(disk));
    const std::uint64_t content = contentOf(file);
    const bool sound =
        content == contents[done] || (done + 1 < contents.size() && content == contents[done + 1]);
    if (!sound || file.notice() || file.readOnlyReason() || !jet::check(kPath, disk).clean()) {
        std::printf("request %zu: the file is not as it was before or after\n", at);
        std::exit(1);
    }
    return ended;
}

} // namespace

int main() {
    for (const jet::Version version : {jet::Version::jet3, jet::Version::jet4}) {
        const DiskImage shop = emptyShop(version);
        std::vector<std::uint64_t> contents;
        {
            MemoryDisk disk(shop);
            jet::Database file(kPath, on(disk));
            contents.push_back(contentOf(file));
            ShopWork work(5);
            for (int i = 1; i <= kSteps; ++i) {
                work.step(file, i);
                contents.push_back(contentOf(file));
            }
        }
        std::size_t at = 1;
        while (!workOnce(shop, contents, at))
            ++at;
        std::printf("requests refused: %zu\n", at - 1);
    }
    return 0;
}
