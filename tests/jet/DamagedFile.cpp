#include "jet/DamagedFile.h"

#include "jet/database/DatabasePager.h"
#include "jet/row/LongValues.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

using namespace jet;

DamagedFile::DamagedFile(Version version)
    : path_(folder_ / "paciente.mdb"), format_(formatOf(version)) {
    make(version);
    study();
    reload();
    sound_ = bytes_;
}

void DamagedFile::make(Version version) {
    Database::create(path_, version);
    Database database(path_);
    // clang-format off
    Table& table = database.createTable({
        "Cheques",
        {{"numero", ColumnType::longInteger, 0, true},
         {"cliente", ColumnType::longInteger},
         {"quando", ColumnType::date},
         {"nome", ColumnType::text, 200, false, 18, 0, false},
         {"obs", ColumnType::memo}},
        {{"PrimaryKey", {{"numero"}}, true}, {"cliente", {{"cliente"}}}, {"nome", {{"nome"}}}}
    });
    // clang-format on
    const auto row = [&](std::size_t i, std::string name, Value memo) {
        return table.insert(Row{Value(), static_cast<std::int64_t>(i % 7),
                                Date::of({2004, 5, static_cast<int>(1 + i % 28)}), std::move(name),
                                std::move(memo)});
    };
    for (std::size_t i = 0; i < 60; ++i)
        rows.push_back(row(i, "nome " + std::to_string(i) + std::string(30, 'x'), Value()));
    plain = rows[1];
    moved = rows[0];
    table.update(moved, std::vector<Assignment>{
                            {3, std::string(200, 'y')}
    });
    rows.push_back(inRow = row(60, "na linha", std::string("obs")));
    rows.push_back(single = row(61, "inteiro", std::string(1000, 's')));
    rows.push_back(chain = row(62, "em partes", std::string(9000, 'c')));
    Table& second = database.createTable({"Outra", {{"texto", ColumnType::text, 50}}, {}});
    for (int i = 0; i < 5; ++i)
        second.insert(Row{std::string("linha")});
    TableSpec spec{"Larga", {}, {}};
    for (int i = 0; i < 120; ++i)
        spec.columns.push_back({"coluna numero " + std::to_string(i), ColumnType::longInteger});
    database.createTable(spec);
}

void DamagedFile::study() {
    Database database(path_);
    Table& table = database.table("Cheques");
    cheques = table.definition();
    other = database.table("Outra").definition();
    wide = database.table("Larga").definition();
    const UsageMap owned(DatabasePager::of(database), cheques.ownedMap);
    for (auto page = owned.next(0); page; page = owned.next(number(*page) + 1))
        pages.push_back(*page);
    RowReader reader = table.reader();
    const auto memoOf = [&](RowId id, std::size_t& field) {
        const RowView* row = reader.read(id);
        field = static_cast<std::size_t>(row->stored(4).data() - row->bytes().data());
        return longValueParts(DatabasePager::of(database), row->stored(4), id.page);
    };
    singlePart = memoOf(single, singleField).front();
    chainParts = memoOf(chain, chainField);
    otherPage = UsageMap(DatabasePager::of(database), other.ownedMap).next(0).value();
    if (pages.size() < 2 || chainParts.size() < 3)
        throw std::logic_error("the file is too small for its purpose");
}

void DamagedFile::reload() {
    bytes_.resize(std::filesystem::file_size(path_));
    std::ifstream(path_, std::ios::binary)
        .read(reinterpret_cast<char*>(bytes_.data()), static_cast<std::streamsize>(bytes_.size()));
}

void DamagedFile::save() const {
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes_.data()),
               static_cast<std::streamsize>(bytes_.size()));
}

Report DamagedFile::check() const {
    save();
    return jet::check(path_);
}

std::span<std::byte> DamagedFile::page(PageNo page) {
    return std::span(bytes_).subspan(number(page) * format_.pageSize, format_.pageSize);
}

Slot DamagedFile::slot(RowId id) { return DataPage(format_, page(id.page), id.page).slot(id.slot); }

std::span<std::byte> DamagedFile::bytesOf(RowId id) {
    const Slot found = slot(id);
    return page(id.page).subspan(found.offset, found.bytes.size());
}

PageNo DamagedFile::addPage() {
    const auto page = static_cast<PageNo>(bytes_.size() / format_.pageSize);
    resize(bytes_.size() + format_.pageSize);
    setBit({PageNo{1}, 0}, page, false);
    return page;
}

void DamagedFile::addSlots(PageNo page, std::uint16_t wanted) {
    const DataPageLayout& layout = format_.dataPage;
    const auto count = get<std::uint16_t>(page, layout.slotCount.at);
    const auto last = get<std::uint16_t>(page, slotAt(count - 1U));
    for (std::size_t slot = count; slot < wanted; ++slot)
        put<std::uint16_t>(page, slotAt(slot), static_cast<std::uint16_t>(last | 0xC000U));
    put<std::uint16_t>(page, layout.slotCount.at, wanted);
    put<std::uint16_t>(page, layout.freeBytes.at,
                       static_cast<std::uint16_t>(get<std::uint16_t>(page, layout.freeBytes.at) -
                                                  2 * (wanted - count)));
}

std::size_t DamagedFile::columnBlock(std::size_t column) const {
    return format_.definition.size + cheques.realIndexes.size() * format_.statistics.size +
           column * format_.column.size;
}

std::size_t DamagedFile::realIndexBlock(std::size_t index) {
    const RealIndex& real = cheques.realIndexes[index];
    const auto bytes = page(cheques.page());
    for (std::size_t at = columnNames(); at + format_.realIndex.size < bytes.size(); ++at)
        if (jet::load<std::uint32_t>(&bytes[at + format_.realIndex.root.at]) == number(real.root) &&
            jet::load<std::uint32_t>(&bytes[at + format_.realIndex.map.at]) ==
                static_cast<std::uint32_t>(packed(real.map)))
            return at;
    throw std::logic_error("the index isn't in the definition");
}

std::size_t DamagedFile::logicalIndexBlock(std::size_t index) {
    return realIndexBlock(0) + cheques.realIndexes.size() * format_.realIndex.size +
           index * format_.logicalIndex.size;
}

void DamagedFile::setBit(RowId map, PageNo member, bool on) {
    const std::span<std::byte> bytes = bytesOf(map);
    const std::uint32_t bit = number(member) - jet::load<std::uint32_t>(bytes.data() + 1);
    const std::byte mask{static_cast<std::uint8_t>(1U << (bit % 8))};
    std::byte& at = bytes[5 + bit / 8];
    at = on ? at | mask : at & ~mask;
}

std::string listed(const Report& report) {
    std::string text;
    for (const Finding& finding : report.findings)
        text += std::string(finding.severity == Finding::Severity::error ? "error" : "warning") +
                ", page " + std::to_string(number(finding.page)) + ": " + finding.sentence + "\n";
    return text;
}
