#pragma once

#include "ado/Shop.h"
#include "support/Versions.h"

#include <filesystem>
#include <fstream>
#include <string>

/// Two stations with the same file open, and how windows show and save on them.
class StationsTest : public Shop {
protected:
    using Connection = ado::Connection;
    using Recordset = ado::Recordset;
    using Shown = ado::Shown;

    StationsTest() {
        addSomeOfEach();
        connection.database().flush();
        other.Open(connectionString());
    }
    void TearDown() override {
        other.Close();
        Shop::TearDown();
    }

    /// As a window saves what it has shown: a transaction, the record looked up anew, its fields,
    /// the end.
    static void save(Connection& station, Recordset& banks, const char* code, const char* name,
                     const Shown& shown) {
        ado::Transaction transaction(station);
        goTo(banks, code);
        banks.Edit(shown);
        banks["nome"] = name;
        banks.Update();
        transaction.commit();
    }
    /// The same of what is stored at that moment.
    static void save(Connection& station, Recordset& banks, const char* code, const char* name) {
        save(station, banks, code, name, show(banks, code));
    }
    static void goTo(Recordset& banks, const char* code) {
        banks.MoveFirst();
        banks.Find(std::string("codigo=") + code);
    }
    /// As a window shows a record.
    static Shown show(Recordset& banks, const char* code) {
        goTo(banks, code);
        return banks.shown();
    }
    static std::string shown(Recordset& banks, const char* code) {
        banks.MoveFirst();
        banks.Find(std::string("codigo=") + code);
        return banks["nome"].text();
    }

    /// On both stations.
    void openBanks() {
        mine.Open("bancos", connection);
        theirs.Open("bancos", other);
    }

    /// As the lock file knows this one.
    [[nodiscard]] std::string machine() const {
        std::ifstream lock(
            std::filesystem::path(connection.database().path()).replace_extension(".ldb"),
            std::ios::binary);
        std::string name(32, '\0');
        lock.read(name.data(), static_cast<std::streamsize>(name.size()));
        return name.c_str();
    }

    Connection other;
    Recordset mine;
    Recordset theirs;
};
