#include "ado/dialect/Tongue.h"

#include "ado/dialect/Spelling.h"
#include "ado/dialect/SqlFunctions.h"

namespace ado {

namespace {

class SqliteTongue final : public Tongue {
public:
    [[nodiscard]] std::string text(const std::string& value) override { return quotedText(value); }
    [[nodiscard]] std::string date(const std::string& days) override { return days; }
    [[nodiscard]] std::string truth(bool yes) const override { return yes ? "-1" : "0"; }
    [[nodiscard]] std::optional<std::string> function(std::string_view name) const override {
        const char* const known = engineFunction(name);
        return known != nullptr ? std::optional(quotedName(known)) : std::nullopt;
    }
    [[nodiscard]] std::string endOfCall() const override {
        return std::string(") collate ") + kTextOrder;
    }
    [[nodiscard]] std::string join() const override {
        return std::string("->> null collate ") + kTextOrder + " ->>"; // see SqlFunctions.h
    }
    [[nodiscard]] std::string like() const override { return "like"; }
    [[nodiscard]] std::string notLike() const override { return "not like"; }
};

} // namespace

Tongue& sqliteTongue() {
    static SqliteTongue tongue;
    return tongue;
}

} // namespace ado
