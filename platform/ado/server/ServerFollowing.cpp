#include "ado/server/ServerFollowing.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerSchema.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"

#include <algorithm>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

class RowsOfBlock final : public BlockRows {
public:
    RowsOfBlock(const ServerRows& rows, const ServerTable& table,
                const std::vector<std::size_t>& columns)
        : rows_(rows), table_(table), columns_(columns) {}

    bool next() override { return ++row_ < rows_.rows(); }
    [[nodiscard]] bool isNull(std::size_t column) const override {
        return !rows_.field(row_, static_cast<int>(column));
    }
    [[nodiscard]] jet::Value value(std::size_t column) const override {
        const ServerTable::Type& type = table_.types[columns_[column]];
        return valueOf(rows_.field(row_, static_cast<int>(column)), type.number, type.modifier);
    }

private:
    const ServerRows& rows_;
    const ServerTable& table_;
    const std::vector<std::size_t>& columns_;
    int row_ = -1;
};

const ServerTable& tableOf(ServerSession& session, const std::string& name) {
    const ServerTable* const table = session.catalog().find(name);
    if (table == nullptr)
        throw Error(Errc::notFound, "Não existe a tabela \"" + name + "\".");
    if (table->key.size() != 1)
        throw Error(Errc::unsupported, "A tabela \"" + name + "\" não pode ser acompanhada.");
    return *table;
}

} // namespace

ServerFollowing::ServerFollowing(ServerSession& session, const std::string& table,
                                 const std::vector<std::string>& columns, Take take)
    : session_(session), table_(tableOf(session, table)), take_(std::move(take)) {
    for (const std::string& name : columns) {
        const auto place = table_.shape().findColumn(name);
        if (!place)
            throw Error(Errc::notFound,
                        "A tabela \"" + table_.name + "\" não tem o campo \"" + name + "\".");
        if (jet::isLongValue(table_.columns[*place].type))
            throw Error(Errc::unsupported, "O campo \"" + name + "\" não pode ser acompanhado.");
        columns_.push_back(*place);
    }
    session_.enter(*this);
}

ServerFollowing::~ServerFollowing() { session_.leave(*this); }

void ServerFollowing::hear(std::string_view table, std::uint32_t block) {
    if (table == table_.name)
        pending_.insert(block);
}

void ServerFollowing::begin() {
    const ServerRows last = session_.wire().run(
        "select coalesce(max(" + quotedName(table_.columns[table_.key.front()].name) +
        "), -1)::bigint / " + std::to_string(kKeysInABlock) + " from " + quotedName(table_.name));
    const auto most = std::get<std::int64_t>(valueOf(last.field(0, 0), server_type::kBigint, -1));
    // Of one that has been read before and isn't any more nothing is left.
    for (std::int64_t block = 0; block <= std::max(most, last_); ++block)
        pending_.insert(static_cast<std::uint32_t>(block));
    last_ = std::max(most, last_);
    atFirst_ = pending_.size();
    begun_ = true;
}

void ServerFollowing::read(std::uint32_t block) {
    std::string list;
    for (const std::size_t column : columns_) {
        list += list.empty() ? "" : ", ";
        list += quotedName(table_.columns[column].name);
    }
    const std::string key = quotedName(table_.columns[table_.key.front()].name);
    const std::int64_t from = std::int64_t{block} * kKeysInABlock;
    const ServerRows rows =
        session_.wire().run("select " + list + " from " + quotedName(table_.name) + " where " +
                                key + " >= $1 and " + key + " < $2",
                            {parameterOf(from), parameterOf(from + kKeysInABlock)});
    RowsOfBlock given(rows, table_, columns_);
    take_(block, given);
}

bool ServerFollowing::follow(std::chrono::microseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    static_cast<void>(session_.now());
    if (!begun_)
        begin();
    while (!pending_.empty()) {
        const std::uint32_t block = *pending_.begin();
        read(block);
        pending_.erase(block);
        if (std::chrono::steady_clock::now() >= end)
            break;
    }
    return !pending_.empty();
}

double ServerFollowing::progress() const {
    if (!begun_ || atFirst_ == 0)
        return begun_ ? 1 : 0;
    const auto done = static_cast<double>(atFirst_ - std::min(atFirst_, pending_.size()));
    return done / static_cast<double>(atFirst_);
}

} // namespace ado
