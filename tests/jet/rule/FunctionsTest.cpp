// The functions of rules and defaults, each by itself.
#include "jet/rule/Answers.h"

#include <gtest/gtest.h>

using namespace jet;
using namespace std::string_literals;

namespace {

TEST(Functions, TakeTextsApart) {
    // clang-format off
    constexpr Answer kCases[] = {
        {"Left('ação',2)",                              "'aç'"},
        {"Left('ação',9)",                              "'ação'"},
        {"Left('ação',0)",                              "''"},
        {"LEFT$('ab',1)",                               "'a'"},
        {"Left(12345,2)",                               "'12'"},
        {"Left(Null,2)",                                "Null"},
        {"Left('abc',1.5)",                             "'ab'"},
        {"Left('abc',2.5)",                             "'ab'"},
        {"Left('abc','2')",                             "'ab'"},
        {"Right('ação',2)",                             "'ão'"},
        {"Right('ação',9)",                             "'ação'"},
        {"Right('ação',0)",                             "''"},
        {"Right$(Null,1)",                              "Null"},
        {"Mid('cheque',2)",                             "'heque'"},
        {"Mid('cheque',2,3)",                           "'heq'"},
        {"Mid('cheque',1,99)",                          "'cheque'"},
        {"Mid('cheque',7)",                             "''"},
        {"Mid('cheque',700,2)",                         "''"},
        {"Mid('cheque',2,0)",                           "''"},
        {"Mid(Null,1)",                                 "Null"},
        {"Mid('ÁÉÍ',2;1)",                              "'É'"},
        {"Len(Mid('ÁÉÍ',2,1))",                         "1"},
        {"Len('a\U0001F600b')",                         "4"},
        {"Left('a\U0001F600b',2)",                      "'a'"},
        {"Right('a\U0001F600b',2)",                     "'b'"},
        {"Mid('a\U0001F600b',4)",                       "'b'"},
        {"Len(Null)",                                   "Null"},
        {"Len(123)",                                    "3"},
        {"Len('  a ')",                                 "4"},
        {"UCase('ação nº 1 ÿ')",                        "'AÇÃO Nº 1 Ÿ'"},
        {"LCase$('AÇÃO × Š')",                          "'ação × š'"},
        {"UCase('7÷2')",                                "'7÷2'"},
        {"UCase(Null)",                                 "Null"},
        {"LCase(Null)",                                 "Null"},
        {"UCase(12)",                                   "'12'"},
        {"Trim('  a b  ')",                             "'a b'"},
        {"LTrim('  a ')",                               "'a '"},
        {"RTrim$('  a ')",                              "'  a'"},
        {"Trim('\t a')",                                "'\t a'"},
        {"Trim('   ')",                                 "''"},
        {"Trim(Null)",                                  "Null"},
        {"UCase(Left(Trim('  ana'),1)) & Mid('ana',2)", "'Ana'"}
    };
    // clang-format on
    expectAnswers(kCases);
    expectErrors({"Left('a',-1)", "Right('a',-1)", "Mid('a',0)", "Mid('a',-1)", "Mid('a',1,-1)",
                  "Left('a',Null)", "Mid('a',Null)", "Right('a','x')", "Left('a',1e300)",
                  "Len(True)"});
}

TEST(Functions, FindAndCompareTexts) {
    // clang-format off
    constexpr Answer kCases[] = {
        {"InStr('cheque','que')",   "4"},
        {"InStr('cheque','QUE')",   "4"},
        {"InStr('cheque','e')",     "3"},
        {"InStr(4,'cheque','e')",   "6"},
        {"InStr(7,'cheque','e')",   "0"},
        {"InStr(6,'cheque','e')",   "6"},
        {"InStr('cheque','x')",     "0"},
        {"InStr('a\U0001F600','\U0001F600')", "2"},
        {"InStr('cheque','')",      "1"},
        {"InStr(3,'cheque','')",    "3"},
        {"InStr(9,'cheque','')",    "0"},
        {"InStr('','x')",           "0"},
        {"InStr('','')",            "0"},
        {"InStr(Null,'x')",         "Null"},
        {"InStr('x',Null)",         "Null"},
        {"InStr('AÇÃO','ção')",     "2"},
        {"InStr('acao','ç')",       "0"},
        {"InStr(1,'Cheque','c',0)", "0"},
        {"InStr(1,'Cheque','C',0)", "1"},
        {"InStr(1,'Cheque','c',1)", "1"},
        {"InStr(1,'Cheque','c',2)", "1"},
        {"InStr(1,'éa','a',0)",     "2"},
        {"InStr('a@b.c','@')>0",    "True"},
        {"StrComp('a','b')",        "-1"},
        {"StrComp('b','a')",        "1"},
        {"StrComp('a','A')",        "0"},
        {"StrComp('a','A',1)",      "0"},
        {"StrComp('a','A',2)",      "0"},
        {"StrComp('a','A',0)",      "1"},
        {"StrComp('A','a',0)",      "-1"},
        {"StrComp('ação','acao')",  "1"},
        {"StrComp('','a')",         "-1"},
        {"StrComp(Null,'a')",       "Null"},
        {"StrComp('a',Null,0)",     "Null"}
    };
    // clang-format on
    expectAnswers(kCases);
    expectErrors({"InStr(0,'a','a')", "InStr(Null,'a','a')", "InStr(1,'a','a',3)",
                  "StrComp('a','b',9)", "StrComp('a','b',Null)", "InStr('x','a','a')"});
}

TEST(Functions, FindNumbersInTexts) {
    constexpr Answer kCases[] = {
        {"Val('12')",                 "12"     },
        {"Val(' 1615 198th Street')", "1615198"},
        {"Val('2 457')",              "2457"   },
        {"Val('24 and 57')",          "24"     },
        {"Val('12.5x')",              "12.5"   },
        {"Val('12,5')",               "12"     },
        {"Val('-3')",                 "-3"     },
        {"Val('+3')",                 "3"      },
        {"Val('.5')",                 "0.5"    },
        {"Val('1e3')",                "1000"   },
        {"Val('1E-1')",               "0.1"    },
        {"Val('1d2')",                "100"    },
        {"Val('1e')",                 "1"      },
        {"Val('')",                   "0"      },
        {"Val('abc')",                "0"      },
        {"Val('-')",                  "0"      },
        {"Val('&HFF')",               "255"    },
        {"Val('&hffff')",             "-1"     },
        {"Val('&H10000')",            "65536"  },
        {"Val('&O17')",               "15"     },
        {"Val('&H')",                 "0"      },
        {"Val(7)",                    "7"      },
        {"IsNumeric(1)",              "True"   },
        {"IsNumeric(True)",           "True"   },
        {"IsNumeric('12')",           "True"   },
        {"IsNumeric(' 12 ')",         "True"   },
        {"IsNumeric('12,5')",         "True"   },
        {"IsNumeric('12.5')",         "True"   },
        {"IsNumeric('1.234,50')",     "True"   },
        {"IsNumeric('-12')",          "True"   },
        {"IsNumeric('12-')",          "True"   },
        {"IsNumeric('(12)')",         "True"   },
        {"IsNumeric('R$ 12,50')",     "True"   },
        {"IsNumeric('-R$ 12')",       "True"   },
        {"IsNumeric('1e3')",          "True"   },
        {"IsNumeric('&HFF')",         "True"   },
        {"IsNumeric('')",             "False"  },
        {"IsNumeric('.')",            "False"  },
        {"IsNumeric('12x')",          "False"  },
        {"IsNumeric('1,2,3')",        "False"  },
        {"IsNumeric('1,2.3')",        "False"  },
        {"IsNumeric('--1')",          "False"  },
        {"IsNumeric('1e')",           "False"  },
        {"IsNumeric('1 2')",          "False"  },
        {"IsNumeric('&HFG')",         "False"  },
        {"IsNumeric(#1/1/2026#)",     "False"  },
        {"IsNumeric(Null)",           "False"  }
    };
    expectAnswers(kCases);
    expectErrors({"Val(Null)", "Val('1e999')"});
}

TEST(Functions, ChooseValues) {
    constexpr Answer kCases[] = {
        {"IIf(1=1,'s','n')",                           "'s'"  },
        {"IIf(1=2,'s','n')",                           "'n'"  },
        {"IIf(Null,'s','n')",                          "'n'"  },
        {"IIf(5,'s','n')",                             "'s'"  },
        {"IIf(True,Null,1) Is Null",                   "True" },
        {"IIf(1=2,1/0,7)",                             "7"    },
        {"IIf(1=1,7,1/0)",                             "7"    },
        {"IIf(1=1 And 2=2,'s','n') & 'im'",            "'sim'"},
        {"IIf(False,1,IIf(False,2,IIf(True,3,4)))+10", "13"   },
        {"IIf(IIf(True,False,True),1,2)",              "2"    },
        {"iif(True;1;2)",                              "1"    },
        {"-IIf(True,1,2)",                             "-1"   },
        {"IIf(True,1,2) In (1,5)",                     "True" },
        {"IIf(a Is Null,0,a)",                         "0"    },
        {"Nz(a,5)",                                    "5"    },
        {"Nz(a)",                                      "''"   },
        {"Nz(3,5)",                                    "3"    },
        {"Nz('',5)",                                   "''"   },
        {"Nz(a,Null)",                                 "Null" },
        {"IsNull(a)",                                  "True" },
        {"IsNull(1)",                                  "False"},
        {"Not IsNull(1)",                              "True" }
    };
    expectAnswers(kCases);
    expectErrors({"IIf('x',1,2)", "IIf(True,1/0,2)"});
}

TEST(Functions, ReckonWithDates) {
    constexpr Answer kCases[] = {
        {"Year(#2/29/2024 23:59:59#)",                            "2024"                 },
        {"Month(#2/29/2024#)",                                    "2"                    },
        {"Day(#2/29/2024#)",                                      "29"                   },
        {"Day(#12/29/1899 18:00:00#)",                            "29"                   },
        {"Year(1)",                                               "1899"                 },
        {"Year(Null)",                                            "Null"                 },
        {"Month('2024-03-05')",                                   "3"                    },
        {"Month('31/12/2024')",                                   "12"                   },
        {"Month('12/31/2024')",                                   "12"                   },
        {"Month('5/5/2024')",                                     "5"                    },
        {"DateAdd('m',1,#1/31/2024#)",                            "#29/02/2024#"         },
        {"DateAdd('m',1,#1/31/2023#)",                            "#28/02/2023#"         },
        {"DateAdd('m',-1,#3/31/2024#)",                           "#29/02/2024#"         },
        {"DateAdd('m',13,#12/31/2023#)",                          "#31/01/2025#"         },
        {"DateAdd('m',-12,#1/15/2024#)",                          "#15/01/2023#"         },
        {"DateAdd('yyyy',1,#2/29/2024#)",                         "#28/02/2025#"         },
        {"DateAdd('q',1,#11/30/2023#)",                           "#29/02/2024#"         },
        {"DateAdd('d',30,#1/31/2024 8:00#)",                      "#01/03/2024 08:00:00#"},
        {"DateAdd('y',1,#12/31/2024#)",                           "#01/01/2025#"         },
        {"DateAdd('w',1,#12/31/2024#)",                           "#01/01/2025#"         },
        {"DateAdd('ww',-1,#1/1/2024#)",                           "#25/12/2023#"         },
        {"DateAdd('h',25,#1/1/2024#)",                            "#02/01/2024 01:00:00#"},
        {"DateAdd('n',-1,#1/1/2024#)",                            "#31/12/2023 23:59:00#"},
        {"DateAdd('s',86400,#1/1/2024 0:00:01#)",                 "#02/01/2024 00:00:01#"},
        {"DateAdd('h',-6,#12/30/1899#)",                          "#29/12/1899 18:00:00#"},
        {"DateAdd('d',1.6,#1/1/2024#)",                           "#03/01/2024#"         },
        {"DateAdd('D',1,#1/1/2024#)",                             "#02/01/2024#"         },
        {"DateAdd('d',1,Null)",                                   "Null"                 },
        {"DateDiff('yyyy',#12/31/2023#,#1/1/2024#)",              "1"                    },
        {"DateDiff('yyyy',#1/1/2024#,#12/31/2024#)",              "0"                    },
        {"DateDiff('q',#3/31/2024#,#4/1/2024#)",                  "1"                    },
        {"DateDiff('m',#1/31/2024#,#2/1/2024#)",                  "1"                    },
        {"DateDiff('m',#2/1/2024#,#1/31/2024#)",                  "-1"                   },
        {"DateDiff('d',#1/1/2024 23:59:00#,#1/2/2024 0:01:00#)",  "1"                    },
        {"DateDiff('y',#1/1/2024#,#3/1/2024#)",                   "60"                   },
        {"DateDiff('w',#1/1/2024#,#1/14/2024#)",                  "1"                    },
        {"DateDiff('w',#1/1/2024#,#1/15/2024#)",                  "2"                    },
        {"DateDiff('w',#1/15/2024#,#1/2/2024#)",                  "-1"                   },
        {"DateDiff('ww',#1/6/2024#,#1/7/2024#)",                  "1"                    },
        {"DateDiff('ww',#1/7/2024#,#1/13/2024#)",                 "0"                    },
        {"DateDiff('ww',#1/7/2024#,#1/8/2024#,2)",                "1"                    },
        {"DateDiff('ww',#1/7/2024#,#1/8/2024#,1,2)",              "0"                    },
        {"DateDiff('ww',#12/23/1899#,#12/31/1899#)",              "2"                    },
        {"DateDiff('h',#1/1/2024 10:59:00#,#1/1/2024 11:01:00#)", "1"                    },
        {"DateDiff('n',#1/1/2024 10:00:59#,#1/1/2024 10:01:00#)", "1"                    },
        {"DateDiff('s',#1/1/2024#,#1/2/2024#)",                   "86400"                },
        {"DateDiff('d',Null,#1/1/2024#)",                         "Null"                 },
        {"DateDiff('d',Date(),DateAdd('d',30,Date()))",           "30"                   },
        {"Year(Date())>=2024",                                    "True"                 },
        {"Year(Now())=Year(Date()) Or Time()<1",                  "True"                 }
    };
    expectAnswers(kCases);
    expectErrors({"DateAdd('x',1,#1/1/2024#)", "DateAdd(Null,1,#1/1/2024#)",
                  "DateAdd('d',Null,#1/1/2024#)", "DateAdd('d',1,'x')",
                  "DateAdd('yyyy',9999,#1/1/2024#)", "DateAdd('d',1,#12/31/9999#)",
                  "DateAdd('m',-24000,#1/1/2024#)", "DateDiff('x',#1/1/2024#,#1/1/2024#)",
                  "DateDiff('ww',#1/1/2024#,#1/1/2024#,8)", "Year('x')", "Year(1e300)",
                  "Month('5/6/2024')"});
}

TEST(Functions, FormatNumbers) {
    constexpr Answer kCases[] = {
        {"Format(1234.5,'0.00')",                      "'1234,50'"                        },
        {"Format(1234567.891,'#,##0.00')",             "'1.234.567,89'"                   },
        {"Format(999,'#,##0')",                        "'999'"                            },
        {"Format(1000,'#,##0')",                       "'1.000'"                          },
        {"Format(0,'#,##0.00')",                       "'0,00'"                           },
        {"Format(0,'#')",                              "''"                               },
        {"Format(7,'000')",                            "'007'"                            },
        {"Format(12345,'000')",                        "'12345'"                          },
        {"Format(-7,'000')",                           "'-007'"                           },
        {"Format(0.5,'.00')",                          "',50'"                            },
        {"Format(5,'0.##')",                           "'5,'"                             },
        {"Format(5.126,'0.##')",                       "'5,13'"                           },
        {"Format(0.125,'0.00')",                       "'0,13'"                           },
        {"Format(-0.125,'0.00')",                      "'-0,13'"                          },
        {"Format(2.675,'0.00')",                       "'2,68'"                           },
        {"Format(9.999,'0.00')",                       "'10,00'"                          },
        {"Format(-0.001,'0.00')",                      "'0,00'"                           },
        {"Format(0.001,'0.00')",                       "'0,00'"                           },
        {"Format(0.256,'0%')",                         "'26%'"                            },
        {"Format(0.256,'0.0%')",                       "'25,6%'"                          },
        {"Format(1234567,'#,##0,')",                   "'1.235'"                          },
        {"Format(1234567,'0,,.0')",                    "'1,2'"                            },
        {"Format(12345678901,'000\\.000\\.000\\-00')", "'123.456.789-01'"                 },
        {"Format(1234,'00-00')",                       "'12-34'"                          },
        {"Format(5,'\"R$ \"0.00')",                    "'R$ 5,00'"                        },
        {"Format(5,'(0)')",                            "'(5)'"                            },
        {"Format(-5,'0.00;(0.00)')",                   "'(5,00)'"                         },
        {"Format(5,'0.00;(0.00)')",                    "'5,00'"                           },
        {"Format(0,'0;(0);\"zero\"')",                 "'zero'"                           },
        {"Format(0,'0;(0)')",                          "'0'"                              },
        {"Format(-5,'0;;\"zero\"')",                   "'-5'"                             },
        {"Format(Null,'0;(0);\"zero\";\"nada\"')",     "'nada'"                           },
        {"Format(Null,'0.00')",                        "''"                               },
        {"Format(Null)",                               "''"                               },
        {"Format(12345,'0.00E+00')",                   "'1,23E+04'"                       },
        {"Format(0.00012,'0.0E+0')",                   "'1,2E-4'"                         },
        {"Format(99999,'0.0e-00')",                    "'1,0e05'"                         },
        {"Format(0,'0.00E+00')",                       "'0,00E+00'"                       },
        {"Format(1e30,'0')",                           "'1000000000000000000000000000000'"},
        {"Format('12','000')",                         "'012'"                            },
        {"Format('abc','000')",                        "'abc'"                            },
        {"Format(1234.5,'Currency')",                  "'R$ 1.234,50'"                    },
        {"Format(-1234.5,'Currency')",                 "'-R$ 1.234,50'"                   },
        {"Format(1234.5,'fixed')",                     "'1234,50'"                        },
        {"Format(1234.5,'STANDARD')",                  "'1.234,50'"                       },
        {"Format(0.5,'Percent')",                      "'50,00%'"                         },
        {"Format(1234.5,'Scientific')",                "'1,23E+03'"                       },
        {"Format(1234.5,'General Number')",            "'1234,5'"                         },
        {"Format(True,'Yes/No')",                      "'Sim'"                            },
        {"Format(0,'Yes/No')",                         "'Não'"                           },
        {"Format(1,'True/False')",                     "'Verdadeiro'"                     },
        {"Format(False,'On/Off')",                     "'Desativado'"                     },
        {"Format(1234.5)",                             "'1234,5'"                         },
        {"Format(True)",                               "'Verdadeiro'"                     },
        {"Format$(5,'00')",                            "'05'"                             }
    };
    expectAnswers(kCases);
    const Row amounts{Currency{9'223'372'036'854'775'807}, Currency{-50'000}};
    constexpr Answer kAmounts[] = {
        {"Format(a,'#,##0.0000')", "'922.337.203.685.477,5807'"},
        {"Format(b,'0.00')",       "'-5,00'"                   },
        {"Format(a-a,'0.00')",     "'0,00'"                    }
    };
    expectAnswers(kAmounts, amounts);
    expectErrors({"Format(1,'0',8)", "Format(1,'0',1,4)"});
}

TEST(Functions, FormatDatesAndTexts) {
    // clang-format off
    constexpr Answer kCases[] = {
        {"Format(#3/5/2024 8:07:09#,'dd/mm/yyyy')",   "'05/03/2024'"},
        {"Format(#3/5/2024 8:07:09#,'d/m/yy')",       "'5/3/24'"},
        {"Format(#3/5/2024#,'dddd, d \"de\" mmmm')",  "'terça-feira, 5 de março'"},
        {"Format(#3/5/2024#,'ddd mmm')",              "'ter mar'"},
        {"Format(#3/5/2024 8:07:09#,'hh:nn:ss')",     "'08:07:09'"},
        {"Format(#3/5/2024 8:07:09#,'h:mm')",         "'8:07'"},
        {"Format(#3/5/2024 20:07:09#,'hh:nn AM/PM')", "'08:07 PM'"},
        {"Format(#3/5/2024 0:07:09#,'h a/p')",        "'12 a'"},
        {"Format(#3/5/2024 8:07:09#,'mm/yyyy')",      "'03/2024'"},
        {"Format(#3/5/2024#,'q y w ww')",             "'1 65 3 10'"},
        {"Format(#3/5/2024#,'w',2)",                  "'2'"},
        {"Format(#1/1/2023#,'ww')",                   "'1'"},
        {"Format(#1/1/2023#,'ww',2,2)",               "'52'"},
        {"Format(#12/31/2023#,'ww')",                 "'53'"},
        {"Format(#1/7/2023#,'ww',1,3)",               "'1'"},
        {"Format(#3/5/2024#,'yyyymmdd')",             "'20240305'"},
        {"Format(#3/5/2024#,'Short Date')",           "'05/03/2024'"},
        {"Format(#3/5/2024#,'long date')",            "'terça-feira, 5 de março de 2024'"},
        {"Format(#3/5/2024#,'Medium Date')",          "'05-mar-24'"},
        {"Format(#3/5/2024 8:07:09#,'General Date')", "'05/03/2024 08:07:09'"},
        {"Format(#8:07:09#,'General Date')",          "'08:07:09'"},
        {"Format(#3/5/2024#,'c')",                    "'05/03/2024'"},
        {"Format(#3/5/2024 8:07:09#,'Long Time')",    "'08:07:09'"},
        {"Format(#3/5/2024 18:07:09#,'Medium Time')", "'06:07 PM'"},
        {"Format(#3/5/2024 18:07:09#,'Short Time')",  "'18:07'"},
        {"Format(#3/5/2024#)",                        "'05/03/2024'"},
        {"Format(45356,'dd/mm/yyyy')",                "'05/03/2024'"},
        {"Format(#3/5/2024#,'0')",                    "'45356'"},
        {"Format('2024-03-05','dd/mm/yyyy')",         "'05/03/2024'"},
        {"Format('abc','dd/mm/yyyy')",                "'abc'"},
        {"Format(#3/5/2024#,'\\d\\m dd')",            "'dm 05'"},
        {"'em ' & #3/5/2024#",                        "'em 05/03/2024'"},
        {"Format('01310100','@@@@@-@@@')",            "'01310-100'"},
        {"Format('abc','>')",                         "'ABC'"},
        {"Format('AÇÃO','<')",                        "'ação'"},
        {"Format('ab','@@@@')",                       "'  ab'"},
        {"Format('ab','!@@@@')",                      "'ab  '"},
        {"Format('ab','&&&&')",                       "'ab'"},
        {"Format('12345','@-@@')",                    "'123-45'"},
        {"Format('12345','!@-@@')",                   "'1-2345'"},
        {"Format('','@;\"vazio\"')",                  "'vazio'"},
        {"Format('abc','@;\"vazio\"')",               "'abc'"},
        {"Format('abc','')",                          "'abc'"},
        {"Format(Null,'>')",                          "''"}
    };
    // clang-format on
    expectAnswers(kCases);
}

TEST(Functions, TakeABoundedTimeAndMemory) {
    const auto repeated = [](const std::string& part, std::size_t count) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += part;
        return text;
    };
    const auto fails = [](const std::string& text, const Row& row) {
        try {
            (void)answerOf(text, row);
            return false;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::outOfRange);
            return true;
        }
    };
    const Row large{std::string(1'000'000, 'a'), std::string(500'000, 'a') + "b"};
    EXPECT_FALSE(fails("Len(a)=1000000 And UCase(Left(a,3))='AAA'", large));
    EXPECT_TRUE(fails(repeated("a & ", 15'000) + "a", large)) << "fifteen thousand million letters";
    EXPECT_TRUE(fails("InStr(a,b)", large)) << "half a billion comparisons of as many letters";
    EXPECT_TRUE(fails(repeated("UCase(a) & ", 100) + "''", large));
    EXPECT_TRUE(fails("0 In (" + repeated("a,", 30'000) + "0)", large));
    EXPECT_TRUE(fails("Format(1,'" + std::string(2, '0') + "' & a & a & b)", large));
    EXPECT_THROW((void)answerOf(repeated("IIf(1,", 300) + "1" + repeated(",2)", 300)), Error);
    EXPECT_EQ(inWords(answerOf(repeated("IIf(1,", 150) + "5" + repeated(",2)", 150))), "5");
    EXPECT_EQ(inWords(answerOf(repeated("UCase(", 150) + "'a'" + repeated(")", 150))), "'A'");
    EXPECT_EQ(inWords(answerOf(repeated("IIf(0,1,", 150) + "5" + repeated(")", 150))), "5");
}

} // namespace
