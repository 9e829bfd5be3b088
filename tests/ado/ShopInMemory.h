#pragma once

#include "ado/Shop.h"
#include "jet/MemoryDisk.h"

#include <fstream>
#include <iterator>

/// The shop's file on a disk in memory. In one format: what a disk does has nothing to do with it.
class ShopInMemory : public Shop {
protected:
    ShopInMemory() {
        addSomeOfEach();
        connection.Close();
        std::ifstream in(folder / "automacao.mdb", std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        jet::Bytes& copy = image[path()];
        for (const char c : bytes)
            copy.push_back(static_cast<std::byte>(c));
    }
    [[nodiscard]] std::string path() const { return (folder / "automacao.mdb").generic_string(); }
    void open(ado::Connection& station, MemoryDisk& disk) const {
        station.setDisk(disk);
        station.Open(connectionString());
    }
    static std::vector<std::string> answer(ado::Connection& station, const std::string& statement,
                                           const char* field) {
        ado::Recordset rows;
        rows.Open(statement, station);
        return column(rows, field);
    }

    DiskImage image;
};
