#include "jet/Check.h"

#include "jet/DamagedFile.h"
#include "support/Samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>

using namespace jet;
using testing::HasSubstr;

namespace {

constexpr Version kVersions[] = {Version::jet3, Version::jet4};

std::string nameOf(Version version) { return version == Version::jet3 ? "Jet 3" : "Jet 4"; }

std::string listed(const Report& report) {
    std::string text;
    for (const Finding& finding : report.findings)
        text += std::string(finding.severity == Finding::Severity::error ? "error" : "warning") +
                ", page " + std::to_string(number(finding.page)) + ": " + finding.sentence + "\n";
    return text;
}

bool tells(const Report& report, Finding::Severity severity, PageNo page, const char* words) {
    return std::ranges::any_of(report.findings, [&](const Finding& finding) {
        return finding.severity == severity && finding.page == page &&
               finding.sentence.find(words) != std::string::npos;
    });
}

TEST(Check, FindsNothingInASoundFile) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        const Report report = file.check();
        EXPECT_TRUE(report.clean()) << listed(report);
        EXPECT_TRUE(report.sound());
        EXPECT_EQ(report.tables, 7U); // three and the system's four
        EXPECT_EQ(report.rows, 63U + 5U + 11U + 22U);
        EXPECT_EQ(report.indexEntries, 3 * 63U + 2 * 11U + 22U);
        EXPECT_EQ(report.pages, std::filesystem::file_size(file.path()) / file.format().pageSize);
    }
}

TEST(Check, FindsNothingInANewFile) {
    const TemporaryFolder folder;
    for (const Version version : kVersions) {
        const auto path = folder / (version == Version::jet3 ? "3.mdb" : "4.mdb");
        Database::create(path, version);
        const Report report = check(path);
        EXPECT_TRUE(report.clean()) << listed(report);
        EXPECT_EQ(report.freePages, 0U);
    }
}

TEST(Check, FindsNoErrorInRealFiles) {
    const auto samples = samplesFolder();
    if (!samples)
        GTEST_SKIP() << "no sample databases here";
    std::vector<std::filesystem::path> files{*samples / "automacao-jet4.mdb"};
    for (const auto& entry : std::filesystem::directory_iterator(*samples / "samples"))
        if (entry.path().extension() == ".mdb")
            files.push_back(entry.path());
    for (const auto& path : files) {
        const Report report = check(path);
        EXPECT_TRUE(report.sound()) << path << "\n" << listed(report);
        // The one whose deleted rows another writer left where they were.
        EXPECT_EQ(report.clean(), path.filename() != "testIndexPropertiesV2000.mdb")
            << path << "\n"
            << listed(report);
        EXPECT_GT(report.rows, 0U);
    }
}

TEST(Check, AMissingFileIsAnErrorOfItsOwn) {
    const TemporaryFolder folder;
    EXPECT_THROW((void)check(folder / "nada.mdb"), Error);
}

/// One kind of damage: `plant` does it and says which page the finding must name.
struct Damage {
    const char* name;
    std::function<PageNo(DamagedFile&)> plant;
    const char* words; ///< that the finding must have
    Finding::Severity severity = Finding::Severity::error;
    std::optional<Version> only = std::nullopt;
};

constexpr auto kWarning = Finding::Severity::warning;
constexpr PageNo kHeader{0};
constexpr PageNo kFreeMapPage{1};
constexpr RowId kFreeMap{kFreeMapPage, 0};
constexpr std::size_t kFreeBytesAt = 2;
constexpr std::size_t kOwnerAt = 4;
constexpr std::size_t kNextPageAt = 4;
constexpr std::size_t kLengthAt = 8;

PageNo firstPage(DamagedFile& file) { return file.pages.front(); }

void changeSlotWord(DamagedFile& file, RowId id, std::uint16_t andBits, std::uint16_t orBits) {
    const auto word = file.get<std::uint16_t>(id.page, file.slotAt(id.slot));
    file.put<std::uint16_t>(id.page, file.slotAt(id.slot),
                            static_cast<std::uint16_t>((word & andBits) | orBits));
}

