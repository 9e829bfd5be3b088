#pragma once

#include "shell/dbconectar.h"
#include "support/FormTest.h"
#include "support/ShopDatabase.h"

#include <QString>

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// A test of windows over a shop's database: an empty one, opened as the start-up opens it, and the
/// shared state as at the start. At the end a file that the test leaves is checked whole.
class ShopTest : public FormTest {
protected:
    explicit ShopTest(Kept kept = jet::Version::jet4) : kept_(kept), shop_(kept) {}
    void SetUp() override;
    void TearDown() override;

    struct Field {
        const char* name;
        jet::Value value;
    };
    using Row = std::vector<Field>;

    /// Stores rows and has the program see them.
    void given(const char* table, std::initializer_list<Row> rows);
    /// The rows of a table, a line each: the fields' texts with "|" between, in the order of the
    /// statement's columns.
    [[nodiscard]] static std::vector<std::string> rows(const QString& statement);

    static dbconectar& data() { return dbconectar::instance(); }
    [[nodiscard]] const ShopDatabase& shop() const { return shop_; }

    [[nodiscard]] bool onServer() const { return kept_.isServer(); }
    /// What another station does to the data; the program has been told of it on return.
    void byAnother(const std::function<void(ado::Connection& other)>& work);

    /// Empty data in the place of the shop's, its tables as `change` makes them: one that it
    /// leaves without columns isn't made.
    void remake(const std::function<void(jet::TableSpec&)>& change);

private:
    Kept kept_;
    ShopDatabase shop_;
};

/// The same test wherever the data are kept:
///
///     class BankRegister : public Everywhere<ShopTest> { ... };
///     INSTANTIATE_TEST_SUITE_P(, BankRegister, everywhere(), keptName);
template <class Test>
class Everywhere : public Test, public testing::WithParamInterface<Kept> {
protected:
    Everywhere() : Test(GetParam()) {}
};

/// Values as tests write them.
[[nodiscard]] inline jet::Value number(std::int64_t value) { return value; }
[[nodiscard]] inline jet::Value words(const char* value) { return std::string(value); }
[[nodiscard]] inline jet::Value yes(bool value) { return value; }
[[nodiscard]] inline jet::Value day(int year, int month, int dayOfMonth) {
    return jet::Date::of({.year = year, .month = month, .day = dayOfMonth});
}
