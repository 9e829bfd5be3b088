// Damages a sound database and does with it what the program does: opens it, reads every table in
// every way, changes rows, checks it, saves from it what can be saved. Nothing may come of it but
// rows and Errors, and what is saved is sound.
//
// An input is a byte that chooses the file (bit 0: Jet 4), whether to change rows too (bit 1), to
// salvage it (bit 2) and to compact it (bit 3), then damages of eight bytes each: page (2), offset
// in the page (2), kind (1), value (3).
#include "fuzz/Fuzz.h"
#include "jet/Check.h"
#include "jet/Compact.h"
#include "jet/MemoryDisk.h"
#include "jet/PatientFile.h"
#include "jet/Salvage.h"
#include "jet/ShopWork.h"

#include <algorithm>
#include <iostream>

using namespace jet;

namespace {

constexpr int kMostDamages = 64;
constexpr const char* kTarget = "/loja/novo.mdb";

struct Base {
    const Format* format;
    Bytes bytes;
    std::vector<RowId> rows;
};

Base makeBase(Version version) {
    MemoryDisk disk;
    Database::create(kPath, version, disk);
    Base base{&formatOf(version), {}, {}};
    {
        Database database(kPath, on(disk));
        base.rows = makePatient(database);
    }
    base.bytes = disk.image().at(kPath);
    return base;
}

const Base& baseOf(Version version) {
    static const Base jet3 = makeBase(Version::jet3);
    static const Base jet4 = makeBase(Version::jet4);
    return version == Version::jet3 ? jet3 : jet4;
}

void damage(Bytes& bytes, std::size_t pageSize, fuzz::Input& input) {
    const std::size_t pages = bytes.size() / pageSize;
    const std::size_t page = input.number(2) % pages;
    const std::size_t at = page * pageSize + input.number(2) % (pageSize - 4);
    const std::uint8_t kind = input.byte();
    const std::uint32_t value = input.number(3);
    const auto begin = [&](std::size_t place) {
        return bytes.begin() + static_cast<std::ptrdiff_t>(place);
    };
    switch (kind % 8) {
    case 0:
    case 1:
    case 2:
    case 3:
        for (std::size_t i = 0; i <= kind % 8U; ++i)
            bytes[at + i] = static_cast<std::byte>(value >> (8 * i));
        break;
    case 4: // add to a byte
        bytes[at] = static_cast<std::byte>(std::to_integer<std::uint32_t>(bytes[at]) + value);
        break;
    case 5: { // a page in another's place
        const Bytes other(begin(value % pages * pageSize), begin((value % pages + 1) * pageSize));
        std::ranges::copy(other, begin(page * pageSize));
        break;
    }
    case 6: // an empty stretch
        std::fill_n(begin(at), std::min<std::size_t>(value % pageSize, bytes.size() - at),
                    std::byte{});
        break;
    default: // the end is missing
        bytes.resize(std::max<std::size_t>(at, pageSize + 1));
    }
}

void changeTable(Table& table, const std::vector<RowId>& rows) {
    if (table.columns().empty() || table.readOnlyReason())
        return;
    tolerant([&] { (void)table.insert(Row(table.columns().size())); });
    tolerant([&] {
        Row row(table.columns().size());
        if (row.size() == 8) {
            row[1] = std::string("Maria");
            row[6] = std::string(9000, 'o');
            row[7] = std::int64_t{1};
        }
        (void)table.insert(row);
    });
    for (std::size_t i = 0; i < rows.size(); i += 3)
        tolerant([&] {
            if (table.columns().size() > 1)
                table.update(rows[i], std::vector<Assignment>{
                                          {table.columns().size() - 1, Value()}
                });
            table.erase(rows[i]);
        });
}

/// What is read out of the damaged file into a new one.
template <class Copy>
void copySoundly(MemoryDisk& disk, Copy&& copy) {
    tolerant([&] {
        copy();
        const Report report = check(kTarget, disk);
        if (!report.sound())
            for (const Finding& finding : report.findings)
                std::cerr << finding.sentence << '\n';
        fuzz::require(report.sound());
        fuzz::require(disk.remove(kTarget) == 0);
    });
    fuzz::require(!disk.exists(kTarget));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t choice = input.byte();
    const Base& base = baseOf((choice & 1) != 0 ? Version::jet4 : Version::jet3);
    Bytes bytes = base.bytes;
    for (int i = 0; i < kMostDamages && !input.empty() && bytes.size() == base.bytes.size(); ++i)
        damage(bytes, base.format->pageSize, input);

    MemoryDisk disk({
        {kPath, std::move(bytes)}
    });
    if ((choice & 4) != 0)
        copySoundly(disk, [&] { (void)salvage(kPath, kTarget, {}, disk); });
    if ((choice & 8) != 0)
        copySoundly(disk, [&] { (void)compact(kPath, kTarget, {}, disk); });
    tolerant([&] {
        Database::Options options = on(disk);
        options.readOnly = (choice & 2) == 0;
        Database database(kPath, options);
        readEverything(database, base.rows);
        if (options.readOnly)
            return;
        for (const std::string& name : database.allTableNames())
            tolerant([&] { changeTable(database.table(name), base.rows); });
        readEverything(database, base.rows);
    });
    (void)check(kPath, disk);
    return 0;
}
