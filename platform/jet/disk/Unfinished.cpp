#include "jet/Unfinished.h"

#include "jet/system/System.h"

#include <array>

namespace jet {

namespace {

/// Readable at any moment, whatever the program was doing.
std::array<Unfinished::Place, 64>& places() noexcept {
    static std::array<Unfinished::Place, 64> all{};
    return all;
}

} // namespace

Unfinished::Unfinished(const std::filesystem::path& path) : path_(path) {
    for (Place& place : places()) {
        const std::filesystem::path::value_type* nobody = nullptr;
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
    for (const Place& place : places())
        if (const auto* const path = place.load())
            sys::removeNow(path);
}

} // namespace jet
