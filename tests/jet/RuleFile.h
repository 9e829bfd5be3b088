#pragma once

#include "jet/Check.h"
#include "jet/Database.h"
#include "support/FileRules.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>

/// A new file of either format, open, for tests of the rules that it keeps. Whatever a test does
/// must leave it sound.
class RuleFile : public testing::TestWithParam<jet::Version> {
protected:
    RuleFile() {
        jet::Database::create(path(), GetParam());
        database_.emplace(path());
    }
    void TearDown() override {
        database_.reset();
        EXPECT_TRUE(jet::check(path()).clean());
    }

    [[nodiscard]] std::filesystem::path path() const { return folder_ / "dados.mdb"; }
    [[nodiscard]] jet::Table& table(const std::string& name) { return database_->table(name); }
    jet::RowId add(const std::string& name, const jet::Row& values) {
        return table(name).insert(values);
    }
    void keep(const std::string& name, const std::vector<FileRule>& rules) {
        setRules(*database_, name, rules);
    }
    static jet::Value whole(std::int64_t number) { return number; }

    TemporaryFolder folder_;
    std::optional<jet::Database> database_;
};
