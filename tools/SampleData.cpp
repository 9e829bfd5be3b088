#include "tools/SampleData.h"

#include "tools/SampleWords.h"

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

using jet::Value;
using namespace words;

/// Rows made durable at a time: few, as a transaction holds its pages in memory, but not so few
/// that the indexes of a large table, which each transaction changes everywhere, are written all
/// the time.
constexpr std::int64_t rowsAtOnce(std::int64_t count) {
    return std::max<std::int64_t>(20'000, count / 16);
}

/// The draw. The standard fixes the numbers of the engine but not what its distributions make of
/// them, so these are our own: the same file on every machine.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}
    /// From 0 to `count` - 1.
    std::int64_t below(std::int64_t count) {
        return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(count));
    }
    std::int64_t between(std::int64_t low, std::int64_t high) {
        return low + below(high - low + 1);
    }
    bool percent(int chance) { return below(100) < chance; }
    template <class T, std::size_t N>
    const T& of(const T (&list)[N]) {
        return list[static_cast<std::size_t>(below(N))];
    }
    std::string digits(std::size_t count) {
        std::string text;
        while (text.size() < count)
            text += static_cast<char>('0' + below(10));
        return text;
    }

private:
    std::mt19937_64 engine_;
};

/// One row of a table, fields set by name.
class RowMaker {
public:
    explicit RowMaker(jet::Table& table) : table_(table) {
        for (std::size_t i = 0; i < table.columns().size(); ++i)
            places_.emplace(table.columns()[i].name, i);
        clear();
    }
    void clear() { row_.assign(table_.columns().size(), Value()); }
    Value& operator[](std::string_view field) { return row_[places_.at(field)]; }
    void insert() { table_.insert(row_); }

private:
    jet::Table& table_;
    std::unordered_map<std::string_view, std::size_t> places_; ///< names live in the table
    jet::Row row_;
};

Value money(std::int64_t cents) { return jet::Currency{cents * 100}; }

class Filler {
public:
    Filler(jet::Database& database, const SampleSize& size, std::uint64_t seed, jet::Date today,
           const jet::Progress& progress)
        : database_(database), size_(size), dice_(seed), today_(today), progress_(progress) {}

    void run() {
        fill("bancos", size_.banks, &Filler::bank);
        fill("cliente_fornecedor", size_.clients, &Filler::client);
        fill("cheques", size_.cheques, &Filler::cheque);
        fill("semfundos", size_.bounced, &Filler::bounced);
    }

private:
    static constexpr std::int64_t kStep = 256; ///< rows between two words of how far it is

    void fill(const char* table, std::int64_t count,
              void (Filler::*make)(RowMaker&, std::int64_t)) {
        RowMaker row(database_.table(table));
        for (std::int64_t done = 0; done < count;) {
            jet::DatabaseTransaction transaction(database_);
            for (const std::int64_t end = std::min(count, done + rowsAtOnce(count)); done < end;
                 ++done) {
                if (progress_ && done % kStep == 0)
                    progress_(table, static_cast<std::uint64_t>(done),
                              static_cast<std::uint64_t>(count));
                row.clear();
                (this->*make)(row, done);
                row.insert();
            }
            transaction.commit();
        }
    }

    Value daysBack(std::int64_t most) {
        return jet::Date{today_.days - static_cast<double>(dice_.between(0, most))};
    }

    std::string person(const char* firstName) {
        std::string name = std::string(firstName) + " " + dice_.of(kFamilies);
        if (dice_.percent(70))
            name += std::string(" ") + dice_.of(kJoins) + dice_.of(kFamilies);
        return name;
    }
    std::string person() { return person(dice_.percent(50) ? dice_.of(kWomen) : dice_.of(kMen)); }
    std::string firm() {
        return std::string(dice_.of(kFirmKinds)) + " " + dice_.of(kFirmNames) +
               (dice_.percent(60) ? " Ltda." : "");
    }
    std::string telephone() {
        return "(" + std::to_string(dice_.between(11, 99)) + ") " +
               std::to_string(dice_.between(2000, 3999)) + "-" + dice_.digits(4);
    }

    /// The two control digits that would be right, each plus one: a number that nobody has.
    static void addWrongControl(std::string& number, std::size_t highestWeight) {
        for (int round = 0; round < 2; ++round) {
            std::size_t sum = 0;
            std::size_t weight = 2;
            for (std::size_t i = number.size(); i-- > 0;) {
                sum += static_cast<std::size_t>(number[i] - '0') * weight;
                weight = weight == highestWeight ? 2 : weight + 1;
            }
            const std::size_t right = sum % 11 < 2 ? 0 : 11 - sum % 11;
            number += static_cast<char>('0' + (right + 1) % 10);
        }
    }
    std::string cpf() {
        std::string number = dice_.digits(9);
        addWrongControl(number, 11);
        return number;
    }
    std::string cnpj() {
        std::string number = dice_.digits(8) + "0001";
        addWrongControl(number, 9);
        return number;
    }

    static std::string bankName(std::int64_t number) {
        const auto names = static_cast<std::int64_t>(std::size(kBanks));
        std::string name = kBanks[number % names];
        if (number >= names)
            name += " " + std::to_string(number / names + 1);
        return name;
    }
    void bank(RowMaker& row, std::int64_t number) {
        row["cod_banco"] = 800 + number;
        row["nome"] = bankName(number);
    }

