#pragma once

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "ado/dialect/Spelling.h"
#include "jet/Database.h"
#include "jet/Error.h"
#include "support/Kept.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace ado {
class ServerWire;
}

/// The shop's four tables in a new file of each version, or on a server, with a connection to it.
class Shop : public testing::TestWithParam<Kept> {
protected:
    Shop();
    /// Closes, and holds a file against everything that the format promises.
    void TearDown() override;

    /// One value per name.
    using Fields = std::initializer_list<std::pair<const char*, jet::Value>>;
    /// Past the connection, which knows of it on return. Gives the row of a file.
    jet::RowId add(const char* table, Fields fields);
    [[nodiscard]] bool onServer() const { return GetParam().isServer(); }
    /// How many rows a table has.
    std::int64_t rowsIn(const char* table);
    /// One more table.
    void makeTable(const jet::TableSpec& spec) { connection.store().createTable(spec); }

    /// Clients 1 to 4 (Ana, JOÃO, joão pequeno, Zé; 4 is a supplier), banks 1 to 3 (Banco do Norte
    /// 104, Banco do Sul 1, Agrário 33), cheques 1 to 6, bounced cheques 1 and 2.
    void addSomeOfEach();

    [[nodiscard]] std::string connectionString() const;
    /// Closes, has what the file holds changed, and opens again.
    void changeBytes(const std::function<void(std::string& bytes)>& change);
    jet::Table& table(const char* name) { return connection.database().table(name); }

    /// One field of all rows, in order, as text. The recordset ends at EOF.
    static std::vector<std::string> column(ado::Recordset& rows, const char* field);
    /// The same of a statement.
    std::vector<std::string> column(const std::string& statement, const char* field);

    TemporaryFolder folder;
    ado::Connection connection;

private:
    void addOnServer(const char* table, Fields fields);
    std::string address_;                   ///< of the server's database; "" for a file
    std::shared_ptr<ado::ServerWire> past_; ///< to it, past the connection
};

/// The tables as the shop has them.
[[nodiscard]] const std::vector<jet::TableSpec>& shopTables();

/// Names stay as a statement has them.
[[nodiscard]] const ado::Spelling& asWritten();

/// The value of a date.
[[nodiscard]] jet::Date day(int year, int month, int dayOfMonth);

/// The code of the Error that `body` throws; fails and gives none that is ever thrown here
/// otherwise.
template <class Body>
jet::Errc errorOf(Body&& body) {
    try {
        body();
    } catch (const jet::Error& error) {
        EXPECT_STRNE(error.what(), "");
        return error.code();
    }
    ADD_FAILURE() << "no error was thrown";
    return jet::Errc::unsupported;
}

namespace jet {
void PrintTo(Errc code, std::ostream* out);
void PrintTo(const Currency& amount, std::ostream* out);
} // namespace jet
