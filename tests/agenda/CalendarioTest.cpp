#include "agenda/Calendario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string ics(const std::map<QDate, Vencimentos::SomaDoDia>& dias, const char* arquivo) {
    return Calendario::ics(dias, arquivo,
                           QDateTime({2026, 11, 22}, {15, 30, 1}, Qt::OffsetFromUTC, -3 * 3600))
        .toStdString();
}

Vencimentos::SomaDoDia soma(qint64 cheques, std::int64_t tenThousandths) {
    return {
        .todos = {.cheques = cheques,      .valor = {tenThousandths}},
          .marcados = {                       }
    };
}

TEST(Calendar, HasAnEventOfAWholeDayForEachDay) {
    const std::string texto = ics(
        {
            {{2026, 11, 23}, soma(2, 12'345'600)},
            {{2026, 12, 31}, soma(1, 100)       }
    },
        "/loja/automacao.mdb");
    EXPECT_THAT(texto, StartsWith("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:"));
    EXPECT_THAT(texto, HasSubstr("DTSTAMP:20261122T183001Z\r\n"
                                 "DTSTART;VALUE=DATE:20261123\r\n"
                                 "DTEND;VALUE=DATE:20261124\r\n"
                                 "SUMMARY:Vencem 2 cheques\\, R$ 1.234\\,56\r\n"
                                 "DESCRIPTION:Base de dados: /loja/automacao.mdb\r\n"
                                 "TRANSP:TRANSPARENT\r\n"
                                 "END:VEVENT\r\n"));
    EXPECT_THAT(texto, HasSubstr("DTSTART;VALUE=DATE:20261231\r\nDTEND;VALUE=DATE:20270101\r\n"
                                 "SUMMARY:Vencem 1 cheque\\, R$ 0\\,01\r\n"));
    EXPECT_THAT(texto, EndsWith("END:VEVENT\r\nEND:VCALENDAR\r\n"));
}

TEST(Calendar, TellsTheBankingDayOfADayThatIsNone) {
    const std::string texto = ics(
        {
            {{2026, 11, 21}, soma(1, 10'000)}
    },
        "a");
    EXPECT_THAT(texto,
                HasSubstr("DESCRIPTION:Dia útil do banco: seg 23/11\\nBase de dados: a\r\n"));
}

// A calendar takes the events of a later file for the same ones.
TEST(Calendar, NamesADayOfAFileAlwaysTheSame) {
    const auto uid = [](const QDate& dia, const char* arquivo, std::int64_t valor) {
        const std::string texto = ics(
            {
                {dia, soma(1, valor)}
        },
            arquivo);
        const auto at = texto.find("UID:");
        return texto.substr(at, texto.find("\r\n", at) - at);
    };
    const std::string este = uid({2026, 11, 23}, "/loja/automacao.mdb", 1);
    EXPECT_THAT(este, StartsWith("UID:20261123-"));
    EXPECT_EQ(uid({2026, 11, 23}, "/loja/automacao.mdb", 2), este);
    EXPECT_NE(uid({2026, 11, 24}, "/loja/automacao.mdb", 1), este);
    EXPECT_NE(uid({2026, 11, 23}, "/outra/automacao.mdb", 1), este);
}

// By octets: an accented letter has two.
TEST(Calendar, HasNoLineLongerThanCalendarsTake) {
    const QString arquivo = "/lojas/" + QString("São João; matriz, ").repeated(20);
    std::map<QDate, Vencimentos::SomaDoDia> dias;
    dias[{2026, 11, 21}] = soma(1, 1);
    const std::string texto = ics(dias, arquivo.toUtf8());
    std::size_t folded = 0;
    for (std::size_t at = 0; at < texto.size();) {
        const auto end = texto.find("\r\n", at);
        ASSERT_NE(end, std::string::npos);
        EXPECT_LE(end - at, 75U);
        EXPECT_EQ(texto.substr(at, end - at).find_first_of("\r\n"), std::string::npos);
        folded += texto[at] == ' ' ? 1 : 0;
        EXPECT_NE(static_cast<unsigned char>(texto[at]) & 0xC0U, 0x80U); // no half of a letter
        at = end + 2;
    }
    EXPECT_GT(folded, 4U);
    QString aberto = QString::fromStdString(texto).remove("\r\n ");
    EXPECT_TRUE(aberto.contains("\\nBase de dados: /lojas/" +
                                QString("São João\\; matriz\\, ").repeated(20) + "\r\n"));
}

TEST(Calendar, IsOneWithoutEventsIfNothingFallsDue) {
    EXPECT_THAT(ics({}, "a"), EndsWith("PT\r\nEND:VCALENDAR\r\n"));
}

TEST(Calendar, LeavesOutWhatHasNoDueDate) {
    EXPECT_EQ(ics(
                  {
                      {QDate(), {}}
    },
                  "/loja/automacao.mdb"),
              ics({}, "/loja/automacao.mdb"));
}

} // namespace
