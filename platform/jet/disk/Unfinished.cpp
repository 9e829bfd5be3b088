#include "jet/Unfinished.h"

#include <array>
#include <unistd.h>

namespace jet {

namespace {

/// Readable at any moment, whatever the program was doing.
std::array<std::atomic<const char*>, 64>& places() noexcept {
    static std::array<std::atomic<const char*>, 64> all{};
    return all;
}

} // namespace

Unfinished::Unfinished(const std::filesystem::path& path) : path_(path.string()) {
    for (std::atomic<const char*>& place : places()) {
        const char* nobody = nullptr;
        if (place.compare_exchange_strong(nobody, path_.c_str())) {
            place_ = &place;
            return;
        }
    }
}

Unfinished::~Unfinished() {
    if (place_ != nullptr)
        place_->store(nullptr);
}

void Unfinished::removeAll() noexcept {
    for (const std::atomic<const char*>& place : places())
        if (const char* const path = place.load())
            static_cast<void>(::unlink(path));
}

} // namespace jet
