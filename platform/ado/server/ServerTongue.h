#pragma once

#include "ado/dialect/Tongue.h"
#include "ado/server/ServerWire.h"

namespace ado {

/// The server's words. What stands in a statement as a text or a date becomes a parameter of it:
/// `$1`, `$2`, ... in the order in which they are met.
class ServerTongue final : public Tongue {
public:
    /// Goes on numbering behind those that are there.
    explicit ServerTongue(std::vector<Parameter>& parameters) : parameters_(parameters) {}

    [[nodiscard]] std::string text(const std::string& value) override;
    [[nodiscard]] std::string date(const std::string& days) override;
    [[nodiscard]] std::string truth(bool yes) const override { return yes ? "true" : "false"; }
    [[nodiscard]] std::optional<std::string> function(std::string_view name) const override;
    [[nodiscard]] std::string endOfCall() const override { return ")"; }
    [[nodiscard]] std::string join() const override { return "&&&"; }
    [[nodiscard]] std::string like() const override { return "~%"; }
    [[nodiscard]] std::string notLike() const override { return "!~%"; }
    /// Only so an index of keys serves them.
    [[nodiscard]] bool listsAreChoices() const override { return true; }
    /// By its key if it is a text. Null is the smallest.
    [[nodiscard]] std::optional<std::string> sorted(const std::string& term,
                                                    bool descending) const override {
        return "jet_ordem(" + term + (descending ? ") desc nulls last" : ") nulls first");
    }

private:
    std::vector<Parameter>& parameters_;
};

/// A statement's place for one more parameter.
[[nodiscard]] std::string placeFor(std::vector<Parameter>& parameters, Parameter parameter);

} // namespace ado
