#pragma once

#include "jet/Types.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

/// What keeps the shop's data in a test: a file of one of the versions, or a server.
class Kept {
public:
    Kept(jet::Version version) : version_(version) {}
    static Kept onServer() {
        Kept kept(jet::Version::jet4);
        kept.server_ = true;
        return kept;
    }
    [[nodiscard]] bool isServer() const { return server_; }
    operator jet::Version() const { return version_; }
    /// For the names of tests.
    [[nodiscard]] const char* name() const {
        return server_ ? "PostgreSQL" : version_ == jet::Version::jet3 ? "Jet3" : "Jet4";
    }

private:
    friend void PrintTo(const Kept& kept, std::ostream* out) { *out << kept.name(); }

    jet::Version version_;
    bool server_ = false;
};

/// What holds for whoever keeps the data, a server where there is one to test with:
///
///     INSTANTIATE_TEST_SUITE_P(, FindTest, everywhere(), keptName);
[[nodiscard]] testing::internal::ParamGenerator<Kept> everywhere();
/// What is a file's alone.
[[nodiscard]] testing::internal::ParamGenerator<Kept> inFiles();
/// What is a server's alone.
[[nodiscard]] testing::internal::ParamGenerator<Kept> onServers();
inline std::string keptName(const testing::TestParamInfo<Kept>& chosen) {
    return chosen.param.name();
}

// Why a test of a file isn't one of a server: what both can't promise alike.
inline constexpr char kByTheFile[] = "works on the file itself, past the connection";
inline constexpr char kNewsAtOnce[] = "there a list takes in at once what others wait for";
inline constexpr char kJoinsStay[] = "there the rows of a join are as they were when fetched";
inline constexpr char kTheyWait[] = "there whoever makes a table waits for those who are saving";
inline constexpr char kItsOwnLimits[] =
    "there whoever runs the server says how much one may ask for";
inline constexpr char kTyped[] = "there texts aren't compared or reckoned with as numbers";
