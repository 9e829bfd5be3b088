// What seldom stands in a rule: decimals, identifiers and bytes, amounts at their limits, numbers
// and patterns written in unusual ways.
#include "jet/rule/Answers.h"

#include <limits>

using namespace jet;

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
const Numeric kDecimal{
    true, {0, 0, 0, 1250},
     2
}; // -12.50
const Guid kNoId{};
const char* const kNoIdText = "'{00000000-0000-0000-0000-000000000000}'";

void expectErrorsOf(const Row& row, std::initializer_list<const char*> texts) {
    for (const char* text : texts)
        try {
            ADD_FAILURE() << text << " is " << inWords(answerOf(text, row));
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::outOfRange) << text;
        }
}

TEST(RareValues, DecimalsAreReckonedWithAsNumbers) {
    constexpr Answer kCases[] = {
        {"a+1",              "-11.5"   },
        {"a*2",              "-25"     },
        {"a<0",              "True"    },
        {"IsNumeric(a)",     "True"    },
        {"IsNumeric(b)",     "False"   },
        {"a & ''",           "'-12.5'" },
        {"Format(a,'0.00')", "'-12,50'"},
        {"Format(a)",        "'-12,5'" },
        {"Left(a,3)",        "'-12'"   },
        {"a=b",              "Null"    },
        {"b=a",              "Null"    },
        {"b*a",              "Null"    },
        {"b & b",            "Null"    },
        {"a & b",            "'-12.5'" },
        {"b & a",            "'-12.5'" },
    };
    expectAnswers(kCases, {kDecimal, Value{}});
}

TEST(RareValues, IdentifiersAreTextsAndBytesAreCompared) {
    const Answer kCases[] = {
        {"a & ''",       kNoIdText},
        {"Format(a)",    kNoIdText},
        {"a=b",          "True"   },
        {"b='x'",        "False"  },
        {"IsNumeric(a)", "False"  },
    };
    expectAnswers(kCases, {kNoId, Value(kNoId)});
    expectErrorsOf({kNoId, Value(kNoId)}, {"a+1", "a<1"});
    const Row bytes{
        Bytes{std::byte{1}, std::byte{2}},
        Bytes{std::byte{1}, std::byte{3}}
    };
    constexpr Answer kBytes[] = {
        {"a<b",  "True" },
        {"a=a",  "True" },
        {"b<=a", "False"}
    };
    expectAnswers(kBytes, bytes);
    expectErrorsOf(bytes, {"a=1", "1=a", "a & ''", "a+1", "Format(a,'@')"});
}

TEST(RareValues, AmountsAreExactToTheirLimitsAndBeyondThemAnError) {
    const Row limits{Currency{kMost}, Currency{kLeast}};
    constexpr Answer kCases[] = {
        {"a>922337203685477",  "True" },
        {"a>922337203685478",  "False"},
        {"b<-922337203685477", "True" },
        {"b<-922337203685478", "False"},
        {"a+b<0",              "True" },
        {"a*1=a",              "True" },
        {"1*b=b",              "True" },
        {"a*2>a",              "True" }, // as a real
        {"922337203685478>a",  "True" },
        {"a*a>a",              "True" },
        {"2*a>a",              "True" },
    };
    expectAnswers(kCases, limits);
    expectErrorsOf(limits, {"a+1", "b-1", "a+922337203685478", "a-(-922337203685478)", "-b"});
    constexpr Answer kNeighbours[] = {
        {"a>b", "True" }, // as reals they would be the same
        {"a=b", "False"},
    };
    expectAnswers(kNeighbours, {Currency{kMost}, Currency{kMost - 1}});
    const Row wholes{Value(kMost), Value(kLeast)};
    constexpr Answer kWholes[] = {
        {"a+1>=a", "True"}, // a real from there on
        {"a*b<0",  "True"},
        {"a>b",    "True"},
    };
    expectAnswers(kWholes, wholes);
}

