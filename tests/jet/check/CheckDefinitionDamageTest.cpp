// Damage in definitions and in the system's tables, each kind of it, and what check() says of it.
#include "jet/Damage.h"
#include "support/FileRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace jet;
using namespace std::string_literals;

namespace {

constexpr PageNo kObjects{2};
constexpr std::size_t kNextPageAt = 4;
constexpr std::size_t kLengthAt = 8;
constexpr std::size_t kKindAt = 19; // in a logical index, from its number on
constexpr std::size_t kRealIndexAt = 4;

// Columns of MSysObjects.
constexpr std::size_t kId = 0;
constexpr std::size_t kParent = 1;
constexpr std::int64_t kTables = 0x0F000001;

RowId objectOf(Database& database, std::int64_t id) {
    RowCursor row = database.table("MSysObjects").scan();
    for (bool there = row.first(); there; there = row.next())
        if (row.row().integer(kId) == id)
            return row.id();
    throw std::logic_error("no such object");
}

RowId addObject(DamagedFile& file, std::int64_t id, std::int64_t parent, const std::string& name,
                std::int64_t type) {
    RowId found;
    file.withDatabase(
        [&](Database& database) { found = enterObject(database, id, name, type, parent); });
    return found;
}

/// Changes a fixed column of an object byte by byte, so that no index refuses it.
PageNo patchObject(DamagedFile& file, RowId object, std::size_t column, std::uint32_t value) {
    store<std::uint32_t>(file.bytesOf(object).data() + file.format().row.countSize + 4 * column,
                         value);
    return object.page;
}

PageNo eraseObject(DamagedFile& file, std::int64_t id) {
    file.withDatabase(
        [&](Database& database) { database.table("MSysObjects").erase(objectOf(database, id)); });
    return kObjects;
}

/// Adds what a relationship of two pairs of columns is, but for one of them.
PageNo addHalfRelationship(DamagedFile& file, bool first) {
    PageNo page{};
    file.withDatabase([&](Database& database) {
        addRelationship(database,
                        {
                            "metade", "Cheques", {"nome",  "obs"  },
                              "Outra", {"texto", "texto"}
        });
        Table& table = database.table("MSysRelationships");
        RowCursor row = table.scan();
        row.first();
        if (!first)
            row.next();
        table.erase(row.id());
        row = table.scan();
        row.first();
        page = row.id().page;
    });
    return page;
}

PageNo setChequesProperties(DamagedFile& file, const Bytes& bytes) {
    PageNo page{};
    file.withDatabase([&](Database& database) {
        setProperties(database, "Cheques", bytes);
        page = objectOf(database, number(file.cheques.page())).page;
    });
    return page;
}

/// Makes a plain index of "Cheques" say that it stands for a relationship.
PageNo makeRelationship(DamagedFile& file, std::uint8_t side, PageNo other) {
    std::byte* const block = file.page(file.cheques.page()).data() + file.logicalIndexBlock(0) +
                             file.format().logicalIndex.number.at;
    store<std::uint8_t>(block + kKindAt, 2);
    store<std::uint8_t>(block + 8, side);
    store<std::uint32_t>(block + 9, 0);
    store<std::uint32_t>(block + 13, number(other));
    return file.cheques.page();
}

void put(DamagedFile& file, std::size_t at, const std::string& text) {
    const TextCodec codec(file.format().version);
    std::ranges::copy(codec.encode(text, false, false),
                      file.page(file.cheques.page()).begin() + static_cast<std::ptrdiff_t>(at));
}

/// Where the text of the n-th name from `at` on begins.
std::size_t nameText(DamagedFile& file, std::size_t at, std::size_t n) {
    const std::size_t head = file.format().nameLength.size;
    const auto length = [&] {
        return head == 1 ? std::size_t{file.get<std::uint8_t>(file.cheques.page(), at)}
                         : std::size_t{file.get<std::uint16_t>(file.cheques.page(), at)};
    };
    for (; n > 0; --n)
        at += head + length();
    return at + head;
}

const std::vector<Damage> kDefinitionDamages = {
    error("definition: circle of pages", "a página já tem outro dono",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.wide.pages[1], kNextPageAt, number(file.wide.pages[0]));
              return file.wide.pages[0];
          }),
    error("definition: kind of page", "a página não é de definição",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(file.other.page(), 0, 1);
              return file.other.page();
          }),
    error("definition: too long", "a definição da tabela não pode ser lida",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.other.page(), kLengthAt, 1'000'000);
              return file.other.page();
          }),
    error("definition: length", "o tamanho da definição está errado",
          [](DamagedFile& file) {
              const auto length = file.get<std::uint32_t>(file.other.page(), kLengthAt);
              file.put<std::uint32_t>(file.other.page(), kLengthAt, length + 1);
              return file.other.page();
          }),
    errorInJet4("definition: constant", "uma constante da definição",
                [](DamagedFile& file) {
                    file.put<std::uint32_t>(file.other.page(), 12, 7);
                    return file.other.page();
                }),
    error("definition: kind of table", "do usuário ou do sistema",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(file.other.page(), file.format().definition.kind.at, 7);
              return file.other.page();
          }),
    error("definition: counts", "a definição da tabela não pode ser lida",
          [](DamagedFile& file) {
              file.put<std::uint32_t>(file.other.page(), file.format().definition.realIndexes.at,
                                      0x7FFFFFFF);
              return file.other.page();
          }),
    warning("definition: more pages than it needs", "a definição tem páginas de sobra",
            [](DamagedFile& file) {
                const PageNo page = file.addPage();
                file.put<std::uint16_t>(page, 0, 0x0102);
                file.put<std::uint16_t>(page, 2, file.format().isJet3() ? 0x4356 : 0);
                file.put<std::uint32_t>(file.other.page(), kNextPageAt, number(page));
                return file.other.page();
            }),
    errorInJet4("definition: constant of a column", "uma constante da definição",
                [](DamagedFile& file) {
                    file.put<std::uint32_t>(file.cheques.page(), file.columnBlock(1) + 1, 7);
                    return file.cheques.page();
                }),
    errorInJet4("definition: constant of an index", "uma constante da definição",
                [](DamagedFile& file) {
                    file.put<std::uint32_t>(file.cheques.page(), file.realIndexBlock(1), 7);
                    return file.cheques.page();
                }),
    error("definition: two columns of one name", "duas colunas têm o mesmo nome (\"numero\")",
          [](DamagedFile& file) {
              put(file, nameText(file, file.columnNames(), 2), "numero"); // was "quando"
              return file.cheques.page();
          }),
    error("definition: two columns of one number", "o número da coluna",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(file.cheques.page(),
                                      file.columnBlock(1) + file.format().column.number.at, 0);
              return file.cheques.page();
          }),
    error("definition: two columns in one place", "cobre outra",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(file.cheques.page(),
                                      file.columnBlock(2) + file.format().column.fixed.at, 2);
              return file.cheques.page();
          }),
    error("definition: column beyond the longest row", "uma coluna não cabe na linha",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(file.cheques.page(),
                                      file.columnBlock(2) + file.format().column.fixed.at,
                                      static_cast<std::uint16_t>(file.format().pageSize - 8));
              return file.cheques.page();
          }),
    error("definition: column of another size than its type's",
          "um valor não tem o tamanho do seu tipo (linha 1, coluna \"quando\")",
          [](DamagedFile& file) {
              file.put<std::uint16_t>(file.cheques.page(),
                                      file.columnBlock(2) + file.format().column.length.at, 4);
              return file.plain.page;
          }),
    warning("definition: column shorter than its texts",
            "um valor é mais longo do que a sua coluna (linha 1, coluna \"nome\")",
            [](DamagedFile& file) {
                file.put<std::uint16_t>(file.cheques.page(),
                                        file.columnBlock(3) + file.format().column.length.at, 20);
                return file.plain.page;
            }),
    warning("definition: order of texts that nobody knows",
            "a ordem de texto não é conhecida e as chaves não foram conferidas",
            [](DamagedFile& file) {
                file.put<std::uint16_t>(file.cheques.page(),
                                        file.columnBlock(3) + file.format().column.language.at,
                                        0x7777);
                return file.cheques.realIndexes[2].root;
            }),
    error("definition: two indexes of one number", "dois índices têm o mesmo número",
          [](DamagedFile& file) {
              const std::size_t at = file.format().logicalIndex.number.at;
              file.put<std::uint32_t>(
                  file.cheques.page(), file.logicalIndexBlock(1) + at,
                  file.get<std::uint32_t>(file.cheques.page(), file.logicalIndexBlock(0) + at));
              return file.cheques.page();
          }),
    warning("definition: tree without a name", "um índice não tem nome",
            [](DamagedFile& file) {
                const std::size_t at = file.format().logicalIndex.number.at + kRealIndexAt;
                file.put<std::uint32_t>(
                    file.cheques.page(), file.logicalIndexBlock(1) + at,
                    file.get<std::uint32_t>(file.cheques.page(), file.logicalIndexBlock(0) + at));
                return file.cheques.page();
            }),
    error("definition: two indexes of one name", "dois índices têm o mesmo nome (\"nome\")",
          [](DamagedFile& file) {
              const auto& indexes = file.cheques.logicalIndexes;
              for (std::size_t i = 0; i < indexes.size(); ++i)
                  if (indexes[i].name == "cliente")
                      put(file, nameText(file, file.logicalIndexBlock(indexes.size()), i),
                          "nome   "); // blanks at its end make no difference
              return file.cheques.page();
          }),
    error("definition: index of no known kind", "um índice é de tipo desconhecido",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(
                  file.cheques.page(),
                  file.logicalIndexBlock(0) + file.format().logicalIndex.number.at + kKindAt, 9);
              return file.cheques.page();
          }),
    error("definition: maps of long values of a column that has none",
          "a lista dos mapas de valores longos não é a das colunas de texto longo",
          [](DamagedFile& file) {
              const std::size_t end =
                  file.get<std::uint32_t>(file.cheques.page(), kLengthAt) - 2 - 10;
              file.put<std::uint16_t>(file.cheques.page(), end, 1);
              return file.cheques.page();
          }),
    error("definition: index of no columns", "um índice não tem colunas",
          [](DamagedFile& file) {
              for (std::size_t i = 0; i < kMaxIndexColumns; ++i)
                  file.put<std::uint16_t>(file.cheques.page(),
                                          file.realIndexBlock(0) + file.format().realIndex.key(i),
                                          kNoColumn);
              return file.cheques.page();
          }),
    error(
        "definition: maps of long values of one column twice",
        "a lista dos mapas de valores longos repete uma coluna (0)",
        [](DamagedFile& file) {
            PageNo page{};
            file.withDatabase([&](Database& database) {
                page =
                    database
                        .createTable({
                            "Textos", {{"um", ColumnType::memo},       {"outro", ColumnType::memo}},
                             {                              }
                })
                        .definition()
                        .page();
            });
            const std::size_t end = file.get<std::uint32_t>(page, kLengthAt) - 2 - 10;
            file.put<std::uint16_t>(page, end, 0);
            return page;
        }),
    error("relationship: index without a partner in the other table",
          "o índice de um relacionamento não tem par na outra tabela",
          [](DamagedFile& file) { return makeRelationship(file, 1, file.other.page()); }),
    error("relationship: index of a table that isn't there",
          "o índice de um relacionamento não tem par na outra tabela",
          [](DamagedFile& file) { return makeRelationship(file, 2, PageNo{1}); }),
    error("relationship: index on no side", "o índice de um relacionamento não tem par",
          [](DamagedFile& file) { return makeRelationship(file, 0, file.cheques.page()); }),
    error("catalog: without its table", "sem a tabela MSysObjects nada mais se verifica",
          [](DamagedFile& file) {
              file.put<std::uint8_t>(kObjects, 0, 1);
              return kObjects;
          }),
    warning("catalog: table without a row", "uma definição de tabela não está no catálogo",
            [](DamagedFile& file) {
                eraseObject(file, number(file.other.page()));
                return file.other.page();
            }),
    error("catalog: definition outside the file",
          "a definição de uma tabela está fora do arquivo (\"Fantasma\"",
          [](DamagedFile& file) {
              const auto pages = std::filesystem::file_size(file.path()) / file.format().pageSize;
              return addObject(file, static_cast<std::int64_t>(pages), kTables, "Fantasma", 1).page;
          }),
    error("catalog: object in a folder that isn't there", "o objeto está numa pasta que não existe",
          [](DamagedFile& file) { return addObject(file, -2147483000, 77, "Perdido", 5).page; }),
    error("catalog: relationship of a column that isn't there",
          "um relacionamento usa um campo que não existe (\"Cheques.nenhuma\")",
          [](DamagedFile& file) {
              PageNo page{};
              file.withDatabase([&](Database& database) {
                  addRelationship(database, {"rel", "Outra", {"texto"}, "Cheques", {"nenhuma"}});
                  RowCursor row = database.table("MSysRelationships").scan();
                  row.first();
                  page = row.id().page;
              });
              return page;
          }),
    error("catalog: two objects of one number", "dois objetos têm o mesmo número",
          [](DamagedFile& file) {
              const RowId object = addObject(file, -2147483000, kTables, "Consulta", 5);
              return patchObject(file, object, kId, number(file.cheques.page()));
          }),
    error("catalog: two tables with one definition", "duas tabelas têm a mesma definição",
          [](DamagedFile& file) {
              return addObject(file, 0x01000000 + std::int64_t{number(file.cheques.page())},
                               kTables, "Sombra", 1)
                  .page;
          }),
    error("catalog: two objects of one name", "dois objetos têm o mesmo nome (\"OUTRA\"",
          [](DamagedFile& file) {
              const RowId object = addObject(file, -2147483000, kTables + 1, "OUTRA", 5);
              return patchObject(file, object, kParent, kTables);
          }),
    error("catalog: container missing", "falta um objeto (\"Databases\")",
          [](DamagedFile& file) { return eraseObject(file, 0x0F000002); }),
    error("catalog: system table missing", "falta uma tabela de sistema (página 4)",
          [](DamagedFile& file) { return eraseObject(file, 4); }),
    warning("catalog: right to an object that isn't there",
            "uma permissão é de um objeto que não existe",
            [](DamagedFile& file) {
                PageNo page{};
                file.withDatabase([&](Database& database) {
                    page = database.table("MSysACEs")
                               .insert(std::vector<Assignment>{
                                   {0, std::int64_t{4321}}
                    })
                               .page;
                });
                return page;
            }),
    error("catalog: properties cut short",
          "tabela \"Cheques\": as propriedades e regras não podem ser lidas",
          [](DamagedFile& file) {
              Bytes bytes =
                  propertyBytes(file.format().version, {
                                                           {.column = "nome", .rule = ">''"}
              });
              bytes.pop_back();
              return setChequesProperties(file, bytes);
          }),
    error("catalog: properties that are none",
          "tabela \"Cheques\": as propriedades e regras não podem ser lidas",
          [](DamagedFile& file) { return setChequesProperties(file, Bytes(30, std::byte{'x'})); }),
    error("relationship: first pair of columns missing",
          "um relacionamento não está completo (\"metade\")",
          [](DamagedFile& file) { return addHalfRelationship(file, true); }),
    error("relationship: last pair of columns missing",
          "um relacionamento não está completo (\"metade\")",
          [](DamagedFile& file) { return addHalfRelationship(file, false); }),
    warning("relationship: object without columns",
            "um relacionamento não tem campos (\"clientescheques\")",
            [](DamagedFile& file) {
                return addObject(file, -2147483000, 0x0F000003, "clientescheques", 8).page;
            }),
};

TEST(Check, TellsEachKindOfDamageInDefinitionsAndCatalog) { expectTold(kDefinitionDamages); }

} // namespace
