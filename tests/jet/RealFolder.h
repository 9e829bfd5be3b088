#pragma once

#include "jet/Disk.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

/// A folder of the system's own disk, for what that does with names and files.
class RealFolder : public testing::Test {
protected:
    std::filesystem::path made(const char* name, const char* text = "") {
        std::ofstream(folder / name) << text;
        return folder / name;
    }
    /// Of a file that can't be opened.
    int openError(const std::filesystem::path& path, jet::Disk::Mode mode = jet::Disk::Mode::read) {
        int error = 0;
        EXPECT_EQ(disk.open(path, mode, error), nullptr);
        return error;
    }

    TemporaryFolder folder;
    jet::Disk& disk = jet::Disk::system();
};
