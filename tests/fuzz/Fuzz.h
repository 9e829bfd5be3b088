#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

/// What the fuzzers share. A fuzzer is a program of its own: it calls one entry of ours with
/// millions of inputs, mutated from its corpus towards new paths through the code, under the
/// sanitizers. A finding is what they report, a failed require(), or an input that doesn't end.
namespace fuzz {

/// Bytes taken from the front of an input; zeros when there are no more.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    [[nodiscard]] bool empty() const noexcept { return at_ >= size_; }
    [[nodiscard]] std::uint8_t byte() noexcept { return empty() ? 0 : data_[at_++]; }
    [[nodiscard]] std::uint32_t number(int bytes) noexcept {
        std::uint32_t value = 0;
        for (int i = 0; i < bytes; ++i)
            value |= static_cast<std::uint32_t>(byte()) << (8 * i);
        return value;
    }
    [[nodiscard]] std::string_view rest() const noexcept {
        return {reinterpret_cast<const char*>(data_) + at_, size_ - at_};
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

/// A folder in memory where there is one, gone at the end of the program.
class Folder {
public:
    Folder() {
        const std::filesystem::path memory = "/dev/shm";
        std::string name =
            ((std::filesystem::is_directory(memory) ? memory
                                                    : std::filesystem::temp_directory_path()) /
             "valtrino-fuzz-XXXXXX")
                .string();
        if (::mkdtemp(name.data()) == nullptr)
            std::abort();
        path_ = name;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const {
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

/// The fuzzer's word for "this must never happen".
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace fuzz