/// The first and second entry of the leaf that is the root of the index on "cliente": key bytes and
/// row.
std::span<std::byte> clientEntry(DamagedFile& file, std::size_t at) {
    constexpr std::size_t kEntry = 5 + 4; // flag and long; page and slot
    return file.page(file.cheques.realIndexes[1].root)
        .subspan(file.format().indexDataAt + at * kEntry, kEntry);
}

const std::vector<Damage> kDamages = {
    {"header: magic",
     [](DamagedFile& file) {
         file.put<std::uint8_t>(kHeader, 6, 'x');
         return kHeader;
     },                                                                                   "o arquivo não pode ser aberto"                                  },
    {"header: place of a system table",
     [](DamagedFile& file) {
         file.put<std::uint8_t>(kHeader, 0x24, 0xAA);
         return kHeader;
     },                                                                                   "os lugares dos mapas"                                            },
    {"file: cut inside a page",
     [](DamagedFile& file) {
         const auto pages = std::filesystem::file_size(file.path()) / file.format().pageSize;
         file.resize((pages - 1) * file.format().pageSize + 100);
         return static_cast<PageNo>(pages - 1);
     },                                                                                   "a última página está incompleta"                              },
    {"map of free pages: unknown kind",
     [](DamagedFile& file) {
         file.bytesOf(kFreeMap)[0] = std::byte{9};
         return kFreeMapPage;
     },                                                                                   "o mapa de páginas é de tipo desconhecido"                      },
    {"page in use and free",
     [](DamagedFile& file) {
         file.setBit(kFreeMap, firstPage(file), true);
         return firstPage(file);
     },                                                                                   "a página está em uso e consta como livre"                      },
    {"page of two tables",
     [](DamagedFile& file) {
         file.setBit(file.other.ownedMap, firstPage(file), true);
         return firstPage(file);
     },                                                                                   "a página já tem outro dono"                                    },
    {"page of nobody",
     [](DamagedFile& file) {
         file.setBit(file.cheques.ownedMap, firstPage(file), false);
         return firstPage(file);
     },                                                                                   "a página não é de ninguém",                                    kWarning},
    {"rows of a page of nobody",
     [](DamagedFile& file) {
         file.setBit(file.cheques.ownedMap, firstPage(file), false);
         return firstPage(file);
     },                                                        "o índice contém uma linha que não existe"                                                                                                                                                      },
    {"map: page beyond the file's end",
     [](DamagedFile& file) {
         file.setBit(file.cheques.ownedMap, PageNo{500}, true);
         return file.cheques.ownedMap.page;
     },                                                 "páginas que o arquivo não tem"                                                                                                                                                      },
    {"map: shared by two tables",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.other.page(), file.format().freeMapAt,
                                 static_cast<std::uint32_t>(packed(file.cheques.freeMap)));
         return file.cheques.freeMap.page;
     },                                                       "o mapa de páginas serve a dois donos"                                                                                                                                                      },
    {"map of free space: page that isn't the table's",
     [](DamagedFile& file) {
         file.setBit(file.other.freeMap, firstPage(file), true);
         return firstPage(file);
     },                                  "o mapa de espaço livre contém uma página"                                                                                                                                                      },
    {"definition: circle of pages",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.wide.pages[1], kNextPageAt, number(file.wide.pages[0]));
         return file.wide.pages[0];
     },                                                     "a página já tem outro dono"                                                                                                                                                      },
    {"definition: kind of page",
     [](DamagedFile& file) {
         file.put<std::uint8_t>(file.other.page(), 0, 1);
         return file.other.page();
     },                                                        "a página não é de definição"                                                                                                                                                      },
    {"definition: too long",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.other.page(), kLengthAt, 1'000'000);
         return file.other.page();
     },                                                            "a definição da tabela não pode ser lida"                                                                                                                                                      },
    {"definition: length",
     [](DamagedFile& file) {
         const auto length = file.get<std::uint32_t>(file.other.page(), kLengthAt);
         file.put<std::uint32_t>(file.other.page(), kLengthAt, length + 1);
         return file.other.page();
     },                                                              "o tamanho da definição está errado"                                                                                                                                                      },
    {"definition: constant",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.other.page(), 12, 7);
         return file.other.page();
     },                                                            "uma constante da definição",                                                                                                                                                       Finding::Severity::error, Version::jet4},
    {"definition: kind of table",
     [](DamagedFile& file) {
         file.put<std::uint8_t>(file.other.page(), file.format().tableKindAt, 7);
         return file.other.page();
     },                                            "do usuário ou do sistema"},
    {"definition: counts",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.other.page(), file.format().realIndexesAt, 0x7FFFFFFF);
         return file.other.page();
     },           "a definição da tabela não pode ser lida"                                                                                                                     },
    {"row count",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.cheques.page(), file.format().rowCountAt, 62);
         return file.cheques.page();
     },                           "o número de registros está errado (diz 62, são 63)"},
    {"numbering",
     [](DamagedFile& file) {
         file.put<std::int32_t>(file.cheques.page(), file.format().autonumberAt, 62);
         return file.cheques.page();
     },"a numeração está atrasada"                                                                                          },
    {"data page: free bytes",
     [](DamagedFile& file) {
         const auto free = file.get<std::uint16_t>(firstPage(file), kFreeBytesAt);
         file.put<std::uint16_t>(firstPage(file), kFreeBytesAt,
                                 static_cast<std::uint16_t>(free + 1));
         return firstPage(file);
     },                                                    "os bytes livres da página estão errados"                           },
    {"data page: kind",
     [](DamagedFile& file) {
         file.put<std::uint8_t>(firstPage(file), 0, 4);
         return firstPage(file);
     },"não é uma página de dados"                         },
    {"data page: owner",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(firstPage(file), kOwnerAt, number(file.other.page()));
         return firstPage(file);
     },                                                                 "a página diz ser de outro dono"                                                                                                         },
    {"data page: more slots than fit",
     [](DamagedFile& file) {
         file.put<std::uint16_t>(firstPage(file), file.format().slotCountAt, 60000);
         return firstPage(file);
     },"não é uma página de dados"},
    {"slot: offset of the one before",
     [](DamagedFile& file) {
         file.put<std::uint16_t>(firstPage(file), file.slotAt(1),
                                 file.get<std::uint16_t>(firstPage(file), file.slotAt(0)) &
                                     0x1FFFU);
         return firstPage(file);
     },                                                                    "a linha está vazia (linha 1)"                                                                                                                                                                                             },
    {"slot: behind the one before",
     [](DamagedFile& file) {
         file.put<std::uint16_t>(firstPage(file), file.slotAt(2),
                                 static_cast<std::uint16_t>(file.format().pageSize));
         return firstPage(file);
     },"uma linha está fora do seu lugar na página (linha 2)"},
    {"slot: deleted with its bytes left",
     [](DamagedFile& file) {
         changeSlotWord(file, file.plain, 0x1FFF, 0xC000);
         return file.plain.page;
     },                                           "uma linha excluída ainda ocupa espaço",                                                                                                                                                                                                                                                          kWarning},
    {"row: more columns than the table",
     [](DamagedFile& file) {
         file.bytesOf(file.plain)[0] = std::byte{200};
         return file.plain.page;
     },"a linha tem mais colunas do que a tabela (linha 1)"},
    {"row: stray bits in the null mask",
     [](DamagedFile& file) {
         file.bytesOf(file.plain).back() |= std::byte{0x80};
         return file.plain.page;
     },                                                                                   "bits de sobra (linha 1)",                                                                                                    kWarning},
    {"row: a value outside",
     [](DamagedFile& file) {
         const auto row = file.bytesOf(file.plain);
         const std::size_t end = row.size() - (file.format().isJet3() ? 5 : 8);
         row[end] = std::byte{0xFE}; // the end of the variable values
         return file.plain.page;
     },                                                                                   "um valor está fora da sua linha (linha 1)"                                         },
    {"row: offsets out of order",
     [](DamagedFile& file) {
         const auto row = file.bytesOf(file.plain);
         const std::size_t middle = row.size() - (file.format().isJet3() ? 4 : 6);
         row[middle] = std::byte{0xFE}; // the beginning of the memo
         return file.plain.page;
     },                                                            "as posições da linha estão fora de ordem (linha 1)"                                                                                                                                                      },
    {"row: date beyond the calendar",
     [](DamagedFile& file) {
         const std::size_t base = file.format().columnCountSize;
         store<double>(file.bytesOf(file.plain).data() + base + 8, 1e9);
         return file.plain.page;
     },                                                       "uma data está fora do calendário",                                                                                                                                                       kWarning},
    {"row: half a character",
     [](DamagedFile& file) {
         const auto row = file.bytesOf(file.plain);
         for (const std::size_t back : {7U, 9U}) // the end of the name, where the memo begins
             store<std::uint16_t>(row.data() + row.size() - back,
                                  static_cast<std::uint16_t>(
                                      load<std::uint16_t>(row.data() + row.size() - back) - 1));
         return file.plain.page;
     },                                                   "um texto não pode ser lido (linha 1, coluna \"nome\")",                                                                                                                                                       Finding::Severity::error,
     Version::jet4},
    {"moved row: to where it isn't",
     [](DamagedFile& file) {
         store<std::uint32_t>(file.bytesOf(file.moved).data(),
                              static_cast<std::uint32_t>(packed(file.plain)));
         return file.moved.page;
     },                                                                         "uma linha mudou para um lugar onde não está (linha 0)"},
    {"moved row: nobody points to it",
     [](DamagedFile& file) {
         const RowId target = unpacked(load<std::uint32_t>(file.bytesOf(file.moved).data()));
         store<std::uint32_t>(file.bytesOf(file.moved).data(), 0x12345678);
         return target.page;
     },"nenhuma linha mudou para um lugar que está ocupado",                                                                                                                                           kWarning},
    {"moved row: two point to it",
     [](DamagedFile& file) {
         const RowId target = unpacked(load<std::uint32_t>(file.bytesOf(file.moved).data()));
         store<std::uint32_t>(file.bytesOf(file.plain).data(),
                              static_cast<std::uint32_t>(packed(target)));
         changeSlotWord(file, file.plain, 0x1FFF, 0x4000);
         return target.page;
     },                                                                                   "duas linhas mudaram para o mesmo lugar"                   },
    {"long value: kind",
     [](DamagedFile& file) {
         file.bytesOf(file.chain)[file.chainField + 3] = std::byte{0xC0};
         return file.chain.page;
     },                                                                                   "a definição de um valor longo está errada"                                                                                                                                                 },
    {"long value: chain in a circle",
     [](DamagedFile& file) {
         store<std::uint32_t>(file.bytesOf(file.chainParts[1]).data(),
                              static_cast<std::uint32_t>(packed(file.chainParts[0])));
         return file.chainParts[0].page;
     },                                                      "uma parte de valor longo é usada duas vezes"                                                                                                                                                      },
    {"long value: chain that ends early",
     [](DamagedFile& file) {
         store<std::uint32_t>(file.bytesOf(file.chainParts[1]).data(), 0);
         return file.chain.page;
     },                                                                "um valor longo termina antes do seu tamanho"                                                                                                                                                      },
    {"long value: parts that nobody names any more",
     [](DamagedFile& file) {
         store<std::uint32_t>(file.bytesOf(file.chainParts[1]).data(), 0);
         return file.chainParts[2].page;
     },                                                   "nenhuma linha usa uma parte de valor longo",                                                                                                                                                       kWarning},
    {"long value: part of another",
     [](DamagedFile& file) {
         store<std::uint32_t>(file.bytesOf(file.chain).data() + file.chainField + 4,
                              static_cast<std::uint32_t>(packed(file.singlePart)));
         return file.singlePart.page;
     },                                               "uma parte de valor longo é usada duas vezes"                                                                                                                                                      },
    {"long value: page of the table's rows",
     [](DamagedFile& file) {
         store<std::uint32_t>(file.bytesOf(file.chain).data() + file.chainField + 4,
                              static_cast<std::uint32_t>(packed(file.plain)));
         return file.plain.page;
     },                                    "um valor longo usa uma página que não é da sua coluna"                                                                                                                                                      },
    {"long value: deleted part",
     [](DamagedFile& file) {
         changeSlotWord(file, file.singlePart, 0x1FFF, 0xC000);
         return file.singlePart.page;
     },                                                                         "um valor longo usa um lugar excluído"},
    {"long value: free bytes of its page",
     [](DamagedFile& file) {
         file.put<std::uint16_t>(file.singlePart.page, kFreeBytesAt, 1);
         return file.singlePart.page;
     },"os bytes livres da página estão errados"},
    {"index: entries in the wrong order",
     [](DamagedFile& file) {
         std::ranges::swap_ranges(clientEntry(file, 0), clientEntry(file, 1));
         return file.cheques.realIndexes[1].root;
     },"as entradas do índice estão fora de ordem"},
    {"index: missing entry",
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
     },"falta uma linha no índice"                                        },
    {"index: key that isn't the row's",
     [](DamagedFile& file) {
         store<std::int32_t>(file.bytesOf(file.plain).data() + file.format().columnCountSize + 4,
                             99);
         return file.plain.page;
     },                                                  "a chave do índice não é a da linha"                                                                                                                                                                                                                      },
    {"index: row that isn't there",
     [](DamagedFile& file) {
         clientEntry(file, 0)[8] = std::byte{0xFE};
         return firstPage(file);
     },                                                 "o índice contém uma linha que não existe"                                                                                                                                                                                                                       },
    {"index: the same row twice",
     [](DamagedFile& file) {
         clientEntry(file, 1)[7] = clientEntry(file, 0)[7];
         clientEntry(file, 1)[8] = clientEntry(file, 0)[8];
         return firstPage(file);
     },                                                                                    "o índice contém duas vezes a mesma linha"                                                                             },
    {"index: free bytes",
     [](DamagedFile& file) {
         file.put<std::uint16_t>(file.cheques.realIndexes[1].root, kFreeBytesAt, 5);
         return file.cheques.realIndexes[1].root;
     },"os bytes livres da página de índice estão errados"},
    {"index: owner",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.cheques.realIndexes[1].root, kOwnerAt, 2);
         return file.cheques.realIndexes[1].root;
     },"a página de índice é de outra tabela"},
    {"index: root not in its map",
     [](DamagedFile& file) {
         const RealIndex& index = file.cheques.realIndexes[1];
         file.setBit(index.map, index.root, false);
         return index.root;
     },"a raiz do índice não está no seu mapa"},
    {"index: root with a neighbour",
     [](DamagedFile& file) {
         file.put<std::uint32_t>(file.cheques.realIndexes[1].root, file.format().indexNextAt, 3);
         return file.cheques.realIndexes[1].root;
     },                                   "do índice aponta para outra"                                                                                                                                                                                                                                                                               },
    {"catalog: table without a row",
     [](DamagedFile& file) {
         file.withDatabase([&](Database& database) {
             Table& objects = database.table("MSysObjects");
             RowCursor row = objects.scan();
             for (bool there = row.first(); there; there = row.next())
                 if (row.row().integer(0) == number(file.other.page()))
                     break;
             objects.erase(row.id());
         });
         return file.other.page();
     },                                                     "uma definição de tabela não está no catálogo"                                                                                                                                                                                                                                                                                       },
    {"catalog: definition outside the file",
     [](DamagedFile& file) {
         RowId found;
         file.withDatabase([&](Database& database) {
             Table& objects = database.table("MSysObjects");
             Row row(objects.columns().size());
             row[0] = std::int64_t{9999};
             row[1] = std::int64_t{0x0F000001};
             row[2] = std::string("Fantasma");
             row[3] = std::int64_t{1};
             row[7] = std::int64_t{0};
             found = objects.insert(row);
         });
         return found.page;
     },                                                                                      "a definição de uma tabela está fora do arquivo (\"Fantasma\""                                                                                                                                                                                                      },
    {"catalog: object in a folder that isn't there",
     [](DamagedFile& file) {
         RowId found;
         file.withDatabase([&](Database& database) {
             Table& objects = database.table("MSysObjects");
             Row row(objects.columns().size());
             row[0] = std::int64_t{-2147483000};
             row[1] = std::int64_t{77};
             row[2] = std::string("Perdido");
             row[3] = std::int64_t{5};
             found = objects.insert(row);
         });
         return found.page;
     },                 "o objeto está numa pasta que não existe"},
    {"catalog: relationship of a column that isn't there",
     [](DamagedFile& file) {
         RowId found;
         file.withDatabase([&](Database& database) {
             Table& table = database.table("MSysRelationships");
             Row row(table.columns().size());
             row[0] = std::string("rel");
             row[1] = row[2] = row[3] = std::int64_t{1};
             row[4] = std::string("Outra");
             row[5] = std::string("texto");
             row[6] = std::string("Cheques");
             row[7] = std::string("nenhuma");
             found = table.insert(row);
         });
         return found.page;
     },"um relacionamento usa um campo que não existe (\"Cheques.nenhuma\")"},
};

