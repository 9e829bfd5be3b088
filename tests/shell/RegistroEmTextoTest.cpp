#include "shell/RegistroEmTexto.h"

#include "jet/Error.h"
#include "jet/Numbers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using jet::ColumnType;
using jet::Value;

jet::Column column(const char* name, ColumnType type) {
    jet::Column made;
    made.name = name;
    made.type = type;
    return made;
}

const std::vector<jet::Column>& columns() {
    static const std::vector<jet::Column> all = {
        column("lancamento", ColumnType::longInteger),
        column("valor", ColumnType::currency),
        column("bom para", ColumnType::date),
        column("observação", ColumnType::memo),
        column("descontar", ColumnType::boolean),
        column("taxa", ColumnType::real),
        column("foto", ColumnType::ole),
        column("marca", ColumnType::guid),
        column("fator", ColumnType::numeric),
    };
    return all;
}

jet::Row usual() {
    return {
        std::int64_t{12        },
        jet::Currency{12'345'678},
        jet::Date::of({2026,       4, 1, 0, 0, 0}
        ),
        std::string("nada"),
        true,
        0.5,
        jet::Bytes{std::byte{0},         std::byte{255}},
        Value{         },
        jet::numericFrom(true, "1250", 2).value()
    };
}

jet::Row readAgain(const jet::Row& row) {
    jet::Row read(row.size());
    for (const jet::Assignment& given :
         RegistroEmTexto::ler(columns(), RegistroEmTexto::escrever(columns(), row)))
        read[given.column] = given.value;
    return read;
}

TEST(RowAsText, CanBeReadByPeople) {
    EXPECT_EQ(RegistroEmTexto::escrever(columns(), usual()),
              "[lancamento]=12 [valor]=1234,5678 [bom para]=2026-04-01 [observação]=\"nada\" "
              "[descontar]=verdadeiro [taxa]=0.5 [foto]=0x00ff [marca]=nulo [fator]=-12.50");
}

TEST(RowAsText, GivesExactlyTheRowAgain) {
    const std::pair<std::size_t, Value> cases[] = {
        {0,                       Value{}                                                    },
        {0,                       std::int64_t{-2147483648}                                  },
        {1,                       jet::Currency{std::numeric_limits<std::int64_t>::min() + 1}},
        {1,                       jet::Currency{std::numeric_limits<std::int64_t>::max()}    },
        {1,                       jet::Currency{-1}                                          },
        {1,                       jet::Currency{-10001}                                      },
        {2,                       Value{}                                                    },
        {2,                       jet::Date::of({2026, 4, 1, 23, 59, 59})                    },
        {2,                       jet::Date::of({100, 1, 1, 0, 0, 0})                        },
        {2,                       jet::Date{46113.123456789}                                 },
        {2,                       jet::Date{1e300}                                           },
        {3,                       std::string()                                              },
        {3,                       Value{}                                                    },
        {3,                       std::string("nulo")                                        },
        {3,                       std::string("a \"b\" \\ [valor]=7\r\nfim \\")              },
        {4,                       false                                                      },
        {5,                       1e-300                                                     },
        {5,                       0.1 + 0.2                                                  },
        {6,                       jet::Bytes{}                                               },
        {7,                       jet::Guid{{std::byte{1}, std::byte{0xAB}}}                 },
        {8,                       jet::numericFrom(false,                                      "7", 0).value()},
        {8,             jet::numericFrom(false,                                                                        "", 4).value()},
        {8,jet::numericFrom(true,std::string(28, '9'), 28).value()},
        {8,                       Value{}                                                                                 },
    };
    EXPECT_EQ(readAgain(usual()), usual());
    for (const auto& [place, value] : cases) {
        jet::Row row = usual();
        row[place] = value;
        EXPECT_EQ(readAgain(row), row) << RegistroEmTexto::escrever(columns(), row);
    }
}

TEST(RowAsText, NamesColumnsWithoutRegardToCaseAndOrder) {
    const auto read = RegistroEmTexto::ler(columns(), "[VALOR]=1,0000 [Lancamento]=3");
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[0].column, 1U);
    EXPECT_EQ(read[1].value, Value(std::int64_t{3}));
}

TEST(RowAsText, OtherTextsAreRefused) {
    const auto codeOf = [](const char* text) {
        try {
            static_cast<void>(RegistroEmTexto::ler(columns(), text));
        } catch (const jet::Error& error) {
            return error.code();
        }
        ADD_FAILURE() << text;
        return jet::Errc::misuse;
    };
    for (const char* text : {"x",
                             "[",
                             "[valor",
                             "[valor]",
                             "[valor]=",
                             "[valor]=1",
                             "[valor]=1,00",
                             "[valor]=1,000x",
                             "[lancamento]=\"1\"",
                             "[lancamento]=1 ",
                             "[lancamento]=1x",
                             "[observação]=a",
                             "[observação]=\"a",
                             "[observação]=\"a\\",
                             "[observação]=\"\\x\"",
                             "[observação]=\"a\"b",
                             "[bom para]=2026-13-01",
                             "[bom para]=2026-01-01 25:00:00",
                             "[bom para]=ontem",
                             "[descontar]=talvez",
                             "[foto]=00",
                             "[foto]=0x0",
                             "[foto]=0xzz",
                             "[marca]=0x00",
                             "[taxa]=",
                             "[fator]=1,5",
                             "[fator]=-",
                             "[fator]=1.2.3",
                             "[fator]=12345678901234567890123456789"})
        EXPECT_EQ(codeOf(text), jet::Errc::corrupt) << text;
    EXPECT_EQ(codeOf("[outro]=1"), jet::Errc::notFound);
}

} // namespace
