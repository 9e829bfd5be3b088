#include "ado/Follower.h"

#include "ado/Connection.h"
#include "ado/provider/Provider.h"
#include "ado/value/Convert.h"

namespace ado {

bool Follower::Rows::next() { return rows_.next(); }
bool Follower::Rows::isNull(std::size_t column) const { return rows_.isNull(column); }
std::int64_t Follower::Rows::integer(std::size_t column) const {
    return asInteger(rows_.value(column));
}
Currency Follower::Rows::currency(std::size_t column) const {
    return asCurrency(rows_.value(column));
}
Date Follower::Rows::date(std::size_t column) const { return asDate(rows_.value(column)); }

struct Follower::Parts final : ProviderUser {
    Parts(Provider& owner, std::unique_ptr<Following> follows)
        : provider(owner), following(std::move(follows)) {
        provider.enter(*this);
    }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;
    ~Parts() {
        if (following)
            provider.leave(*this);
    }
    void close() override {
        provider.leave(*this);
        following.reset();
    }

    Provider& provider;
    std::unique_ptr<Following> following; ///< null once the provider has ended
};

Follower::Follower(Connection& connection, const Text& table, const std::vector<Text>& columns,
                   Take take) {
    std::vector<std::string> names;
    names.reserve(columns.size());
    for (const Text& name : columns)
        names.push_back(name.utf8());
    Provider& provider = connection.provider();
    parts_ = std::make_unique<Parts>(
        provider, provider.follow(table.utf8(), names,
                                  [take = std::move(take)](std::uint32_t block, BlockRows& rows) {
                                      Rows given(rows);
                                      take(block, given);
                                  }));
}

Follower::~Follower() = default;

bool Follower::follow(std::chrono::microseconds time) {
    if (!parts_->following)
        throw jet::Error(jet::Errc::misuse, "A base de dados foi fechada.");
    return parts_->following->follow(time);
}

bool Follower::isComplete() const { return parts_->following && parts_->following->isComplete(); }
double Follower::progress() const { return parts_->following ? parts_->following->progress() : 0; }
std::optional<jet::Error> Follower::damage() const {
    return parts_->following ? parts_->following->damage() : std::nullopt;
}

} // namespace ado
