#include "ado/file/QuerySql.h"

#include <utility>

namespace ado {

QuerySql QuerySql::ofAnswer(Select select) {
    QuerySql sql;
    sql.select_ = std::move(select);
    sql.select_.plain = false;
    sql.select_.sortTerms.clear(); // the text has them
    return sql;
}

QuerySql QuerySql::ofRows(Select select, const std::vector<jet::Table*>& tables) {
    QuerySql sql;
    sql.select_ = std::move(select);
    sql.tables_ = tables;
    sql.single_ = tables.size() == 1 ? tables.front() : nullptr;
    if (const auto key = sql.single_ != nullptr ? sql.single_->primaryKey() : std::nullopt)
        sql.key_ = sql.single_->indexes()[*key].columns;
    return sql;
}

// ---- statements -------------------------------------------------------------------------------

std::string QuerySql::all() const {
    if (live())
        return "select " + rowIds() + " from " + select_.from + where() + orderBy();
    if (restriction_.condition.empty() && restriction_.order.empty())
        return select_.text;
    return "select * from (" + select_.text + ")" + where() + orderBy();
}

std::string QuerySql::belongs() const {
    return "select 1 from " + select_.from + where(singleTable() + "_rowid_ = ?1");
}

std::string QuerySql::meeting(const std::string& condition) const {
    // A list of one table says itself which rows belong to it.
    return "select " + rowIds() + " from " + select_.from +
           (single_ != nullptr ? " where (" + condition + ")" : where(condition));
}

std::string QuerySql::firstFrom(const std::string& condition) const {
    return "select " + rowIds() + " from " + select_.from + " where (" + condition + ") and " +
           notBefore(0) + orderBy() + " limit 1";
}

// ---- their parts ------------------------------------------------------------------------------

std::string QuerySql::rowIds() const {
    std::string ids;
    for (const SelectedTable& table : select_.tables)
        ids += (ids.empty() ? "" : ", ") + quotedName(table.alias) + "._rowid_";
    return ids;
}

std::string QuerySql::where(const std::string& more) const {
    std::string conditions;
    const std::string ofSource = live() ? select_.where : std::string();
    for (const std::string& part : {ofSource, restriction_.condition, more}) {
        if (!part.empty())
            conditions += (conditions.empty() ? " where (" : " and (") + part + ")";
    }
    return conditions;
}

std::string QuerySql::orderBy() const {
    std::string order;
    const auto add = [&](const std::string& term, bool descending) {
        order += (order.empty() ? "" : ", ") + term + (descending ? " desc" : "");
    };
    for (const SortTerm& term : sortTerms()) {
        const std::string column =
            (term.qualifier.empty() ? "" : quotedName(term.qualifier) + ".") +
            quotedName(term.column);
        add(isText(term) ? std::string(kTextKey) + "(" + column + ")" : column, term.descending);
    }
    if (order.empty() && live())
        order = select_.orderBy;
    if (single_ != nullptr) {
        // Equal rows in the order of the key, so that the order is the same each time.
        for (const jet::IndexColumn& key : key_)
            add(keyColumn(key), !key.ascending);
        if (key_.empty())
            add(singleTable() + "_rowid_", false);
    }
    return order.empty() ? order : " order by " + order;
}

/// Those that decide, if they are known.
const std::vector<SortTerm>& QuerySql::sortTerms() const {
    return restriction_.order.empty() ? select_.sortTerms : restriction_.order;
}

/// Whether it names a column of texts, in whichever of the tables.
bool QuerySql::isText(const SortTerm& term) const {
    bool text = false;
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        if (!term.qualifier.empty() && term.qualifier != select_.tables[i].alias)
            continue;
        if (const auto column = tables_[i]->findColumn(term.column)) {
            text = jet::isText(tables_[i]->columns()[*column].type);
            if (!text)
                return false;
        }
    }
    return text;
}

std::string QuerySql::singleTable() const { return quotedName(select_.tables.front().alias) + "."; }

std::string QuerySql::keyColumn(const jet::IndexColumn& key) const {
    return singleTable() + quotedName(single_->columns()[key.column].name);
}

/// That a row isn't before the one whose key columns are bound, its first `place` columns equal.
std::string QuerySql::notBefore(std::size_t place) const {
    if (key_.empty())
        return singleTable() + "_rowid_ >= ?1";
    const jet::IndexColumn& key = key_[place];
    const std::string column = keyColumn(key);
    const char* const beyond = key.ascending ? " > " : " < ";
    const char* const within = key.ascending ? " >= " : " <= ";
    const std::string parameter = "?" + std::to_string(place + 1);
    std::string condition = column + within + parameter;
    if (place + 1 < key_.size())
        condition += " and (" + column + beyond + parameter + " or (" + notBefore(place + 1) + "))";
    return condition;
}

// ---- what they ask ----------------------------------------------------------------------------

std::optional<ListOrder> QuerySql::order() const {
    const auto& terms = sortTerms();
    if (terms.empty() && !select_.orderBy.empty())
        return std::nullopt;
    return ListOrder::by(terms, *single_);
}

bool QuerySql::isWholeTable() const {
    if (single_ == nullptr || !select_.where.empty() || !restriction_.condition.empty())
        return false;
    const auto known = order();
    return known && known->isTablesOwn();
}

bool QuerySql::isByRow() const {
    const std::string sql = where() + orderBy();
    return sql.find("select ") == std::string::npos &&
           sql.find("\"jet_date\"") == std::string::npos &&
           sql.find("\"jet_now\"") == std::string::npos;
}

} // namespace ado
