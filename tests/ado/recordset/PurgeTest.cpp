#include "ado/Shop.h"
#include "support/Versions.h"

#include <memory>
#include <random>

namespace {

using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

/// Deleting row after row with a Requery behind each, as the purge does.
class PurgeTest : public Shop {
protected:
    void addCheques(int count) {
        for (int i = 0; i < count; ++i)
            add("cheques",
                {
                    {"cliente",   std::int64_t{i % 3}},
                    { "bompara", day(2024,                 1 + i % 12, 15)}
            });
    }
    static std::int64_t number(Recordset& rows) { return rows["lancamento"].integer(); }
};
INSTANTIATE_TEST_SUITE_P(, PurgeTest, everywhere(), keptName);

/// Deletes, reads again, moves on; false when there is nothing left to delete.
bool step(Recordset& rows) {
    rows.Delete();
    rows.Requery();
    if (!rows.EOF())
        rows.MoveNext();
    return !rows.EOF();
}

TEST_P(PurgeTest, EachStepPassesOverTheFirstRowThatIsLeft) {
    addCheques(9);
    for (const char* source : {"select * from cheques where cliente<9", "cheques"}) {
        Recordset rows;
        rows.Open(source, connection);
        Strings expected = column(rows, "lancamento");
        const Strings second{expected[1]};
        expected.erase(expected.begin() + 1);
        Strings visited;
        rows.MoveFirst();
        do {
            visited.push_back(std::to_string(number(rows)));
        } while (step(rows));
        EXPECT_EQ(visited, expected);
        EXPECT_EQ(column(rows, "lancamento"), second);
        addCheques(8); // for the next source
    }
}

TEST_P(PurgeTest, InAnOrderByAnotherFieldItIsTheSecondInThatOrderThatStays) {
    addCheques(24);
    Recordset rows;
    rows.Open("select * from cheques where cliente=1 order by bompara desc, numero", connection);
    const Strings all = column(rows, "lancamento");
    ASSERT_EQ(all.size(), 8U);
    rows.MoveFirst();
    while (step(rows)) {
    }
    EXPECT_EQ(column(rows, "lancamento"), Strings{all[1]});
    Recordset anew;
    anew.Open("select * from cheques where cliente=1", connection);
    EXPECT_EQ(column(anew, "lancamento"), Strings{all[1]});
    EXPECT_EQ(rowsIn("cheques"), 17);
}

/// At each step the set is what asking anew gives, whatever others do between.
TEST_P(PurgeTest, ChangesByOthersBetweenTheStepsAreSeen) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    const std::string source = "select * from cheques where cliente<2 and bompara is not null";
    addCheques(300);
    std::mt19937 random(11);
    Recordset editor;
    editor.Open("cheques", connection);
    Recordset other;
    other.Open("select * from cheques where cliente=1 order by bompara", connection);
    Recordset rows;
    rows.Open(source, connection);
    for (bool more = true; more;) {
        switch (random() % 8) {
        case 0: // one that belongs, perhaps where one was deleted
            editor.AddNew();
            editor["cliente"] = static_cast<int>(random() % 3);
            editor["bompara"] = day(2024, 5, 5);
            editor.Update();
            break;
        case 1: // one goes out or comes in
            editor.MoveLast();
            editor["cliente"] = static_cast<int>(random() % 3);
            editor.Update();
            break;
        case 2: // one is deleted by another set; never the one that the purge stands on
            other.Requery();
            if (other.RecordCount() > 0) {
                other.MoveLast();
                if (number(other) != number(rows))
                    other.Delete();
            }
            break;
        case 3: // past the connection
            if (auto scan = table("cheques").scan();
                random() % 4 == 0 && scan.last() &&
                table("cheques").read(scan.id()).value()[0] != jet::Value(number(rows)))
                table("cheques").erase(scan.id());
            break;
        case 4: // undone
            connection.BeginTrans();
            rows.Delete();
            editor.AddNew();
            editor["cliente"] = 1;
            editor.Update();
            connection.RollbackTrans();
            rows.Requery();
            break;
        default:
            break;
        }
        more = step(rows);
        const std::int64_t at = more ? number(rows) : 0;
        Recordset anew;
        anew.Open(source, connection);
        const Strings expected = column(anew, "lancamento");
        ASSERT_EQ(rows.RecordCount(), static_cast<std::int64_t>(expected.size()));
        if (more) {
            ASSERT_EQ(std::to_string(at), expected[1]) << "it stands on the second";
        }
        if (random() % 16 == 0 && more) {
            ASSERT_EQ(column(rows, "lancamento"), expected);
            rows.MoveFirst();
            rows.MoveNext();
        }
    }
    EXPECT_LE(rows.RecordCount(), 1);
}