TEST(RareValues, DatesBeforeTheFirstDayAreReckonedForward) {
    const Row dates{Date{-1.25}, Date{-657434}}; // six in the morning; the first of all
    constexpr Answer kCases[] = {
        {"Format(a,'h')",      "'6'"   },
        {"Format(a+1,'h')",    "'6'"   },
        {"Format(a-1,'d h')",  "'28 6'"},
        {"Format(a+0.5,'h')",  "'18'"  },
        {"a+1<#12/31/1899#",   "True"  },
        {"5-#1/2/1900#",       "2"     }, // no date: only one less some days is
        {"Year(b)",            "100"   },
        {"Format(b,'ww',1,2)", "'1'"   }, // there is no year before it
    };
    expectAnswers(kCases, dates);
    expectErrorsOf(dates, {"b-1", "a+3000000", "-1e300+b"});
}

TEST(RareValues, NumbersAreReadInTheWaysOneWritesThem) {
    constexpr Answer kCases[] = {
        {"Val('&H1F')",           "31"     },
        {"Val('&hFFFF')",         "-1"     },
        {"Val('&O17')",           "15"     },
        {"Val('&o8')",            "0"      },
        {"Val('&X1')",            "0"      },
        {"Val('&H')",             "0"      },
        {"Val('&HFFFFFFFFF')",    "0"      },
        {"Val('+5')",             "5"      },
        {"Val(' 1\t2 ')",         "12"     },
        {"Val('1e+2')",           "100"    },
        {"Val('1e-2x')",          "0.01"   },
        {"Val('1e')",             "1"      },
        {"Val('1d2')",            "100"    },
        {"IsNumeric('&H1F')",     "True"   },
        {"IsNumeric('&H1G')",     "False"  },
        {"IsNumeric('1e+2')",     "True"   },
        {"IsNumeric('1e+')",      "False"  },
        {"IsNumeric('+5')",       "True"   },
        {"IsNumeric('5+')",       "True"   },
        {"IsNumeric('5 -')",      "True"   },
        {"IsNumeric('+5+')",      "False"  },
        {"IsNumeric('$5')",       "True"   },
        {"IsNumeric('-$ 5')",     "True"   },
        {"IsNumeric('R$ -5')",    "True"   },
        {"IsNumeric('$$5')",      "False"  },
        {"IsNumeric('(5)')",      "True"   },
        {"IsNumeric('(5')",       "False"  },
        {"IsNumeric('(-5)')",     "False"  },
        {"IsNumeric('-')",        "False"  },
        {"IsNumeric('')",         "False"  },
        {"IsNumeric(a)",          "True"   },
        {"IsNumeric(b)",          "True"   },
        {"IsNumeric(#1/1/2024#)", "False"  },
        {"'1e400' & ''",          "'1e400'"},
        {"+5",                    "5"      },
        {"-+5",                   "-5"     },
        {"-'5'",                  "-5"     },
    };
    expectAnswers(kCases, {Currency{1}, Value(0.5)});
    constexpr Answer kOthers[] = {
        {"Val(a)",    "12"  }, // whatever blank is between
        {"Format(b)", "'0'" },
        {"b=b",       "True"},
    };
    expectAnswers(kOthers, {std::string("1\r\n2"), Value(-0.0)});
    EXPECT_EQ(answerOf("UCase(a)", {std::string("a\xFF")}), Value(std::string("A\xFF")));
    const double none = std::numeric_limits<double>::quiet_NaN();
    constexpr Answer kNone[] = {
        {"a=a", "Null"},
        {"a<b", "Null"},
    };
    expectAnswers(kNone, {Value(none), Value(1.0)});
    expectErrors({"Val('1e400')", "'1e400'+1", "'12x'*2", "''+1"});
}

