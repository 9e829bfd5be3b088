// Damages a sound database and does with it what the program does: opens it, reads every table in
// every way, changes rows, checks it. Nothing may come of it but rows and Errors.
//
// An input is a byte that chooses the file (bit 0: Jet 4) and whether to change rows too (bit 1),
// then damages of eight bytes each: page (2), offset in the page (2), kind (1), value (3).
#include "fuzz/Fuzz.h"
#include "jet/Check.h"
#include "jet/Database.h"

#include <fstream>
#include <iterator>
#include <vector>

using namespace jet;

namespace {

/// More than any of the small files can need: who goes on beyond it goes in a circle.
constexpr int kMostSteps = 20'000;
constexpr int kMostDamages = 64;

struct Base {
    const Format* format;
    std::string bytes;
    std::vector<RowId> rows;
};

const fuzz::Folder& folder() {
    static const fuzz::Folder only;
    return only;
}

/// A file with texts, memos of every storage, moved and erased rows, and two indexes.
Base makeBase(Version version) {
    const std::filesystem::path path = folder() / "base.mdb";
    Base base{&formatOf(version), {}, {}};
    Database::create(path, version);
    {
        Database database(path);
        Table& table = database.createTable({
            "Cheques",
            {{"numero", ColumnType::longInteger, 0, true},
              {"nome", ColumnType::text, 60},
              {"data", ColumnType::date},
              {"valor", ColumnType::currency},
              {"bytes", ColumnType::binary, 20},
              {"sim", ColumnType::boolean},
              {"obs", ColumnType::memo}},
            {{"PrimaryKey", {{"numero"}}, true},              {"nome", {{"nome", false}, {"data"}}}}
        });
        for (int i = 0; i < 24; ++i)
            base.rows.push_back(table.insert(
                Row{Value(), "Nome " + std::to_string(i) + "ç", Date::of({2004, 1, 1 + i}),
                    Currency{std::int64_t{i} * 10000},
                    Bytes(static_cast<std::size_t>(i % 20), std::byte{7}), i % 2 == 0,
                    std::string(i == 19 ? 9000 : static_cast<std::size_t>(i * i * 4), 'm')}));
        for (std::size_t i = 0; i < 8; ++i)
            table.update(base.rows[i], std::vector<Assignment>{
                                           {1, std::string(60, 'v')}
            });
        table.erase(base.rows[20]);
    }
    std::ifstream file(path, std::ios::binary);
    base.bytes.assign(std::istreambuf_iterator<char>(file), {});
    std::filesystem::remove(path);
    return base;
}

const Base& baseOf(Version version) {
    static const Base jet3 = makeBase(Version::jet3);
    static const Base jet4 = makeBase(Version::jet4);
    return version == Version::jet3 ? jet3 : jet4;
}

void damage(std::string& bytes, std::size_t pageSize, fuzz::Input& input) {
    const std::size_t pages = bytes.size() / pageSize;
    const std::size_t page = input.number(2) % pages;
    const std::size_t at = page * pageSize + input.number(2) % (pageSize - 4);
    const std::uint8_t kind = input.byte();
    const std::uint32_t value = input.number(3);
    const auto put = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            bytes[at + i] = static_cast<char>(value >> (8 * i));
    };
    switch (kind % 8) {
    case 0:
    case 1:
    case 2:
    case 3:
        put(kind % 8U + 1);
        break;
    case 4: // add to a byte
        bytes[at] = static_cast<char>(bytes[at] + static_cast<char>(value));
        break;
    case 5: // a page in another's place
        bytes.replace(page * pageSize, pageSize, bytes, value % pages * pageSize, pageSize);
        break;
    case 6: // an empty stretch
        bytes.replace(at, std::min<std::size_t>(value % pageSize, bytes.size() - at),
                      std::min<std::size_t>(value % pageSize, bytes.size() - at), '\0');
        break;
    default: // the end is missing
        bytes.resize(std::max<std::size_t>(at, pageSize + 1));
    }
}

template <class Action>
void tolerant(Action&& action) {
    try {
        action();
    } catch (const Error& error) {
        fuzz::require(*error.what() != '\0');
    }
}

void readTable(Table& table, const std::vector<RowId>& rows) {
    int steps = 0;
    tolerant([&] {
        RowCursor row = table.scan();
        for (bool there = row.first(); there && ++steps < kMostSteps; there = row.next())
            (void)row.row().values();
    });
    for (std::size_t i = 0; i < table.indexes().size(); ++i)
        for (const bool forward : {true, false})
            tolerant([&] {
                IndexTree::Cursor entry = table.walk(i);
                for (bool there = forward ? entry.first() : entry.last();
                     there && ++steps < kMostSteps;
                     there = forward ? entry.next() : entry.previous())
                    (void)table.keyOf(i, entry.row());
            });
    for (const RowId id : rows)
        tolerant([&] {
            (void)table.read(id);
            (void)table.stamp(id);
        });
    fuzz::require(steps < kMostSteps);
}

void changeTable(Table& table, const std::vector<RowId>& rows) {
    if (table.columns().empty() || table.readOnlyReason())
        return;
    tolerant([&] { (void)table.insert(Row(table.columns().size())); });
    tolerant([&] {
        Row row(table.columns().size());
        if (row.size() == 7) {
            row[1] = std::string("Maria");
            row[6] = std::string(9000, 'o');
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t choice = input.byte();
    const Base& base = baseOf((choice & 1) != 0 ? Version::jet4 : Version::jet3);
    std::string bytes = base.bytes;
    for (int i = 0; i < kMostDamages && !input.empty() && bytes.size() == base.bytes.size(); ++i)
        damage(bytes, base.format->pageSize, input);

    const std::filesystem::path path = folder() / "damaged.mdb";
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    tolerant([&] {
        Database::Options options;
        options.readOnly = (choice & 2) == 0;
        Database database(path, options);
        for (const std::string& name : database.allTableNames())
            tolerant([&] {
                Table& table = database.table(name);
                readTable(table, base.rows);
                if (!options.readOnly) {
                    changeTable(table, base.rows);
                    readTable(table, base.rows);
                }
            });
    });
    (void)check(path);
    return 0;
}
