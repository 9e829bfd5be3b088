#pragma once

#include "ado/ConnectionString.h"
#include "ado/Shop.h"
#include "ado/server/ServerWire.h"

#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

/// A shop on a server where somebody else is at work as well, by whatever program.
class ShopWithOthers : public Shop {
protected:
    [[nodiscard]] std::string address() const {
        return ado::serverAddress(connectionString()).value();
    }
    /// One statement of theirs, which changes a row at least; this station has been told of it on
    /// return.
    void elsewhere(const std::string& sql) {
        const auto before = connection.store().generation();
        static_cast<void>(past.run(sql));
        while (connection.store().generation() == before)
            std::this_thread::yield();
    }
    /// Statements that change the tables themselves, of which they tell.
    void alter(const std::string& statements) {
        elsewhere("do $$ begin " + statements +
                  "; perform pg_notify('valtrino', '*'), pg_notify('valtrino', 'cheques:0'); "
                  "end $$");
    }
    /// How often the server is waited for meanwhile.
    std::uint64_t waits(const std::function<void()>& work) {
        const auto before = connection.store().tally().waits;
        work();
        return connection.store().tally().waits - before;
    }
    /// One field of all rows from the one stood on.
    static std::vector<std::string> walk(ado::Recordset& rows, const char* field = "nome") {
        std::vector<std::string> all;
        for (; !rows.EOF(); rows.MoveNext())
            all.push_back(rows[field].text());
        return all;
    }
    ado::ServerWire past{address()};
};
