// Damage planted byte by byte in maps, pages, rows and indexes, each kind of it, and what check()
// says of it.
#include "jet/Damage.h"
#include "jet/index/IndexTree.h"
#include "jet/page/CommitPairs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace jet;

namespace {

constexpr PageNo kHeader{0};
constexpr PageNo kFreeMapPage{1};
constexpr RowId kFreeMap{kFreeMapPage, 0};
constexpr std::size_t kFreeBytesAt = 2;
constexpr std::size_t kOwnerAt = 4;

PageNo firstPage(DamagedFile& file) { return file.pages.front(); }

void changeSlotWord(DamagedFile& file, RowId id, std::uint16_t andBits, std::uint16_t orBits) {
    const auto word = file.get<std::uint16_t>(id.page, file.slotAt(id.slot));
    file.put<std::uint16_t>(id.page, file.slotAt(id.slot),
                            static_cast<std::uint16_t>((word & andBits) | orBits));
}

/// Makes a map one of pages of bits, all of them missing but the first. A map ends where the one
/// before it begins.
void referTo(DamagedFile& file, RowId map, PageNo page) {
    const std::span<std::byte> row = file.bytesOf(map);
    std::ranges::fill(row, std::byte{});
    row[0] = std::byte{1};
    store<std::uint32_t>(row.data() + 1, number(page));
}

/// The row begins one byte further on, with what it began with.
void cutFirstByte(DamagedFile& file, RowId row) {
    const std::byte first = file.bytesOf(row)[0];
    file.put<std::uint16_t>(
        row.page, file.slotAt(row.slot),
        static_cast<std::uint16_t>(file.get<std::uint16_t>(row.page, file.slotAt(row.slot)) + 1));
    file.bytesOf(row)[0] = first;
}

/// The first and second entry of the leaf that is the root of the index on "cliente": key bytes and
/// row.
std::span<std::byte> clientEntry(DamagedFile& file, std::size_t at) {
    constexpr std::size_t kEntry = 5 + 4; // flag and long; page and slot
    return file.page(file.cheques.realIndexes[1].root)
        .subspan(file.format().indexPage.entries + at * kEntry, kEntry);
}

const std::vector<Damage> kDamages = {
    error("header: magic", "o arquivo não pode ser aberto",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(kHeader, 6, 'x');
              return kHeader;
          }),
    error("header: place of a system table", "os lugares dos mapas",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(kHeader, 0x24, 0xAA);
              return kHeader;
          }),
    error("file: cut inside a page", "a última página está incompleta",
          [](DamagedFile& file) {
              const auto pages = std::filesystem::file_size(file.path()) / file.format().pageSize;
              file.resize((pages - 1) * file.format().pageSize + 100);
              return static_cast<PageNo>(pages - 1);
          }),
    error("file: cut to a few pages", "o arquivo está incompleto (3 páginas)",
          [](DamagedFile& file) {
              file.resize(3 * file.format().pageSize);
              return kHeader;
          }),
    error("header: a program that died writing",
          "uma gravação que ninguém pode desfazer (usuário 7)",
          [](DamagedFile& file) {
              file.putPair(7, CommitPairs::kWriting);
              return kHeader;
          }),
    error("header: a program that met a damaged page",
          "outro programa encontrou uma página danificada neste arquivo (usuário 9)",
          [](DamagedFile& file) {
              file.putPair(9, CommitPairs::kDamaged);
              return kHeader;
          }),
    error("map of free pages: unknown kind", "o mapa de páginas é de tipo desconhecido",
          [](DamagedFile& file) {
              file.bytesOf(kFreeMap)[0] = std::byte{9};
              return kFreeMapPage;
          }),
    error("page in use and free", "a página está em uso e consta como livre",
          [](DamagedFile& file) {
              file.setBit(kFreeMap, firstPage(file), true);
              return firstPage(file);
          }),
    error("page of two tables", "a página já tem outro dono",
          [](DamagedFile& file) {
              file.setBit(file.other.ownedMap, firstPage(file), true);
              return firstPage(file);
          }),
    warning("page of nobody", "a página não é de ninguém",
            [](DamagedFile& file) {
                file.setBit(file.cheques.ownedMap, firstPage(file), false);
                return firstPage(file);
            }),
    error("rows of a page of nobody", "o índice contém uma linha que não existe",
          [](DamagedFile& file) {
              file.setBit(file.cheques.ownedMap, firstPage(file), false);
              return firstPage(file);
          }),
    error("map: page beyond the file's end", "páginas que o arquivo não tem",
          [](DamagedFile& file) {
              const auto pages = std::filesystem::file_size(file.path()) / file.format().pageSize;
              file.setBit(file.cheques.ownedMap, static_cast<PageNo>(pages), true);
              return file.cheques.ownedMap.page;
          }),
    error("map: on the header's page", "o mapa de páginas está fora do arquivo",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.other.page(), file.format().definition.freeMap.at, 0);
              return kHeader;
          }),
    error("map: of pages of bits, one of which is none", "a página não é uma página de mapa",
          [](DamagedFile& file) {
              const PageNo page = file.addPage();
              referTo(file, file.other.freeMap, page);
              return page;
          }),
    error("map: of a page of bits that is another's", "a página já tem outro dono",
          [](DamagedFile& file) {
              referTo(file, file.other.freeMap, kFreeMapPage);
              return kFreeMapPage;
          }),
    error("map of free pages: one that knows of none in use",
          "a página está em uso e consta como livre",
          [](DamagedFile& file) {
              referTo(file, kFreeMap, kHeader);
              return firstPage(file);
          }),
    error("map: of a length that none has", "o mapa de páginas é de tipo desconhecido",
          [](DamagedFile& file) {
              referTo(file, kFreeMap, kHeader);
              cutFirstByte(file, kFreeMap);
              return kFreeMapPage;
          }),
    error("map: too short to be one", "o mapa de páginas está incompleto",
          [](DamagedFile& file) {
              const std::size_t word = file.slotAt(kFreeMap.slot);
              file.put<std::uint16_t>(kFreeMapPage, word,
                                      static_cast<std::uint16_t>(file.format().pageSize - 4));
              return kFreeMapPage;
          }),
    error("map: shared by two tables", "o mapa de páginas serve a dois donos",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.other.page(), file.format().definition.freeMap.at,
                                      static_cast<std::uint32_t>(packed(file.cheques.freeMap)));
              return file.cheques.freeMap.page;
          }),
    error("map of free space: page that isn't the table's",
          "o mapa de espaço livre contém uma página",
          [](DamagedFile& file) {
              file.setBit(file.other.freeMap, firstPage(file), true);
              return firstPage(file);
          }),
    error("row count", "o número de registros está errado (diz 62, são 63)",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.cheques.page(), file.format().definition.rows.at, 62);
              return file.cheques.page();
          }),
    error("numbering", "a numeração está atrasada",
          [](DamagedFile& file) {
              file.put<std::int32_t>(file.cheques.page(), file.format().definition.lastNumber.at,
                                     62);
              return file.cheques.page();
          }),
    error("data page: free bytes", "os bytes livres da página estão errados",
          [](DamagedFile& file) {
              const auto free = file.get<std::uint16_t>(firstPage(file), kFreeBytesAt);
              file.put<std::uint16_t>(firstPage(file), kFreeBytesAt,
                                      static_cast<std::uint16_t>(free + 1));
              return firstPage(file);
          }),
    error("data page: kind", "não é uma página de dados",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(firstPage(file), 0, 4);
              return firstPage(file);
          }),
    error("data page: owner", "a página diz ser de outro dono",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(firstPage(file), kOwnerAt, number(file.other.page()));
              return firstPage(file);
          }),
    error("data page: more slots than fit", "não é uma página de dados",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(firstPage(file), file.format().dataPage.slotCount.at, 60000);
              return firstPage(file);
          }),
    error("data page: more slots than rows can be told apart by",
          "a página tem linhas demais (300)",
          [](DamagedFile& file) {
              const PageNo page = file.otherPage;
              file.addSlots(page, 300);
              return page;
          }),
    error("slot: offset of the one before", "a linha está vazia (linha 1)",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(firstPage(file), file.slotAt(1),
                                      file.get<std::uint16_t>(firstPage(file), file.slotAt(0)) &
                                          0x1FFFU);
              return firstPage(file);
          }),
    error("slot: behind the one before", "uma linha está fora do seu lugar na página (linha 2)",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(firstPage(file), file.slotAt(2),
                                      static_cast<std::uint16_t>(file.format().pageSize));
              return firstPage(file);
          }),
    warning("slot: deleted with its bytes left", "uma linha excluída ainda ocupa espaço",
            [](DamagedFile& file) {
                changeSlotWord(file, file.plain, 0x1FFF, 0xC000);
                return file.plain.page;
            }),
    error("row: more columns than the table", "a linha tem mais colunas do que a tabela (linha 1)",
          [](DamagedFile& file) {
              file.bytesOf(file.plain)[0] = std::byte{200};
              return file.plain.page;
          }),
    warning("row: stray bits in the null mask", "bits de sobra (linha 1)",
            [](DamagedFile& file) {
                file.bytesOf(file.plain).back() |= std::byte{0x80};
                return file.plain.page;
            }),
    error("row: a value outside", "um valor está fora da sua linha (linha 1)",
          [](DamagedFile& file) {
              const auto row = file.bytesOf(file.plain);
              const std::size_t end = row.size() - (file.format().isJet3() ? 5 : 8);
              row[end] = std::byte{0xFE}; // the end of the variable values
              return file.plain.page;
          }),
    error("row: shorter than its fixed columns", "a linha é mais curta do que as suas colunas",
          [](DamagedFile& file) {
              // The row of slot 1 ends where that of slot 0 begins: eight bytes are left of it.
              const auto begin = static_cast<std::uint16_t>(
                  (file.get<std::uint16_t>(firstPage(file), file.slotAt(0)) & 0x1FFFU) - 8);
              file.put<std::uint16_t>(firstPage(file), file.slotAt(1), begin);
              file.put<std::uint16_t>(firstPage(file), begin, 5);
              return firstPage(file);
          }),
    error("row: values over the fixed columns",
          "os valores da linha cobrem os campos fixos (linha 1)",
          [](DamagedFile& file) {
              const auto row = file.bytesOf(file.plain);
              const std::size_t first = row.size() - (file.format().isJet3() ? 3 : 5);
              row[first] = std::byte{1}; // where the name begins
              return file.plain.page;
          }),
    error("row: offsets out of order", "as posições da linha estão fora de ordem (linha 1)",
          [](DamagedFile& file) {
              const auto row = file.bytesOf(file.plain);
              const std::size_t middle = row.size() - (file.format().isJet3() ? 4 : 6);
              row[middle] = std::byte{0xFE}; // the beginning of the memo
              return file.plain.page;
          }),
    warning("row: date beyond the calendar", "uma data está fora do calendário",
            [](DamagedFile& file) {
                const std::size_t base = file.format().row.countSize;
                store<double>(file.bytesOf(file.plain).data() + base + 8, 1e9);
                return file.plain.page;
            }),
    errorInJet4(
        "row: half a character", "um texto não pode ser lido (linha 1, coluna \"nome\")",
        [](DamagedFile& file) {
            const auto row = file.bytesOf(file.plain);
            for (const std::size_t back : {7U, 9U}) // the end of the name, where the memo begins
                store<std::uint16_t>(row.data() + row.size() - back,
                                     static_cast<std::uint16_t>(
                                         load<std::uint16_t>(row.data() + row.size() - back) - 1));
            return file.plain.page;
        }),
    error("moved row: to where it isn't", "uma linha mudou para um lugar onde não está (linha 0)",
          [](DamagedFile& file) {
              store<std::uint32_t>(file.bytesOf(file.moved).data(),
                                   static_cast<std::uint32_t>(packed(file.plain)));
              return file.moved.page;
          }),
    warning("moved row: nobody points to it", "nenhuma linha mudou para um lugar que está ocupado",
            [](DamagedFile& file) {
                const RowId target = unpacked(load<std::uint32_t>(file.bytesOf(file.moved).data()));
                store<std::uint32_t>(file.bytesOf(file.moved).data(), 0x12345678);
                return target.page;
            }),
    error("moved row: two point to it", "duas linhas mudaram para o mesmo lugar",
          [](DamagedFile& file) {
              const RowId target = unpacked(load<std::uint32_t>(file.bytesOf(file.moved).data()));
              store<std::uint32_t>(file.bytesOf(file.plain).data(),
                                   static_cast<std::uint32_t>(packed(target)));
              changeSlotWord(file, file.plain, 0x1FFF, 0x4000);
              return target.page;
          }),
    error("moved row: pointer cut short", "uma linha mudou para um lugar onde não está (linha 1)",
          [](DamagedFile& file) {
              const auto end = file.get<std::uint16_t>(firstPage(file), file.slotAt(0)) & 0x1FFFU;
              file.put<std::uint16_t>(firstPage(file), file.slotAt(1),
                                      static_cast<std::uint16_t>((end - 2) | 0x4000U));
              return firstPage(file);
          }),
    error("moved row: to a place that its page hasn't got",
          "uma linha mudou para um lugar onde não está (linha 0)",
          [](DamagedFile& file) {
              store(file.bytesOf(file.moved).data(), kMovedTo, RowId{file.plain.page, 250});
              return file.moved.page;
          }),
    error("moved row: to itself", "uma linha mudou para um lugar onde não está (linha 0)",
          [](DamagedFile& file) {
              store(file.bytesOf(file.moved).data(), kMovedTo, file.moved);
              return file.moved.page;
          }),
    error("moved row: to a page that says it is another's",
          "uma linha mudou para um lugar onde não está (linha 0)",
          [](DamagedFile& file) {
              const RowId target = load(file.bytesOf(file.moved).data(), kMovedTo);
              file.put<std::uint32_t>(target.page, kOwnerAt, number(file.other.page()));
              return file.moved.page;
          }),
    warning("row: bytes longer than their column",
            "um valor é mais longo do que a sua coluna (linha 0, coluna \"cru\")",
            [](DamagedFile& file) {
                PageNo definition{};
                PageNo rows{};
                file.withDatabase([&](Database& database) {
                    Table& table =
                        database.createTable({"Bytes", {{"cru", ColumnType::binary, 30}}, {}});
                    definition = table.definition().page();
                    rows = table.insert(Row{Bytes(20, std::byte{7})}).page;
                });
                file.put<std::uint16_t>(
                    definition, file.format().statisticsAt(0) + file.format().column.length.at, 10);
                return rows;
            }),
    error("long value: kind", "a definição de um valor longo está errada",
          [](DamagedFile& file) {
              file.bytesOf(file.chain)[file.chainField + 3] = std::byte{0xC0};
              return file.chain.page;
          }),
    error("long value: chain in a circle", "uma parte de valor longo é usada duas vezes",
          [](DamagedFile& file) {
              store<std::uint32_t>(file.bytesOf(file.chainParts[1]).data(),
                                   static_cast<std::uint32_t>(packed(file.chainParts[0])));
              return file.chainParts[0].page;
          }),
    error("long value: chain that ends early", "um valor longo termina antes do seu tamanho",
          [](DamagedFile& file) {
              store<std::uint32_t>(file.bytesOf(file.chainParts[1]).data(), 0);
              return file.chain.page;
          }),
    warning("long value: parts that nobody names any more",
            "nenhuma linha usa uma parte de valor longo",
            [](DamagedFile& file) {
                store<std::uint32_t>(file.bytesOf(file.chainParts[1]).data(), 0);
                return file.chainParts[2].page;
            }),
    error("long value: part of another", "uma parte de valor longo é usada duas vezes",
          [](DamagedFile& file) {
              store<std::uint32_t>(file.bytesOf(file.chain).data() + file.chainField + 4,
                                   static_cast<std::uint32_t>(packed(file.singlePart)));
              return file.singlePart.page;
          }),
    warning("long value: longer than it says", "um valor longo tem bytes de sobra",
            [](DamagedFile& file) {
                std::byte* const field = file.bytesOf(file.single).data() + file.singleField;
                store<std::uint32_t>(field, load<std::uint32_t>(field) - 2);
                return file.single.page;
            }),
    error("long value: page of the table's rows",
          "um valor longo usa uma página que não é da sua coluna",
          [](DamagedFile& file) {
              store<std::uint32_t>(file.bytesOf(file.chain).data() + file.chainField + 4,
                                   static_cast<std::uint32_t>(packed(file.plain)));
              return file.plain.page;
          }),
    error("long value: deleted part", "um valor longo usa um lugar excluído",
          [](DamagedFile& file) {
              changeSlotWord(file, file.singlePart, 0x1FFF, 0xC000);
              return file.singlePart.page;
          }),
    error("long value: free bytes of its page", "os bytes livres da página estão errados",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(file.singlePart.page, kFreeBytesAt, 1);
              return file.singlePart.page;
          }),
    error("index: entries in the wrong order", "as entradas do índice estão fora de ordem",
          [](DamagedFile& file) {
              std::ranges::swap_ranges(clientEntry(file, 0), clientEntry(file, 1));
              return file.cheques.realIndexes[1].root;
          }),
    error("index: missing entry", "falta uma linha no índice",
          [](DamagedFile& file) {
              file.save();
              Pager pager(File(file.path(), File::Mode::readWrite), file.format(), true);
              PageAllocator pages(pager);
              const RealIndex& index = file.cheques.realIndexes[0];
              IndexTree tree(pager, file.cheques.page(), index.root, index.map);
              Database database(file.path(), [] {
                  Database::Options options;
                  options.readOnly = true;
                  return options;
              }());
              const auto key = database.table("Cheques").keyOf(0, file.plain);
              pager.begin();
              tree.erase(pages, *key, file.plain);
              const PageRef page = pager.read(index.root);
              std::ranges::copy(page.bytes(), file.page(index.root).begin());
              pager.rollback();
              return file.plain.page;
          }),
    error("index: key that isn't the row's", "a chave do índice não é a da linha",
          [](DamagedFile& file) {
              store<std::int32_t>(file.bytesOf(file.plain).data() + file.format().row.countSize + 4,
                                  99);
              return file.plain.page;
          }),
    error("index: entry of a row that has none", "a chave do índice não é a da linha",
          [](DamagedFile& file) {
              PageNo page{};
              file.withDatabase([&](Database& database) {
                  page = database.table("Cheques").insert(Row(5)).page;
              });
              file.put<std::uint8_t>(
                  file.cheques.page(), file.realIndexBlock(1) + file.format().realIndex.flags.at,
                  static_cast<std::uint8_t>(IndexFlags::ignoreNulls |
                                            (file.format().isJet3() ? 0U : IndexFlags::jet4)));
              return page;
          }),
    error("index: row that isn't there", "o índice contém uma linha que não existe",
          [](DamagedFile& file) {
              clientEntry(file, 0)[8] = std::byte{0xFE};
              return firstPage(file);
          }),
    error("index: the same row twice", "o índice contém duas vezes a mesma linha",
          [](DamagedFile& file) {
              clientEntry(file, 1)[7] = clientEntry(file, 0)[7];
              clientEntry(file, 1)[8] = clientEntry(file, 0)[8];
              return firstPage(file);
          }),
    error("index: free bytes", "os bytes livres da página de índice estão errados",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(file.cheques.realIndexes[1].root, kFreeBytesAt, 5);
              return file.cheques.realIndexes[1].root;
          }),
    error("index: owner", "a página de índice é de outra tabela",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.cheques.realIndexes[1].root, kOwnerAt, 2);
              return file.cheques.realIndexes[1].root;
          }),
    error("index: root not in its map", "a raiz do índice não está no seu mapa",
          [](DamagedFile& file) {
              const RealIndex& index = file.cheques.realIndexes[1];
              file.setBit(index.map, index.root, false);
              return index.root;
          }),
    error("index: root with a neighbour", "do índice aponta para outra",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.cheques.realIndexes[1].root,
                                      file.format().indexPage.next.at, 3);
              return file.cheques.realIndexes[1].root;
          }),
};

TEST(Check, TellsEachKindOfDamageAndItsPage) { expectTold(kDamages); }

} // namespace
