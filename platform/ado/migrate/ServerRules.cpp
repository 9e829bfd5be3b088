#include "ado/migrate/ServerRules.h"

#include "ado/migrate/KeptExtras.h"
#include "ado/migrate/RuleText.h"
#include "jet/Names.h"
#include "jet/Rules.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace ado {

namespace {

using jet::RelationshipSpec;

constexpr const char* kConstraints =
    "select c.relname, k.conname, k.contype, "
    "regexp_replace(pg_get_constraintdef(k.oid), ' NOT VALID$', ''), "
    "coalesce(pg_get_expr(k.conbin, k.conrelid), ''), "
    "(select string_agg(a.attname, E'\\n' order by u.place) from unnest(k.conkey) with ordinality "
    "u (n, place) join pg_catalog.pg_attribute a on a.attrelid = k.conrelid and a.attnum = u.n), "
    "case when f.relnamespace = c.relnamespace then f.relname end, "
    "(select string_agg(a.attname, E'\\n' order by u.place) from unnest(k.confkey) with ordinality "
    "u (n, place) join pg_catalog.pg_attribute a on a.attrelid = k.confrelid and a.attnum = u.n), "
    "k.confupdtype, k.confdeltype "
    "from pg_catalog.pg_constraint k join pg_catalog.pg_class c on c.oid = k.conrelid "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "left join pg_catalog.pg_class f on f.oid = k.confrelid "
    "where k.contype in ('c', 'f', 'x') and k.conparentid = 0 "
    "order by c.relname collate \"C\", k.conname collate \"C\"";

// Of columns that nothing else fills in: of a key the file says so by itself.
constexpr const char* kNotNull =
    "select c.relname, a.attname from pg_catalog.pg_class c "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "join pg_catalog.pg_attribute a on a.attrelid = c.oid and a.attnum > 0 and a.attnotnull and "
    "not a.attisdropped and a.attidentity = '' and a.atttypid <> 'boolean'::regtype "
    "where c.relkind in ('r', 'p') and not exists (select 1 from pg_catalog.pg_index i "
    "where i.indrelid = c.oid and i.indisprimary and a.attnum = any (i.indkey::int2[]))";

constexpr const char* kDefaults =
    "select c.relname, a.attname, pg_get_expr(d.adbin, d.adrelid) from pg_catalog.pg_attrdef d "
    "join pg_catalog.pg_class c on c.oid = d.adrelid "
    "join pg_catalog.pg_namespace n on n.oid = c.relnamespace and n.nspname = 'valtrino' "
    "join pg_catalog.pg_attribute a on a.attrelid = d.adrelid and a.attnum = d.adnum "
    "and not a.attisdropped where a.attgenerated = '' and not (a.atttypid = 'boolean'::regtype "
    "and pg_get_expr(d.adbin, d.adrelid) = 'false')";

const jet::TextCodec kCodec(jet::Version::jet4);

std::string inMarks(std::string_view name) { return "\"" + std::string(name) + "\""; }

std::vector<std::string> lines(const std::optional<std::string>& text) {
    std::vector<std::string> all;
    std::istringstream in(text.value_or(""));
    for (std::string line; std::getline(in, line);)
        all.push_back(line);
    return all;
}

struct ServerConstraint {
    std::string table, name, kind, definition, condition;
    std::vector<std::string> columns;
    std::string parent; ///< of a foreign key; "" if it isn't one of the shop's tables
    std::vector<std::string> parentColumns;
    std::string onUpdate, onDelete;
};

/// What the catalog notes of a table, to be changed; as it was to the byte unless it is.
class Notes {
public:
    explicit Notes(jet::Bytes stored) : stored_(std::move(stored)) {
        groups_ = jet::parseProperties(stored_, kCodec, jet::PageNo{});
    }

    void remove(const std::string& column, std::string_view name) {
        for (jet::PropertyGroup& group : groups_)
            if (isOf(group, column))
                changed_ = std::erase_if(group.properties,
                                         [&](const jet::Property& property) {
                                             return jet::foldedName(property.name) ==
                                                    jet::foldedName(name);
                                         }) > 0 ||
                           changed_;
    }
    void set(const std::string& column, const char* name, bool yes) {
        put(column, {name, jet::ColumnType::boolean, {std::byte{yes}}});
    }
    void set(const std::string& column, const char* name, const std::string& text) {
        put(column, {name, jet::ColumnType::memo, kCodec.encode(text, false, false)});
    }
    [[nodiscard]] std::string text(const std::string& column, std::string_view name) const {
        for (const jet::PropertyGroup& group : groups_)
            if (isOf(group, column))
                if (const jet::Property* const property = group.find(name))
                    return property->text(kCodec);
        return "";
    }
    [[nodiscard]] jet::Bytes bytes() const {
        return changed_ ? jet::storedProperties(groups_, kCodec) : stored_;
    }

private:
    static bool isOf(const jet::PropertyGroup& group, const std::string& column) {
        return jet::foldedName(group.column) == jet::foldedName(column);
    }
    void put(const std::string& column, jet::Property property) {
        remove(column, property.name);
        auto group = std::ranges::find_if(
            groups_, [&](const jet::PropertyGroup& one) { return isOf(one, column); });
        if (group == groups_.end())
            group = groups_.insert(groups_.end(), {column, {}});
        group->properties.push_back(std::move(property));
        changed_ = true;
    }

