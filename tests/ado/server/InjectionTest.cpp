// What a clerk types is a value: the server's log has it among the parameters of the statements
// that any other value makes, and nowhere else.
#include "ado/ConnectionString.h"
#include "ado/Shop.h"
#include "support/Cluster.h"

#include <gmock/gmock.h>

#include <cctype>
#include <fstream>
#include <set>

namespace {

using ado::Recordset;

/// What the server has been asked, and what it refused.
struct Heard {
    std::vector<std::string> statements;
    std::vector<std::string> errors;
};

/// "LOG:  00000: execute <unnamed>: select ..." with a line more for each line break in it.
Heard heardSince(const std::filesystem::path& log, std::streamoff from) {
    std::ifstream in(log, std::ios::binary);
    in.seekg(from);
    Heard heard;
    std::string* last = nullptr;
    const auto startsEntry = [](const std::string& line) {
        return line.size() > 4 && line[4] == '-' && line.find(" [") != std::string::npos;
    };
    for (std::string line; std::getline(in, line);) {
        if (!startsEntry(line)) {
            if (last != nullptr)
                last->append("\n").append(line);
            continue;
        }
        last = nullptr;
        for (const std::string begin : {": statement: ", ": execute "}) {
            const std::size_t at = line.find("LOG:  ");
            const std::size_t said = line.find(begin);
            if (at == std::string::npos || said != at + 11)
                continue;
            std::size_t text = said + begin.size();
            if (begin == ": execute ")
                text = line.find(": ", text) + 2;
            last = &heard.statements.emplace_back(line.substr(text));
        }
        if (const std::size_t at = line.find("ERROR:  "); at != std::string::npos)
            last = &heard.errors.emplace_back(line.substr(at + 8));
        if (line.find("FATAL:  ") != std::string::npos ||
            line.find("PANIC:  ") != std::string::npos)
            heard.errors.push_back(line);
    }
    return heard;
}

/// Numbers stand in statements; which, and how many parameters there are, is nobody's harm.
std::string withoutNumbers(const std::string& statement) {
    std::string made;
    for (const char c : statement)
        if (std::isdigit(static_cast<unsigned char>(c)) == 0)
            made += c;
        else if (made.empty() || made.back() != '0')
            made += '0';
    return made;
}

/// The words of a statement that are not quoted names, its signs, and the names that are called.
std::set<std::string> wordsOf(const std::string& statement) {
    std::set<std::string> words;
    for (std::size_t i = 0; i < statement.size();) {
        const auto c = static_cast<unsigned char>(statement[i]);
        const std::size_t begin = i++;
        if (c == '"') {
            while (i < statement.size() && (statement[i] != '"' || statement[i + 1] == '"'))
                i += statement[i] == '"' ? 2 : 1;
            const std::string name = statement.substr(begin, ++i - begin);
            const std::size_t next = statement.find_first_not_of(' ', i);
            if (next != std::string::npos && statement[next] == '(')
                words.insert(name + "(");
        } else if (std::isalpha(c) != 0 || c == '_' || c >= 0x80) {
            while (i < statement.size() &&
                   (std::isalnum(static_cast<unsigned char>(statement[i])) || statement[i] == '_'))
                ++i;
            words.insert(statement.substr(begin, i - begin));
        } else if (std::string_view("'\\;$-/").find(static_cast<char>(c)) !=
                   std::string_view::npos) {
            const bool twice = i < statement.size() && statement[i] == statement[begin];
            const bool comment = c == '/' && i < statement.size() && statement[i] == '*';
            words.insert(statement.substr(begin, twice || comment ? 2 : 1));
        }
    }
    return words;
}

class Injections : public Shop {
protected:
    Injections() {
        addSomeOfEach();
        const std::string server = ado::serverAddress(connectionString()).value();
        for (const char* const setting :
             {"log_statement = 'all'", "log_error_verbosity = 'verbose'"})
            Cluster::answer(server, "do $$ begin execute format('alter database %I set " +
                                        withQuotesDoubled(setting) +
                                        "', current_database()); end $$");
        before_ = allThereIs();
        clerk.Open(connectionString());
    }
    void TearDown() override {
        clerk.Close();
        Shop::TearDown();
    }

    /// A field of a window, and what the window asks with what stands in it.
    struct Typed {
        const char* where;
        std::function<void(Injections&, const std::string& text)> ask;
    };
    static const std::vector<Typed>& fields();