TEST_P(PurgeTest, AnotherSetTakesManyDeletionsInAtOnceAndKeepsItsPlace) {
    addCheques(60);
    Recordset before;
    Recordset on;
    Recordset atEnd;
    for (Recordset* rows : {&before, &on, &atEnd}) {
        rows->Open("cheques", connection);
        rows->setSort("bompara desc");
    }
    const Strings all = column(atEnd, "lancamento");
    before.Find("lancamento=13"); // of client 0: stays
    on.Find("lancamento=14");     // of client 1: goes

    Recordset purged;
    purged.Open("select * from cheques where cliente=1", connection);
    for (; !purged.EOF(); purged.MoveNext())
        purged.Delete();

    EXPECT_EQ(before.RecordCount(), 40);
    EXPECT_EQ(number(before), 13);
    EXPECT_EQ(errorOf([&] { (void)on["numero"].value(); }), Errc::noCurrentRow);
    EXPECT_TRUE(atEnd.EOF());
    Strings left;
    std::string afterGone;
    bool passed = false;
    for (const std::string& row : all) {
        passed = passed || row == "14";
        if (std::stoi(row) % 3 == 2)
            continue;
        left.push_back(row);
        if (passed && afterGone.empty())
            afterGone = row;
    }
    on.MoveNext();
    EXPECT_EQ(std::to_string(number(on)), afterGone);
    atEnd.MovePrevious();
    EXPECT_EQ(std::to_string(number(atEnd)), left.back());
    EXPECT_EQ(column(before, "lancamento"), left);
}

TEST_P(PurgeTest, AJoinTakesManyDeletionsInAtOnce) {
    if (onServer())
        GTEST_SKIP() << kJoinsStay;
    addSomeOfEach();
    Recordset joined;
    joined.Open("select * from cheques inner join bancos on cheques.banco=bancos.codigo "
                "order by lancamento",
                connection);
    const std::int64_t first = number(joined);
    Recordset purged;
    purged.Open("select * from cheques where lancamento<3", connection);
    for (; !purged.EOF(); purged.MoveNext())
        purged.Delete();
    ASSERT_EQ(first, 1);
    EXPECT_EQ(errorOf([&] { (void)joined["numero"].value(); }), Errc::noCurrentRow);
    joined.Requery();
    EXPECT_EQ(number(joined), 3);

    // Those that it doesn't stand on are met where they were.
    EXPECT_EQ(joined.RecordCount(), 4);
    Recordset two;
    two.Open("select * from cheques where lancamento=4 or lancamento=5", connection);
    for (; !two.EOF(); two.MoveNext())
        two.Delete();
    EXPECT_EQ(number(joined), 3);
    for (int i = 0; i < 2; ++i) {
        joined.MoveNext();
        EXPECT_EQ(errorOf([&] { (void)number(joined); }), Errc::conflict);
    }
    joined.MoveNext();
    EXPECT_EQ(number(joined), 6);
}

TEST_P(PurgeTest, ANewRowInThePlaceOfADeletedOneIsNotTakenForIt) {
    if (onServer())
        GTEST_SKIP() << kNewsAtOnce;
    addCheques(5);
    Recordset list;
    list.Open("select * from cheques where cliente<9 order by bompara", connection);
    Recordset other;
    other.Open("select * from cheques where lancamento=5", connection);
    other.Delete();
    list.AddNew(); // where the deleted one was
    list["cliente"] = 1;
    list.Update();
    EXPECT_EQ(number(list), 6);
    EXPECT_EQ(list.RecordCount(), 5);
    EXPECT_EQ(column(list, "lancamento"), (Strings{"1", "2", "3", "4", "6"}));
    // On a page of its own.
    for (list.MoveFirst(); !list.EOF(); list.MoveNext())
        if (number(list) != 3)
            list.Delete();
    other.Close();
    other.Open("cheques", connection);
    list.Requery();
    other.Delete();
    list.AddNew();
    list["cliente"] = 1;
    list.Update();
    EXPECT_EQ(column(list, "lancamento"), Strings{"7"});
}

TEST_P(PurgeTest, AConditionOnOtherRowsIsAskedAnewAfterEachDeletion) {
    for (const int client : {1, 2, 3, 4})
        add("cheques", {
                           {"cliente", std::int64_t{client}}
        });
    Recordset rows;
    rows.Open("select * from cheques where cliente > (select min(cliente) from cheques)",
              connection);
    EXPECT_EQ(column(rows, "cliente"), (Strings{"2", "3", "4"}));
    Recordset smallest;
    smallest.Open("select * from cheques where cliente=1", connection);
    smallest.Delete();
    rows.Requery();
    EXPECT_EQ(column(rows, "cliente"), (Strings{"3", "4"}));
}

TEST_P(PurgeTest, AConditionOnAnotherTableIsAskedAnew) {
    addSomeOfEach();
    Recordset rows;
    rows.Open("select * from bancos where codigo in (select banco from cheques)", connection);
    const auto before = rows.RecordCount();
    Recordset cheques;
    cheques.Open("select * from cheques where banco=2", connection);
    for (; !cheques.EOF(); cheques.MoveNext())
        cheques.Delete();
    rows.Requery();
    EXPECT_EQ(rows.RecordCount(), before - 1);
}

} // namespace