    jet::Bytes stored_;
    std::vector<jet::PropertyGroup> groups_;
    bool changed_ = false;
};

class RuleReader {
public:
    RuleReader(ServerWire& wire, std::span<const ServerTableSpec> tables)
        : wire_(wire), tables_(tables), extras_(keptExtras(wire)), kept_(keptRules(wire)) {}

    ServerRules read() {
        for (const ServerTableSpec& table : tables_)
            readNotes(table.spec.name);
        // What isn't on the server any more has gone with its table.
        std::erase_if(extras_.objects, [&](const jet::ExtraObject& object) {
            return object.type == jet::ExtraObject::kTable;
        });
        readConstraints();
        dropGone();
        for (const ServerConstraint& constraint : constraints_)
            take(constraint);
        takeNotNull();
        takeDefaults();
        for (auto& [name, notes] : notes_)
            if (jet::Bytes bytes = notes.bytes(); !bytes.empty())
                extras_.objects.push_back({.type = jet::ExtraObject::kTable,
                                           .name = name,
                                           .link = {},
                                           .properties = std::move(bytes)});
        return {std::move(extras_), std::move(told_)};
    }

private:
    [[nodiscard]] jet::Bytes notedOf(const std::string& table) const {
        for (const jet::ExtraObject& object : extras_.objects)
            if (object.type == jet::ExtraObject::kTable &&
                jet::foldedName(object.name) == jet::foldedName(table))
                return object.properties;
        return {};
    }

    void readNotes(const std::string& table) {
        try {
            notes_.try_emplace(table, notedOf(table));
        } catch (const jet::Error&) {
            told_.push_back("As propriedades que o arquivo de antes tinha da tabela " +
                            inMarks(table) + " estão danificadas e não foram para este.");
            notes_.try_emplace(table, jet::Bytes());
        }
    }

    void readConstraints() {
        const ServerRows rows = wire_.run(kConstraints);
        for (int row = 0; row < rows.rows(); ++row) {
            const auto text = [&](int column) { return rows.field(row, column).value_or(""); };
            constraints_.push_back({text(0), text(1), text(2), text(3), text(4),
                                    lines(rows.field(row, 5)), text(6), lines(rows.field(row, 7)),
                                    text(8), text(9)});
        }
    }

    /// Rules of the file that somebody has taken from the server, or made others of.
    void dropGone() {
        for (const KeptRule& rule : kept_) {
            if (rule.what == kDefault)
                continue;
            const auto still =
                std::ranges::find_if(constraints_, [&](const ServerConstraint& constraint) {
                    return constraint.table == rule.table && constraint.name == rule.name &&
                           constraint.definition == rule.definition;
                });
            if (still != constraints_.end()) {
                constraints_.erase(still);
            } else if (rule.what == kBond) {
                std::erase_if(extras_.relationships, [&](const RelationshipSpec& bond) {
                    return jet::foldedName(bond.name) == jet::foldedName(rule.column);
                });
            } else if (const auto notes = notes_.find(rule.table);
                       notes != notes_.end() && !rule.what.empty()) {
                notes->second.remove(rule.column, rule.what);
                if (rule.what == "ValidationRule")
                    notes->second.remove(rule.column, "ValidationText");
            }
        }
    }

    void take(const ServerConstraint& constraint) {
        const auto notes = notes_.find(constraint.table);
        if (notes == notes_.end() || isOfType(constraint))
            return;
        if (constraint.kind == "f" ? takeBond(constraint) : takeRule(notes->second, constraint))
            return;
        tell("a restrição " + inMarks(constraint.name) + " da tabela " + inMarks(constraint.table) +
             ", " + constraint.definition);
    }

    bool takeBond(const ServerConstraint& constraint) {
        const auto cascade = [](const std::string& action, std::int64_t cascades,
                                std::int64_t nulls) -> std::optional<std::int64_t> {
            if (action == "a" || action == "r")
                return 0;
            if (action == "c")
                return cascades;
            return action == "n" && nulls != 0 ? std::optional(nulls) : std::nullopt;
        };
        const auto update = cascade(constraint.onUpdate, jet::RelationshipFlags::cascadeUpdate, 0);
        const auto erased = cascade(constraint.onDelete, jet::RelationshipFlags::cascadeDelete,
                                    jet::RelationshipFlags::cascadeNull);
        if (!update || !erased || constraint.parent.empty() ||
            constraint.columns.size() != constraint.parentColumns.size())
            return false;
        RelationshipSpec made{
            bondName(constraint.name), constraint.table, constraint.parent, {}, *update | *erased};
        for (std::size_t i = 0; i < constraint.columns.size(); ++i)
            made.columns.emplace_back(constraint.columns[i], constraint.parentColumns[i]);
        extras_.relationships.push_back(std::move(made));
        return true;
    }