TEST(RareValues, PatternsOfNumbers) {
    constexpr Answer kCases[] = {
        {"Format(1.5,'0.0e')",             "'1,5e'"                  }, // no exponent without its sign
        {"Format(1.5,'0.0ex0')",           "'1,5ex0'"                },
        {"Format(1.5,'0.0e+x')",           "'1,5e+x'"                },
        {"Format(1234.5,'0,0.00')",        "'1.234,50'"              },
        {"Format(1.25,'0.0.0')",           "'1,2.5'"                 },
        {"Format(1.25,'0.0,0')",           "'1,2,5'"                 },
        {"Format(0.5,'.00')",              "',50'"                   },
        {"Format(12.5,'.00')",             "'12,50'"                 },
        {"Format(7,'#0#')",                "'07'"                    },
        {"Format(7,',0')",                 "'7'"                     },
        {"Format(0.0004,'0.00')",          "'0,00'"                  },
        {"Format(-0.0004,'0.00')",         "'0,00'"                  },
        {"Format(0.00001234,'0.000000')",  "'0,000012'"              },
        {"Format(1e-20)",                  "'0,00000000000000000001'"},
        {"Format(-2)",                     "'-2'"                    },
        {"Format(-0.5)",                   "'-0,5'"                  },
        {"Format(5,Null)",                 "'5'"                     },
        {"Format('abc','General Number')", "'abc'"                   },
        {"Format(False)",                  "'Falso'"                 },
        {"Format('','@;')",                "' '"                     },
        {"Format('','@')",                 "' '"                     },
        {"Format(1.5,'0.0e+0x')",          "'1,5e+0x'"               },
        {"Format(5,'0\\')",                "'5\\'"                   },
        {"Format(5,'0\"x')",               "'5x'"                    },
    };
    expectAnswers(kCases);
}

TEST(RareValues, PatternsOfDates) {
    constexpr Answer kCases[] = {
        {"Format(#3/5/2024#,'DD/MM/YY')",      "'05/03/24'"           },
        {"Format(#3/5/2024#,'yyy')",           "'2465'"               }, // the year's two digits and the day
        {"Format(#3/5/2024#,'ddddd')",         "'05/03/2024'"         },
        {"Format(#3/5/2024 8:00:00#,'h mmm')", "'8 mar'"              },
        {"Format(#3/5/2024#,'mmmm')",          "'março'"             },
        {"Format(#3/5/2024#,'dddd')",          "'terça-feira'"       },
        {"Format(#3/5/2024 0:00:09#,'c')",     "'05/03/2024 00:00:09'"},
        {"Format(#3/5/2024 0:07:00#,'c')",     "'05/03/2024 00:07:00'"},
        {"Format(#0:00:00#,'c')",              "'00:00:00'"           },
        {"Format(#3/5/2024 8:07:09#,'ttttt')", "'08:07:09'"           },
        {"Format(#3/5/2024 8:07:09#,'tt')",    "'tt'"                 },
        {"Format(#1/1/2020#,'ww',1,2)",        "'1'"                  }, // four days of the week are in it
        {"Format(#1/1/2021#,'ww',1,2)",        "'53'"                 }, // two days are
        {"Format(#1/1/2021#,'ww',1,3)",        "'52'"                 },
        {"Format(#1/1/2023#,'ww',1,3)",        "'1'"                  }, // begins with a whole one
    };
    expectAnswers(kCases);
}

TEST(RareValues, StepsAndBordersOfDates) {
    constexpr Answer kCases[] = {
        {"DateDiff('d',#1/1/2024#,Null)",          "Null"},
        {"DateDiff('d',Null,#1/1/2024#)",          "Null"},
        {"DateAdd('d',1,Null)",                    "Null"},
        {"Year(DateAdd('yyyy',-1800,#1/1/1900#))", "100" },
        {"Format(#1/6/2024#,'w',0)",               "'7'" },
        {"Format(#1/7/2024#,'w',1)",               "'1'" },
        {"Format(#1/7/2024#,'w',2)",               "'7'" },
        {"Format(#1/7/2024#,'w',7)",               "'2'" },
    };
    expectAnswers(kCases);
    expectErrors({"Format(#1/7/2024#,'w',8)", "Format(#1/7/2024#,'w',-1)",
                  "DateAdd('x',1,#1/1/2024#)", "DateAdd('yyyy',-1801,#1/1/1900#)"});
}

} // namespace
