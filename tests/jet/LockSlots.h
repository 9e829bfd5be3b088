#pragma once

#include "jet/ShopWork.h"
#include "jet/share/LockFile.h"

#include <gtest/gtest.h>

#include <string>

/// What stands in the lock file of an empty shop on a disk in memory.
class LockSlots : public testing::Test {
protected:
    static constexpr const char* kLock = "/loja/automacao.ldb";
    MemoryDisk disk{emptyShop(jet::Version::jet4)};

    [[nodiscard]] std::string slot(std::size_t user) const {
        const jet::Bytes bytes = disk.image().at(kLock);
        std::string text;
        for (std::size_t i = 0; i < jet::LockFile::kSlot; ++i)
            text += std::to_integer<char>(bytes.at((user - 1) * jet::LockFile::kSlot + i));
        return text;
    }
    /// A name as it stands in a slot: a zero behind it, then blanks.
    [[nodiscard]] static std::string field(const std::string& name) {
        return name + '\0' + std::string(jet::LockFile::kName - name.size() - 1, ' ');
    }
};