    /// One that no other relationship has.
    [[nodiscard]] std::string bondName(const std::string& wish) const {
        std::string name = wish;
        for (int i = 2;
             std::ranges::any_of(extras_.relationships,
                                 [&](const RelationshipSpec& bond) {
                                     return jet::foldedName(bond.name) == jet::foldedName(name);
                                 });
             ++i)
            name = wish + " " + std::to_string(i);
        return name;
    }

    bool takeRule(Notes& notes, const ServerConstraint& constraint) const {
        if (constraint.kind != "c")
            return false;
        const auto rule = ruleText(constraint.condition);
        if (!rule || !isUnderstood(rule->text, constraint.table))
            return false;
        if (rule->kind != RuleText::Kind::condition) {
            const bool missing = rule->kind == RuleText::Kind::notNull;
            notes.set(constraint.columns.front(), missing ? "Required" : "AllowZeroLength",
                      missing);
            return true;
        }
        // A table has one rule: those that are added go into it.
        const std::string before = notes.text("", "ValidationRule");
        notes.set("", "ValidationRule",
                  before.empty() ? rule->text : "(" + before + ") And (" + rule->text + ")");
        if (const std::string said = notes.text("", "ValidationText");
            !said.empty() || before.empty())
            notes.set("", "ValidationText",
                      said.empty() ? constraint.name : said + " / " + constraint.name);
        return true;
    }

    /// Whether it is an expression of a file too, which may know fewer functions.
    [[nodiscard]] bool isUnderstood(const std::string& text, const std::string& table) const {
        if (text.empty())
            return true;
        std::vector<jet::Column> columns;
        for (const jet::ColumnSpec& spec : specOf(table).columns)
            columns.emplace_back().name = spec.name;
        try {
            const jet::Expression known(text, {table, columns, {}},
                                        jet::Collation::general(jet::Version::jet4));
            return true;
        } catch (const jet::Error&) {
            return false;
        }
    }
    [[nodiscard]] const jet::TableSpec& specOf(const std::string& table) const {
        return std::ranges::find(tables_, table,
                                 [](const ServerTableSpec& one) { return one.spec.name; })
            ->spec;
    }

    /// What the column's type in a file says by itself.
    [[nodiscard]] bool isOfType(const ServerConstraint& constraint) const {
        if (constraint.kind != "c" || constraint.columns.size() != 1)
            return false;
        const jet::TableSpec& table = specOf(constraint.table);
        const std::size_t place = table.placeOf(constraint.columns.front());
        return place < table.columns.size() && // and not "tableoid"
               table.columns[place].type == jet::ColumnType::byte &&
               constraint.condition.ends_with(" <= 255))");
    }

    void takeNotNull() {
        const ServerRows rows = wire_.run(kNotNull);
        for (int row = 0; row < rows.rows(); ++row)
            notes_.at(*rows.field(row, 0)).set(*rows.field(row, 1), "Required", true);
    }

    void takeDefaults() {
        std::map<std::pair<std::string, std::string>, std::string> now;
        const ServerRows rows = wire_.run(kDefaults);
        for (int row = 0; row < rows.rows(); ++row)
            now[{*rows.field(row, 0), *rows.field(row, 1)}] = *rows.field(row, 2);
        for (const KeptRule& rule : kept_) {
            if (rule.what != kDefault)
                continue;
            const auto still = now.find({rule.table, rule.column});
            if (still != now.end() && still->second == rule.definition)
                now.erase(still);
            else if (const auto notes = notes_.find(rule.table); notes != notes_.end())
                notes->second.remove(rule.column, kDefault);
        }
        for (const auto& [column, sql] : now) {
            const auto notes = notes_.find(column.first);
            if (notes == notes_.end())
                continue;
            if (const auto text = valueText(sql); text && isUnderstood(*text, column.first))
                notes->second.set(column.second, kDefault, *text);
            else
                tell("o valor inicial do campo " + inMarks(column.second) + " da tabela " +
                     inMarks(column.first) + ", " + sql);
        }
    }

    void tell(const std::string& what) {
        told_.push_back("No arquivo não se diz, e não foi para ele, " + what + ".");
    }

    ServerWire& wire_;
    std::span<const ServerTableSpec> tables_;
    jet::Extras extras_;
    std::vector<KeptRule> kept_;
    std::vector<ServerConstraint> constraints_;
    std::map<std::string, Notes> notes_;
    std::vector<std::string> told_;
};

} // namespace

ServerRules serverRules(ServerWire& wire, std::span<const ServerTableSpec> tables) {
    return RuleReader(wire, tables).read();
}

} // namespace ado
