#pragma once

#include <cstdint>
#include <memory>

/// While it lives no file of this program grows beyond a size, as on a disk that is nearly full.
class SmallFiles {
public:
    [[nodiscard]] static bool canBeHad();
    explicit SmallFiles(std::uint64_t largest);
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;
    ~SmallFiles();

private:
    struct Before;
    std::unique_ptr<Before> before_;
};