    static bool isSupplier(std::int64_t number) { return number % 20 == 19; }
    /// The code of some client; suppliers give no cheques.
    std::int64_t anyClient() {
        const std::int64_t number = dice_.below(size_.clients);
        return isSupplier(number) ? number : number + 1; // codes count from 1
    }
    void client(RowMaker& row, std::int64_t number) {
        const bool supplier = isSupplier(number);
        const bool company = supplier || dice_.percent(15);
        row["tipo"] = !supplier;
        row["nome"] = company ? firm() : person();
        if (!dice_.percent(5))
            row["cgc_cpf"] = company ? cnpj() : cpf();
        if (dice_.percent(60))
            row["inscricao_rg"] = dice_.digits(company ? 12 : 9);
        address(row);
        if (dice_.percent(85))
            row["ultima_compra_venda"] = daysBack(400);
        row["vender"] = std::string(dice_.percent(92) ? "SIM" : "NÃO");
        if (dice_.percent(90))
            row["limite_credito"] = money(dice_.between(0, 100) * 10'000);
        if (!company)
            personal(row);
        if (dice_.percent(40))
            row["bancos_trabalha01"] =
                bankName(dice_.below(std::max<std::int64_t>(1, size_.banks)));
        if (dice_.percent(15))
            row["bancos_trabalha02"] =
                bankName(dice_.below(std::max<std::int64_t>(1, size_.banks)));
        if (dice_.percent(25))
            row["pessoa_autorizada01"] = person();
        if (dice_.percent(8))
            row["pessoa_autorizada02"] = person();
        if (dice_.percent(20))
            row["emailcli"] = "cliente" + std::to_string(number + 1) + "@exemplo.invalid";
        if (dice_.percent(30)) {
            std::string remarks = dice_.of(kClientRemarks);
            // Now and then somebody has written a story.
            for (std::int64_t more = dice_.percent(10) ? dice_.between(5, 60) : 0; more > 0; --more)
                remarks += std::string("\r\n") + dice_.of(kClientRemarks);
            row["observacao"] = remarks;
        }
    }
    void address(RowMaker& row) {
        const City& city = dice_.of(kCities);
        row["endereco"] =
            std::string(dice_.of(kStreets)) + ", " + std::to_string(dice_.between(1, 2500));
        row["bairro"] = std::string(dice_.of(kDistricts));
        row["cidade"] = std::string(city.name);
        row["estado"] = std::string(city.state);
        if (dice_.percent(90)) {
            const std::string code = std::to_string(city.firstPostalCode + dice_.below(400));
            row["cep"] = std::string(5 - code.size(), '0') + code + "-" + dice_.digits(3);
        }
        if (dice_.percent(80))
            row["fone"] = telephone();
        if (dice_.percent(10))
            row["fax"] = telephone();
    }
    void personal(RowMaker& row) {
        if (dice_.percent(80))
            row["dt_nascimento"] = jet::Date{
                today_.days - static_cast<double>(dice_.between(18, 85) * 365 + dice_.below(365))};
        if (dice_.percent(50))
            row["renuneração_mensal"] = money(dice_.between(4, 120) * 10'000);
        if (dice_.percent(60))
            row["pai"] = person(dice_.of(kMen));
        if (dice_.percent(70))
            row["mae"] = person(dice_.of(kWomen));
        if (dice_.percent(70))
            row["ocupacao"] = std::string(dice_.of(kTrades));
        if (dice_.percent(50)) {
            row["empresa"] = firm();
            row["fone_empresa"] = telephone();
        }
    }

    /// What received and bounced cheques have in common, but for the date.
    void anyCheque(RowMaker& row) {
        row["cliente"] = anyClient();
        row["banco"] = 1 + dice_.below(size_.banks);
        if (!dice_.percent(4))
            row["agencia"] = dice_.digits(4) + (dice_.percent(20) ? "-" + dice_.digits(1) : "");
        row["numero"] = dice_.digits(6);
        row["valor"] = money(dice_.percent(5) ? dice_.between(100'000, 2'000'000)
                                              : dice_.between(500, 90'000));
    }
    void cheque(RowMaker& row, std::int64_t) {
        anyCheque(row);
        const jet::Date issued = std::get<jet::Date>(daysBack(365));
        row["data"] = issued;
        if (!dice_.percent(1))
            row["bompara"] = jet::Date{
                issued.days + static_cast<double>(dice_.percent(10)   ? 0
                                                  : dice_.percent(60) ? dice_.between(1, 6) * 30
                                                                      : dice_.between(1, 180))};
        if (dice_.percent(8))
            row["observacao"] = std::string(dice_.of(kChequeRemarks));
        if (dice_.percent(30))
            row["autorizou"] = std::string(dice_.of(dice_.percent(50) ? kWomen : kMen));
        row["descontar"] = dice_.percent(70);
    }
    void bounced(RowMaker& row, std::int64_t) {
        anyCheque(row);
        row["data"] = daysBack(700);
        if (dice_.percent(50))
            row["empresa"] = firm();
        if (dice_.percent(60))
            row["observacao"] = std::string(dice_.of(kBouncedRemarks));
    }

    jet::Database& database_;
    const SampleSize& size_;
    Dice dice_;
    jet::Date today_;
    const jet::Progress& progress_;
};

} // namespace

void fillWithSamples(jet::Database& database, const SampleSize& size, std::uint64_t seed,
                     jet::Date today, const jet::Progress& progress) {
    Filler(database, size, seed, today, progress).run();
}
