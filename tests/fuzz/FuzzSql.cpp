// Gives any text to a connection as a statement, a filter, a search and an order, as the windows do
// with what was typed between quotes. The answer is rows or an Error about the text; the file stays
// as it was.
//
// An input is a byte that says what the text is, then the text.
#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "fuzz/Fuzz.h"
#include "jet/Database.h"
#include "jet/Error.h"

#include <memory>

namespace {

using jet::ColumnType;
using jet::Errc;

/// One row a table: a join of many tables ends.
class Shop {
public:
    Shop() {
        const std::filesystem::path path = folder_ / "automacao.mdb";
        jet::Database::create(path, jet::Version::jet4);
        {
            jet::Database database(path);
            database
                .createTable({
                    "bancos",
                    {{"codigo", ColumnType::longInteger, 0, true}, {"nome", ColumnType::text, 50}},
                    {{"PrimaryKey", {{"codigo"}}, true}                                           }
            })
                .insert(jet::Row{jet::Value(), std::string("Banco do Brás")});
            database
                .createTable({
                    "cheques",
                    {{"lancamento", ColumnType::longInteger, 0, true},
                      {"banco", ColumnType::longInteger},
                      {"numero", ColumnType::text, 10},
                      {"bompara", ColumnType::date},
                      {"valor", ColumnType::currency},
                      {"depositar", ColumnType::boolean},
                      {"observacao", ColumnType::memo}},
                    {{"PrimaryKey", {{"lancamento"}}, true},                    {"bompara", {{"bompara"}}}   }
            })
                .insert(jet::Row{jet::Value(), std::int32_t{1}, std::string("000123"),
                                 jet::Date::of({2024, 2, 29}), jet::Currency{1'234'500}, true,
                                 std::string("obs")});
        }
        connection_.Open("Provider=Microsoft.Jet.OLEDB.3.51;Data Source=" + path.string());
        open_.Open("cheques", connection_);
    }

    void statement(const std::string& text) {
        ado::Recordset rows;
        rows.Open(text, connection_);
        for (int i = 0; i < 20 && !rows.EOF(); ++i)
            rows.MoveNext();
    }
    void filter(const std::string& text) {
        open_.setFilter(text);
        open_.setFilter("");
    }
    void find(const std::string& text) {
        if (!open_.BOF())
            open_.MoveFirst();
        open_.Find(text);
    }
    void sort(const std::string& text) {
        open_.setSort(text);
        open_.setSort("");
    }
    [[nodiscard]] std::int64_t rows() {
        open_.setFilter("");
        open_.Requery();
        return open_.RecordCount();
    }

private:
    fuzz::Folder folder_;
    ado::Connection connection_;
    ado::Recordset open_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Shop shop;
    fuzz::Input input(data, size);
    const std::uint8_t kind = input.byte();
    const std::string text(input.rest());
    try {
        switch (kind % 4) {
        case 0:
            shop.statement(text);
            break;
        case 1:
            shop.filter(text);
            break;
        case 2:
            shop.find(text);
            break;
        default:
            shop.sort(text);
        }
    } catch (const jet::Error& error) {
        fuzz::require(*error.what() != '\0');
        fuzz::require(error.code() == Errc::syntax || error.code() == Errc::notFound ||
                      error.code() == Errc::full);
    }
    fuzz::require(shop.rows() == 1);
    return 0;
}
