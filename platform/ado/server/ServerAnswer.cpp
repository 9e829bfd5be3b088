#include "ado/server/ServerCursor.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"

#include <algorithm>
#include <cstdlib>

namespace ado {

namespace {

/// Most answers are no longer; of the others so many rows are fetched at a time, and many times
/// more where somebody goes on, who may be a long way from the server.
constexpr std::size_t kPiece = 256;
constexpr std::size_t kLargestPiece = 4096;

std::string nextPortal() {
    static std::uint64_t number = 0;
    return "lista" + std::to_string(++number);
}

} // namespace

ServerAnswer::ServerAnswer(ServerSession& session, ServerQuery query)
    : ServerCursor(session, std::move(query)) {}

ServerAnswer::~ServerAnswer() { closePortal(); }

void ServerAnswer::closePortal() noexcept {
    if (!portal_.empty() && line_ == session_.wire().lines())
        session_.wire().later("close " + portal_);
    portal_.clear();
}

/// All rows stay on the server, and are fetched from there in pieces: those of one moment. In a
/// transaction, which might be undone and take them along, all are fetched at once.
ServerRows ServerAnswer::openPortal(const std::string& name, std::size_t most) {
    ServerStatement declare = query_.all();
    declare.sql.insert(0, "declare " + name + " scroll cursor with hold for ");
    const ServerStatement fetch{"fetch forward " + std::to_string(most) + " from " + name};
    ServerRows found = session_.wire().run({declare, fetch});
    line_ = session_.wire().lines();
    return found;
}

void ServerAnswer::fetchFirst() {
    const bool pieces = !session_.wire().inTransaction();
    const std::string name = nextPortal();
    ServerRows found = pieces ? openPortal(name, kPiece) : session_.wire().run(query_.all());
    closePortal();
    if (pieces)
        portal_ = name;
    rows_.clear();
    types_.clear();
    kept_ = 0;
    at_ = 0;
    std::vector<QueryFields::Computed> columns;
    columns.reserve(static_cast<std::size_t>(found.columns()));
    for (int i = 0; i < found.columns(); ++i) {
        types_.push_back({found.columnType(i), found.columnModifier(i)});
        columns.push_back({found.columnName(i), session_.catalog().nameOf(found.columnTable(i))});
    }
    if (!query_.live() && query_.fields().all().empty())
        query_.setFields(columns);
    keep(found);
    complete_ = !pieces || rows_.size() < kPiece;
    if (complete_)
        closePortal();
}

/// What was kept on the server goes with the line. If it hasn't changed since, it goes on.
void ServerAnswer::requirePortal() {
    if (line_ == session_.wire().lines())
        return;
    const std::string name = nextPortal();
    const ServerRows found = openPortal(name, rows_.size());
    portal_ = name;
    bool same = found.rows() == static_cast<int>(rows_.size());
    for (int row = 0; same && row < found.rows(); ++row)
        for (int column = 0; same && column < found.columns(); ++column)
            same = found.field(row, column) ==
                   rows_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    if (same)
        return;
    closePortal();
    line_ = 0;
    throw jet::Error(jet::Errc::offline,
                     "A conexão com o servidor caiu, e os registros que estavam sendo lidos "
                     "mudaram depois disso. Abra a lista de novo.");
}

/// A command about the portal, whose name it ends with.
ServerRows ServerAnswer::ask(const std::string& command) {
    requirePortal();
    try {
        return session_.wire().run(command + portal_);
    } catch (const jet::Error&) {
        if (line_ == session_.wire().lines())
            throw;
    }
    requirePortal(); // the line has broken meanwhile
    return session_.wire().run(command + portal_);
}

bool ServerAnswer::fetchMore() {
    if (complete_)
        return false;
    const std::size_t before = rows_.size();
    const std::size_t piece = std::min(kLargestPiece, before * (kLargestPiece / kPiece));
    keep(ask("fetch forward " + std::to_string(piece) + " from "));
    complete_ = rows_.size() - before < piece;
    if (complete_)
        closePortal();
    return rows_.size() > before;
}

void ServerAnswer::keep(const ServerRows& rows) {
    for (int i = 0; i < rows.rows(); ++i) {
        auto& row = rows_.emplace_back();
        row.reserve(types_.size());
        for (int column = 0; column < rows.columns(); ++column) {
            row.push_back(rows.field(i, column));
            kept_ += sizeof(row.back()) + (row.back() ? row.back()->size() : 0);
        }
    }
    if (kept_ > mostBytes)
        throw jet::Error(jet::Errc::full, "O resultado é grande demais. Escolha menos registros.");
}

bool ServerAnswer::goTo(std::size_t place) {
    while (rows_.size() <= place)
        if (!fetchMore())
            return false;
    at_ = place;
    return true;
}

bool ServerAnswer::last() {
    while (fetchMore()) {
    }
    at_ = rows_.empty() ? 0 : rows_.size() - 1;
    return !rows_.empty();
}

std::int64_t ServerAnswer::count() {
    if (complete_)
        return static_cast<std::int64_t>(rows_.size());
    const std::int64_t rest = ask("move forward all in ").affected();
    session_.wire().later("move absolute " + std::to_string(rows_.size()) + " in " + portal_);
    return static_cast<std::int64_t>(rows_.size()) + rest;
}

/// The rows that meet the criterion are asked for by their fingerprints.
void ServerAnswer::find(const std::string& criterion) {
    if (!live())
        throw jet::Error(jet::Errc::misuse,
                         "A procura só se aplica aos registros das próprias tabelas, e este "
                         "conjunto é um resultado calculado.");
    ServerQuery narrowed = query_;
    narrowed.setFilter(filter().empty() ? criterion : "(" + filter() + ") and (" + criterion + ")",
                       spelling());
    const ServerStatement statement = narrowed.all();
    const ServerRows found = session_.wire().run(statement);
    const auto fingerprints = [&](const auto& fieldOf) {
        std::vector<std::optional<std::string>> all;
        all.reserve(query_.tables().size());
        for (std::size_t i = query_.fields().all().size(); i < types_.size(); ++i)
            all.push_back(fieldOf(i));
        return all;
    };
    std::vector<std::vector<std::optional<std::string>>> meet;
    meet.reserve(static_cast<std::size_t>(found.rows()));
    for (int i = 0; i < found.rows(); ++i)
        meet.push_back(fingerprints(
            [&](std::size_t column) { return found.field(i, static_cast<int>(column)); }));
    std::ranges::sort(meet);
    if (at() == At::beforeFirst)
        moveFirst();
    while (at() == At::row &&
           !std::ranges::binary_search(
               meet, fingerprints([&](std::size_t column) { return rows_[at_][column]; })))
        moveNext();
}

jet::Value ServerAnswer::value(const QueryField& field) {
    requireRow();
    std::size_t place = field.column;
    if (live()) {
        const auto& all = query_.fields().all();
        place = static_cast<std::size_t>(&field - all.data());
    }
    return valueOf(rows_[at_][place], types_[place].number, types_[place].modifier);
}

Cursor::State ServerAnswer::state(std::size_t table) {
    requireRow();
    const auto& fingerprint = rows_[at_][query_.fields().all().size() + table];
    if (!fingerprint)
        return {};
    return {static_cast<std::uint64_t>(std::atoll(fingerprint->c_str())), session_.now().others};
}

} // namespace ado