    void walk(const std::string& statement) {
        Recordset rows;
        rows.Open(statement, clerk);
        for (int i = 0; i < 20 && !rows.EOF(); ++i)
            rows.MoveNext();
    }
    /// As a window does, which shows what is wrong with a text.
    void attempt(const std::function<void()>& work) {
        try {
            work();
        } catch (const jet::Error& error) {
            EXPECT_STRNE(error.what(), "");
            EXPECT_NE(error.code(), jet::Errc::io) << error.what();
            EXPECT_NE(error.code(), jet::Errc::offline) << error.what();
        }
    }
    Heard heard(const std::function<void()>& work) {
        const auto from = static_cast<std::streamoff>(std::filesystem::file_size(log()));
        work();
        return heardSince(log(), from);
    }
    [[nodiscard]] static std::filesystem::path log() {
        return Cluster::instance(shopTables()).log();
    }
    /// Rows, tables, functions, roles, settings.
    [[nodiscard]] std::string allThereIs() {
        std::string all;
        const std::string server = ado::serverAddress(connectionString()).value();
        for (const jet::TableSpec& table : shopTables())
            all += Cluster::answer(server, "select coalesce(md5(string_agg(t::text, '|' order by "
                                           "t::text collate \"C\")), '') from \"" +
                                               table.name + "\" t") +
                   "\n";
        return all + Cluster::answer(server,
                                     "select concat((select count(*) from pg_class), ' ', (select "
                                     "count(*) from pg_proc), ' ', (select string_agg(rolname || "
                                     "rolsuper, ',' order by rolname) from pg_roles), ' ', (select "
                                     "count(*) from pg_db_role_setting), ' ', (select count(*) "
                                     "from pg_auth_members))");
    }

