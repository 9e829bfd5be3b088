// Functions called by the rules and defaults of a file.
#include "jet/People.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

using namespace jet;
using namespace std::string_literals;

namespace {

class FileFunctions : public People {};
INSTANTIATE_TEST_SUITE_P(, FileFunctions, bothVersions(), versionName);

TEST_P(FileFunctions, RulesThatCallThemAreKept) {
    const struct {
        const char* column;
        std::size_t place;
        const char* rule;
        Value good;
        Value bad;
    } cases[] = {
        {"nome",  kNome,  "Len([nome])>3",                                               "Rosa"s,                "Ana"s                 },
        {"nome",  kNome,  "Left([nome],1)='A'",                                          "ana"s,                 "Bia"s                 },
        {"nome",  kNome,  "Right([nome],2)='SA'",                                        "Rosa"s,                "Ana"s                 },
        {"nome",  kNome,  "Mid([nome],2,1)='o'",                                         "Rosa"s,                "Ana"s                 },
        {"nome",  kNome,  "InStr([nome],'@')>1",                                         "a@b"s,                 "ab"s                  },
        {"nome",  kNome,  "StrComp([nome],UCase([nome]),0)=0",                           "ANA"s,                 "Ana"s                 },
        {"nome",  kNome,  "StrComp([nome],LCase$([nome]),0)=0",                          "ana"s,                 "Ana"s                 },
        {"nome",  kNome,  "Trim([nome])<>''",                                            " a "s,                 "  "s                  },
        {"nome",  kNome,  "Val([nome])>=10",                                             "10 anos"s,             "9 anos"s              },
        {"nome",  kNome,  "IsNumeric([nome])",                                           "1.234,50"s,            "12a"s                 },
        {"nome",  kNome,  "Is Null Or Len([nome])=Len(Format([nome],'>'))",              "x"s,                   {}                     },
        {"idade", kIdade, "IIf([idade]<18,[idade]>=16,[idade]<70)",                      whole(16),              whole(70)              },
        {"idade", kIdade, "Nz([idade],0)>0",                                             whole(1),               whole(0)               },
        {"data",  kData,  "<=DateAdd('yyyy',1,Date())",                                  Date::today(),          Date::of({2999, 1, 1}) },
        {"data",  kData,  "DateDiff('d',Date(),[data])<=365",                            Date::today(),          Date::of({2999, 1, 1}) },
        {"data",  kData,  "Year([data])>=2000 And Month([data])<=6 And Day([data])<>31",
         Date::of({2020, 6, 30}),                                                                                Date::of({2020, 5, 31})},
        {"data",  kData,  "Format([data],'mmmm')='março'",                              Date::of({2024, 3, 5}),
         Date::of({2024, 4, 5})                                                                                                         },
        {"valor", kValor, "Format([valor],'0.00') Like '*,00'",                          Currency{50000},        Currency{50100}        },
        {"data",  kData,  "<=Now()",                                                     Date::of({2020, 1, 1}), Date::of({2999, 1, 1}) },
    };
    for (const auto& each : cases) {
        const std::size_t place = each.place;
        const Value& bad = each.bad;
        SCOPED_TRACE(each.rule);
        keep({
            {.column = each.column, .rule = each.rule, .message = "Não serve."}
        });
        ASSERT_FALSE(table().readOnlyReason()) << *table().readOnlyReason();
        const RowId row = add({
            {place, each.good}
        });
        EXPECT_EQ(value(row, place), each.good);
        if (!isNull(bad)) {
            const Error onInsert = refusal([&] {
                add({
                    {place, bad}
                });
            });
            const Error onChange = refusal([&] {
                change(row, {
                                {place, bad}
                });
            });
            for (const Error& error : {onInsert, onChange}) {
                EXPECT_EQ(error.code(), Errc::rule);
                EXPECT_STREQ(error.what(), "Não serve.");
            }
        }
        table().erase(row);
    }
}

TEST_P(FileFunctions, ATablesRuleMayCallThem) {
    keep({{.rule = "IIf([ativo],Len(Trim(Nz([nome])))>0,True)"}});
    const RowId row = add({
        {kAtivo, false},
        {kNome,  {}   }
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kAtivo, true}
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kAtivo, true  },
                    {kNome,  "Ana"s}
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kNome, " "s}
                  });
              }).code(),
              Errc::rule);
}

TEST_P(FileFunctions, DefaultsThatCallThemAreGiven) {
    keep({
        {.column = "nome",  .defaultValue = "=UCase(Left('balcão',3)) & Format(7,'000')" },
        {.column = "idade", .defaultValue = "Val('18 anos')"                              },
        {.column = "valor", .defaultValue = "IIf(Len('abc')=3,12.5,0)"                    },
        {.column = "data",  .defaultValue = "=DateAdd('m',1,#1/31/2024#)"                 },
        {.column = "ativo", .defaultValue = "IsNumeric('12')"                             },
        {.column = "obs",   .defaultValue = "='em ' & Format(#3/5/2024#,'dd \"de\" mmmm')"},
        {.column = "peso",  .defaultValue = "DateDiff('d',#1/1/2024#,#3/1/2024#)"         }
    });
    const Row found = table().read(add({})).value();
    EXPECT_EQ(found[kNome], Value("BAL007"s));
    EXPECT_EQ(found[kIdade], whole(18));
    EXPECT_EQ(found[kValor], Value(Currency{125000}));
    EXPECT_EQ(found[kData], Value(Date::of({2024, 2, 29})));
    EXPECT_EQ(found[kAtivo], Value(true));
    EXPECT_EQ(found[kObs], Value("em 05 de março"s));
    EXPECT_EQ(found[kPeso], Value(60.0));
}

TEST_P(FileFunctions, ADateGivenToATextIsWrittenAsInBrazil) {
    keep({
        {.column = "nome", .defaultValue = "Date()"}
    });
    const Value today = Date::today();
    const RowId row = add({});
    EXPECT_EQ(value(row, kNome), Value(textOf(today).value())) << "or midnight has just passed";
}

TEST_P(FileFunctions, ValuesThatDontSuitAFunctionRefuseTheRow) {
    keep({
        {.column = "nome", .rule = "Mid([nome],[idade])<>''"}
    });
    const Error error = refusal([&] {
        add({
            {kNome,  "Ana"s  },
            {kIdade, whole(0)}
        });
    });
    EXPECT_EQ(error.code(), Errc::rule);
    EXPECT_NE(std::string(error.what()).find("uma posição ou um tamanho"), std::string::npos)
        << error.what();
    add({
        {kNome,  "Ana"s  },
        {kIdade, whole(1)}
    });
}

} // namespace
