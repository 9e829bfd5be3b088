#include "ado/Follower.h"

#include "ado/Connection.h"
#include "ado/recordset/Session.h"
#include "ado/value/Convert.h"
#include "jet/TableFollower.h"

namespace ado {

struct Follower::Rows::Source {
    const std::vector<std::size_t>& columns;
    jet::PageRows& rows;
    const jet::RowView* row;
};

bool Follower::Rows::next() {
    source_.row = source_.rows.next();
    return source_.row != nullptr;
}

bool Follower::Rows::isNull(std::size_t column) const {
    return source_.row->isNull(source_.columns[column]);
}
std::int64_t Follower::Rows::integer(std::size_t column) const {
    return asInteger(source_.row->value(source_.columns[column]));
}
Currency Follower::Rows::currency(std::size_t column) const {
    return asCurrency(source_.row->value(source_.columns[column]));
}
Date Follower::Rows::date(std::size_t column) const {
    return asDate(source_.row->value(source_.columns[column]));
}

struct Follower::Parts final : SessionUser {
    Parts(Session& owner, const jet::Table& table, Take taker)
        : session(&owner), take(std::move(taker)) {
        follower.emplace(owner.database(), table);
        session->enter(*this);
    }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;
    ~Parts() {
        if (follower)
            session->leave(*this);
    }
    void close() override {
        session->leave(*this);
        follower.reset();
    }

    Session* session;
    std::optional<jet::TableFollower> follower; ///< nothing once the session has ended
    Take take;
    std::vector<std::size_t> columns;
};

Follower::Follower(Connection& connection, const Text& table, const std::vector<Text>& columns,
                   Take take) {
    const jet::Table& followed = connection.database().table(table.utf8());
    parts_ = std::make_unique<Parts>(connection.session(), followed, std::move(take));
    for (const Text& name : columns) {
        const auto place = followed.findColumn(name.utf8());
        if (!place)
            throw jet::Error(jet::Errc::notFound, "A tabela \"" + followed.name() +
                                                      "\" não tem o campo \"" + name.utf8() +
                                                      "\".");
        if (isLongValue(followed.columns()[*place].type))
            throw jet::Error(jet::Errc::unsupported,
                             "O campo \"" + name.utf8() + "\" não pode ser acompanhado.");
        parts_->columns.push_back(*place);
    }
}

Follower::~Follower() = default;

bool Follower::follow(std::chrono::microseconds time) {
    Parts& parts = *parts_;
    if (!parts.follower)
        throw jet::Error(jet::Errc::misuse, "A base de dados foi fechada.");
    return parts.follower->follow(time, [&parts](jet::PageNo page, jet::PageRows& rows) {
        Rows::Source source{parts.columns, rows, nullptr};
        Rows given(source);
        parts.take(number(page), given);
    });
}

bool Follower::isComplete() const { return parts_->follower && parts_->follower->isComplete(); }
double Follower::progress() const { return parts_->follower ? parts_->follower->progress() : 0; }
std::optional<jet::Error> Follower::damage() const {
    return parts_->follower ? parts_->follower->damage() : std::nullopt;
}

} // namespace ado