    ado::Connection clerk;
    std::string before_;

private:
    static std::string withQuotesDoubled(const std::string& text) {
        std::string made;
        for (const char c : text)
            made.append(c == '\'' ? 2 : 1, c);
        return made;
    }
};
INSTANTIATE_TEST_SUITE_P(, Injections, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Injections);

const std::vector<Injections::Typed>& Injections::fields() {
    static const std::vector<Typed> all{
        {"the search of a client, letter by letter",
         [](Injections& by, const std::string& text) {
             by.walk("select codigo,nome from cliente_fornecedor where tipo=true and "
                     "mid$(nome,1," +
                     std::to_string(text.size()) + ")='" + text + "'" + "order by NOME");
         }},
        {"a bank, before it is saved",
         [](Injections& by, const std::string& text) {
             Recordset banks;
             banks.Open("bancos", by.clerk);
             banks.setFilter("cod_banco=104 And nome='" + text + "'");
             static_cast<void>(banks.EOF());
         }},
        {"a bank by its name",
         [](Injections& by, const std::string& text) {
             Recordset banks;
             banks.Open("bancos", by.clerk);
             banks.FindFirst("nome='" + text + "'");
         }},
        {"a cheque by its number",
         [](Injections& by, const std::string& text) {
             Recordset cheques;
             cheques.Open("cheques", by.clerk);
             cheques.FindFirst("numero='" + text + "'");
             cheques.Find("numero='" + text + "'");
         }},
        {"a cheque that the shop may have already",
         [](Injections& by, const std::string& text) {
             by.walk("select * from cheques where numero in ('" + text + "','0" + text +
                     "') and banco=1");
         }},
        {"what is deleted by a text",
         [](Injections& by, const std::string& text) {
             by.walk("select * from bancos where nome ='" + text + "'");
         }},
        {"what is deleted by a number",
         [](Injections& by, const std::string& text) {
             by.walk("select * from cheques where lancamento = " + text);
         }},
        {"the list of cheques, by date",
         [](Injections& by, const std::string& text) {
             by.walk("Select * from (cheques inner join cliente_fornecedor on "
                     "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
                     "cheques.banco=bancos.codigo  where bompara between #" +
                     text + "# and #" + text +
                     "# order by cliente_fornecedor.nome,cheques.bompara");
         }},
        {"an operation of the history",
         [](Injections& by, const std::string& text) {
             by.walk("select * from semfundos where data>=#01/01/2004# and empresa='" + text +
                     "' order by lancamento desc");
             by.walk("select count(*) as quantos from semfundos where empresa='" + text + "'");
         }},
        {"an order",
         [](Injections& by, const std::string& text) {
             Recordset cheques;
             cheques.Open("cheques", by.clerk);
             cheques.setSort(text);
             static_cast<void>(cheques.EOF());
         }},
        {"a table",
         [](Injections& by, const std::string& text) {
             Recordset rows;
             rows.Open(text, by.clerk);
         }},
    };
    return all;
}

const char* const kHarmless[] = {"ana",        "000123", "1", "12/31/2004", "nome",
                                 "valor desc", "bancos", "",  "zz",         "João da Silva"};

/// What the dialect is otherwise made of: who breaks out of quotes can write this, which reads.
const char* const kDialect[] = {
    "select distinct nome from bancos union select nome from cliente_fornecedor",
    "select cliente, count(*), sum(valor), min(bompara), max(numero), avg(valor) from cheques "
    "where "
    "not (numero like '%1' or numero not like 'x') and bompara is not null group by cliente having "
    "count(*)>0 order by 1 desc",
    "select iif(tipo,mid$(nome,1,2),left$(nome,3)) & right$(nome,1) from cliente_fornecedor where "
    "nome between 'a' and 'z' and exists (select codigo from bancos) and codigo in (select codigo "
    "from bancos) and true",
    "select -valor + 1 - 2 / 3 * 4 from cheques left join bancos on banco=codigo",
};

const std::vector<std::string>& attacks() {
    static const std::vector<std::string> all = [] {
        using namespace std::string_literals;
        // clang-format off
        std::vector<std::string> list{
            "'", "''", "'''", "\"", "\\", "\\'", "\\\\'", "x\\' or 1=1--", "d'Ávila", "O''Brien",
            "' or '1'='1", "' or 1=1--", "') or ('a'='a", "' or true or '", "' or tipo or nome='",
            "1 or 1=1", "1 or true", "-1 union select nome from bancos", "1;select 1",
            "'; drop table cheques; --", "';delete from cheques where '1'='1", "'; commit; --",
            "x'; update cheques set valor=0; select '", "1; drop table cheques",
            "'/**/or/**/1=1/**/--", "' --", "' # ", "/* ", "*/", "--", ";", "1--", "1/*",
            "E'\\x27'", "e'\\'; drop table cheques; --'", "U&'\\0027'", "U&'!0027' uescape '!'",
            "$$", "$$; drop table cheques; $$", "$a$ or $a$", "$1", "$2", "' || $1 || '", "%s",
            "%1$s", "' || (select passwd from pg_shadow) || '",
            "' & (select passwd from pg_shadow) & '",
            "' or exists (select * from pg_shadow) or nome='",
            "' or exists (select * from pg_catalog.pg_authid) or nome='",
            "' union select rolname from pg_roles where '1'='1",
            "' union select version() where '1'='1", "' and pg_sleep(60) is null and nome='",
            "1 and pg_sleep(60)", "pg_sleep(60)", "' & pg_read_file('/etc/passwd') & '",
            "pg_read_file('/etc/passwd')", "' & pg_ls_dir('.') & '", "lo_import('/etc/passwd')",
            "' & dblink('host=localhost','select 1') & '", "dblink_connect('x')",
            "' & query_to_xml('delete from cheques',true,true,'') & '",
            "' & set_config('role','loja',false) & '", "' & current_setting('data_directory') & '",
            "' & pg_terminate_backend(1) & '", "' & jet_news() & '", "nextval('cheques')",
            "setval('cheques_lancamento_seq',1)", "'; copy cheques to program 'id'; --",
            "'; copy (select 1) to '/tmp/x'; --", "copy cheques from program 'id'",
            "'; set role loja; --", "set role postgres", "reset role",
            "'; set session authorization loja; --", "'; grant all on cheques to public; --",
            "'; create function f() returns int as ''; --", "'; listen valtrino; --",
            "'; notify valtrino, '*'; --", "'; do $$ begin end $$; --",
            "'; prepare x as select 1; execute x; --", "'; declare c cursor for select 1; --",
            "'; lock table cheques; --", "'; truncate cheques; --", "'; vacuum; --", "begin",
            "rollback", "a\0b"s, "a\0'; drop table cheques; --"s, "\xC0\xA7 or 1=1",
            "\xE0\x80\xA7 or 1=1", "\xF0\x80\x80\xA7; drop table cheques", "\xBF'; --",
            "\xC2'; --", "\xFF", "\xED\xA0\x80", "’ or 1=1", "＇ or 1=1", "ʼ or ʼ1ʼ=ʼ1",
            "‘; drop table cheques", "´ or 1=1", "` or 1=1", "；drop table cheques",
            "\xEF\xBB\xBF'", "\xE2\x80\xAE'", "ﬁ", "Ⅰ", "%", "_", "%%", "_%_", "[a-z]", "*", "?",
            "#", "[", "]", "[nome]", "[pg_shadow]", "[cheques];[bancos]",
            "nome]; drop table cheques; [", "[nome\"; drop table cheques; --]",
            "\"cheques\"; drop table bancos", "pg_shadow", "pg_catalog.pg_authid", "pg_class",
            "information_schema.tables", "cheques, pg_shadow", "select * from pg_shadow",
            "select * from pg_catalog.pg_shadow", "select passwd from [pg_shadow]",
            "select * from valtrino_estacoes.gravacao", "select current_user from bancos",
            "select xmin, ctid, tableoid from bancos", "select [nome\"] from bancos",
            "select * from bancos for update", "select * into x from bancos",
            "select * from generate_series(1,1000000000)", "values (1)", "table bancos",
            "(select 1) order by 1; drop table bancos", "nome; drop table bancos",
            "nome asc, (select 1)", "nome collate \"C\"", "nome nulls first", "nome limit 1",
            "1::int", "nome::regclass", "cast(1 as int)", "array[1]", "row(1)", "@@x", ":x", "\n",
            "\r\n; drop table cheques", "\t' or 1=1", "'\n--\nor 1=1", std::string(3000, '\''),
            std::string(70000, 'x'), std::string(200, '(')};
        // clang-format on
        for (const auto& file : std::filesystem::directory_iterator(VALTRINO_ATTACKS)) {
            std::ifstream in(file.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(in), {}};
            list.push_back(bytes.substr(std::min<std::size_t>(1, bytes.size())));
        }
        return list;
    }();
    return all;
}

/// Whoever breaks out of the quotes writes a condition of the dialect, of its words and no others.
TEST_P(Injections, OfWhatIsTypedInAFieldAreValues) {
    std::set<std::string> statements;
    std::set<std::string> words;
    const Heard asEver = heard([&] {
        for (const char* const text : kHarmless)
            for (const Typed& field : fields())
                attempt([&] { field.ask(*this, text); });
        for (const char* const statement : kDialect)
            attempt([&] { walk(statement); });
    });
    for (const std::string& statement : asEver.statements) {
        statements.insert(withoutNumbers(statement));
        words.merge(wordsOf(withoutNumbers(statement)));
    }
    ASSERT_GE(statements.size(), 15U);
    ASSERT_FALSE(words.contains(";"));

    int others = 0;
    for (const std::string& text : attacks()) {
        for (const Typed& field : fields()) {
            const Heard now = heard([&] { attempt([&] { field.ask(*this, text); }); });
            for (const std::string& statement : now.statements) {
                if (statements.contains(withoutNumbers(statement)))
                    continue;
                ++others;
                for (const std::string& word : wordsOf(withoutNumbers(statement)))
                    EXPECT_TRUE(words.contains(word))
                        << field.where << ": " << text << ": " << word << " in\n"
                        << statement;
            }
            // Of a value, of how it is written, of its type, of what doesn't exist: never of a
            // right, a file, a program.
            for (const std::string& error : now.errors)
                EXPECT_TRUE(error.starts_with("22") || error.starts_with("54") ||
                            (error.starts_with("42") && !error.starts_with("42501")))
                    << field.where << ": " << text << ": " << error;
        }
    }
    EXPECT_GT(others, 0) << "else the words prove nothing";
    EXPECT_EQ(allThereIs(), before_);
}

/// What is stored comes back letter by letter, by the same statement.
TEST_P(Injections, OfWhatIsStoredAreValues) {
    Recordset cheques;
    cheques.Open("cheques", clerk);
    int kept = 0;
    const auto save = [&](const std::string& text) {
        cheques.MoveFirst();
        cheques["observacao"] = text;
        cheques.Update();
        Recordset again;
        again.Open("select observacao from cheques where lancamento=1", clerk);
        EXPECT_EQ(again["observacao"].text(), text);
        ++kept;
    };
    std::set<std::string> statements;
    for (const std::string& statement : heard([&] {
                                            save("x");
                                            save("y");
                                        }).statements)
        statements.insert(withoutNumbers(statement));
    ASSERT_FALSE(statements.empty());
    for (const std::string& text : attacks()) {
        const Heard now = heard([&] {
            attempt([&] { save(text); });
            cheques.CancelUpdate();
        });
        for (const std::string& statement : now.statements)
            EXPECT_THAT(statements, testing::Contains(withoutNumbers(statement))) << text;
        for (const std::string& error : now.errors)
            EXPECT_TRUE(error.starts_with("22")) << text << ": " << error;
    }
    EXPECT_GT(kept, 100) << "of those that a field holds";
    EXPECT_EQ(rowsIn("cheques"), 6);
}

} // namespace
