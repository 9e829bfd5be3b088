#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>

namespace jet {

/// What the rows of one relationship in MSysRelationships say together: one of each pair of
/// columns, each with the tables, the number of pairs and its place among them.
class RelationshipPairs {
public:
    void add(std::pair<std::string, std::string> tables, std::int64_t count, std::int64_t place) {
        if (places_.empty()) {
            tables_ = std::move(tables);
            count_ = count;
        } else {
            agree_ = agree_ && tables == tables_ && count == count_;
        }
        agree_ = places_.insert(place).second && agree_;
    }
    /// Whether they are all there, once each, and say the same: a relationship of which a part is
    /// lost is kept by nobody.
    [[nodiscard]] bool whole() const {
        const auto pairs = static_cast<std::int64_t>(places_.size());
        return agree_ && pairs > 0 && count_ == pairs && *places_.begin() == 0 &&
               *places_.rbegin() == pairs - 1;
    }

private:
    std::pair<std::string, std::string> tables_;
    std::int64_t count_ = 0;
    std::set<std::int64_t> places_;
    bool agree_ = true;
};

} // namespace jet