TEST(Check, TellsEachKindOfDamageAndItsPage) {
    for (const Version version : kVersions) {
        DamagedFile file(version);
        for (const Damage& damage : kDamages) {
            if (damage.only && *damage.only != version)
                continue;
            SCOPED_TRACE(nameOf(version) + ", " + damage.name);
            file.restore();
            const PageNo page = damage.plant(file);
            const Report report = file.check();
            EXPECT_TRUE(tells(report, damage.severity, page, damage.words))
                << "expected on page " << number(page) << ": " << damage.words << "\n"
                << listed(report);
        }
        file.restore();
        EXPECT_TRUE(file.check().clean());
    }
}

TEST(Check, AUniqueIndexHasEachKeyOnce) {
    for (const Version version : kVersions) {
        SCOPED_TRACE(nameOf(version));
        DamagedFile file(version);
        // The index on the client, whose numbers repeat, is declared unique.
        const auto page = file.page(file.cheques.page());
        std::size_t at = 0;
        for (std::size_t i = file.format().definitionHeader; i + 8 < page.size(); ++i)
            if (load<std::uint32_t>(page.data() + i) == number(file.cheques.realIndexes[1].root) &&
                load<std::uint32_t>(page.data() + i - 4) ==
                    static_cast<std::uint32_t>(packed(file.cheques.realIndexes[1].map)))
                at = i - file.format().realIndexRootAt;
        ASSERT_NE(at, 0U);
        page[at + file.format().realIndexFlagsAt] |= std::byte{1};
        const Report report = file.check();
        EXPECT_THAT(listed(report), HasSubstr("uma chave aparece duas vezes num índice único"));
    }
}

TEST(Check, TellsFiftyOfAKindAndCountsTheRest) {
    DamagedFile file(Version::jet4);
    for (const RowId id : file.rows)
        if (id != file.moved)
            file.bytesOf(id).back() |= std::byte{0x80};
    const Report report = file.check();
    const auto ofKind = std::ranges::count_if(report.findings, [](const Finding& finding) {
        return finding.sentence.find("bits de sobra") != std::string::npos;
    });
    EXPECT_EQ(ofKind, 51);
    EXPECT_THAT(report.findings.back().sentence, HasSubstr("mais 12 vezes"));
    EXPECT_TRUE(report.sound());
    EXPECT_FALSE(report.clean());
}

TEST(Check, WhatIsNoDatabaseIsSaidAndNotThrown) {
    const TemporaryFolder folder;
    const auto path = folder / "texto.mdb";
    for (const std::string content :
         {"", "Isto não é um banco de dados.", "                                       "}) {
        std::ofstream(path, std::ios::binary) << content;
        const Report report = check(path);
        ASSERT_EQ(report.findings.size(), 1U);
        EXPECT_THAT(report.findings[0].sentence, HasSubstr("o arquivo não pode ser aberto"));
    }
}

} // namespace
