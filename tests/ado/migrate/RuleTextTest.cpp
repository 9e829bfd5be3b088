// A condition of the server, as it writes it out, in a file's words, or in none.
#include "ado/migrate/RuleText.h"

#include <gmock/gmock.h>

namespace {

std::string said(const char* sql) {
    const auto rule = ado::ruleText(sql);
    if (!rule)
        return "none";
    return rule->kind == ado::RuleText::Kind::condition ? rule->text
           : rule->kind == ado::RuleText::Kind::notNull ? "not null"
                                                        : "not empty";
}

TEST(RuleText, SaysWhatAFileHasWordsFor) {
    const std::pair<const char*, const char*> conditions[] = {
        {"(ção > 1.5)",                                                                          "[ção]>1.5"             },
        {"(\"Nome longo\" IS NOT NULL)",                                                           "not null"                },
        {"(octet_length((nome)::text) > 0)",                                                       "not empty"               },
        {"(length((nome)::text) > 0)",                                                             "not empty"               },
        {"((nome)::text <> ''::text)",                                                             "not empty"               },
        {"((a > 1) OR (b IS NULL))",                                                               "([a]>1) Or ([b] Is Null)"},
        {"(a = true)",                                                                             "[a]=True"                },
        {"(a = false)",                                                                            "[a]=False"               },
        {"(data <= CURRENT_DATE)",                                                                 "[data]<=Date()"          },
        {"(data <= CURRENT_TIMESTAMP)",                                                            "[data]<=Now()"           },
        {"(data <= LOCALTIMESTAMP(0))",                                                            "[data]<=Now()"           },
        {"(data <= now())",                                                                        "[data]<=Now()"           },
        {"(data >= '2001-05-31'::date)",                                                           "[data]>=#05/31/2001#"    },
        {"(data >= '2001-05-31 08:30:00'::timestamp(0) without time zone)",
         "[data]>=#05/31/2001 08:30:00#"                                                                                     },
        {"(a > '-1'::integer)",                                                                    "[a]>-1"                  },
        {"(a > '1e+30'::double precision)",                                                        "[a]>1e+30"               },
        {"(a <> - (- b))",                                                                         "[a]<>--[b]"              },
        {"((nome)::character varying(10) = 'x'::character varying)",                               "[nome]=\"x\""            },
        {"(upper((nome)::text) OPERATOR(pg_catalog.=) 'X'::text)",                                 "UCase([nome])=\"X\""     },
        {"((nome)::text = ANY ((ARRAY['A'::character varying, 'B'::character varying])::text[]))",
         "[nome] In (\"A\", \"B\")"                                                                                          },
        {"jet_len(nome)",                                                                          "Len([nome])"             },
    };
    for (const auto& [sql, text] : conditions)
        EXPECT_EQ(said(sql), text) << sql;
}

// Half of a condition would be another one.
TEST(RuleText, IsNoneForWhatAFileCantSay) {
    for (const char* const sql : {"",
                                  "(a > 1",
                                  "a > 1)",
                                  "a >",
                                  "a ~ 'x'",
                                  "'open",
                                  "E'a\\\\b'",
                                  "a = NULL",
                                  "octet_length(nome) > 5",
                                  "(a)::date = b",
                                  "(a)::time without time zone = b",
                                  "a = '2001-05'::date",
                                  "a = '12:00:00'::time without time zone",
                                  "a = 'x001-05-31'::date",
                                  "a = '2001-05-/1'::date",
                                  "a = '2001-05-31 08'::timestamp",
                                  "a = '0044-03-15 BC'::date",
                                  "a = 'infinity'::timestamp without time zone",
                                  "a = 'NaN'::numeric",
                                  "a = 'Infinity'::real",
                                  "a = '{1,2}'::integer[]",
                                  "a = '1 Or True'::integer",
                                  "a = 'x'::citext",
                                  "a = 1::numeric(x)",
                                  "a = ANY (b)",
                                  "a > ANY (ARRAY[1, 2])",
                                  "a = ANY ARRAY[1]",
                                  "a = ANY (ARRAY[1, 2]",
                                  "ARRAY[1, 2] = b",
                                  "a = ANY (ARRAY(1))",
                                  "a = ANY (ARRAY[1 2])",
                                  "a OPERATOR(public.=) b",
                                  "a OPERATOR pg_catalog.= b",
                                  "a OPERATOR(pg_catalog =) b",
                                  "a OPERATOR(pg_catalog.= b",
                                  "a OPERATOR(pg_catalog.~) b",
                                  "a IS TRUE",
                                  "\"a]\" > 1",
                                  "a = LOCALTIMESTAMP(x)",
                                  "a = now(1)",
                                  "desconhecida(a) = 1",
                                  "CASE WHEN a THEN b END",
                                  "a[1] = 2",
                                  "a = '1'::integer[2]"})
        EXPECT_EQ(said(sql), "none") << sql;
}

TEST(RuleText, OfADefaultHasNoColumns) {
    EXPECT_EQ(ado::valueText("'R$ 0'::character varying"), "\"R$ 0\"");
    EXPECT_EQ(ado::valueText("jet_date()"), "Date()");
    for (const char* const sql : {"a", "\"a\"", "octet_length('x'::text)", "random()"})
        EXPECT_EQ(ado::valueText(sql), std::nullopt) << sql;
}

TEST(RuleText, EndsWhereItIsTooDeep) {
    for (const std::size_t depth : {10U, 100000U})
        EXPECT_EQ(
            ado::ruleText(std::string(depth, '(') + "a > 1" + std::string(depth, ')')).has_value(),
            depth == 10);
}

} // namespace
