#include "jet/CheckCatalog.h"

#include "jet/Names.h"
#include "jet/RowCursor.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::uint32_t kRoot = 0x0F000000;
constexpr std::uint32_t kPageMask = 0x00FFFFFF;
constexpr std::uint32_t kSystemFlag = 0x80000000;
constexpr std::uint32_t kHiddenFlag = 0x00000002;
constexpr std::int64_t kTable = 1;
constexpr std::int64_t kLinkedOdbc = 4;
constexpr std::int64_t kLinked = 6;
constexpr std::uint32_t kCoreTables[] = {2, 3, 4, 5};
constexpr const char* kWhere = "catálogo";

struct Container {
    std::uint32_t id;
    const char* name;
};
constexpr Container kContainers[] = {
    {0x0F000001, "Tables"       },
    {0x0F000002, "Databases"    },
    {0x0F000003, "Relationships"}
};

std::string inQuotes(const std::string& name) { return "\"" + name + "\""; }

} // namespace

CatalogCheck::CatalogCheck(const CheckContext& context, const TableCheck& objects)
    : context_(context) {
    readObjects(objects);
    compareObjects(objects);
}

std::optional<std::size_t> CatalogCheck::columnOf(const TableCheck& table, const char* name) const {
    const auto& columns = table.definition().columns;
    const auto found = std::ranges::find(columns, foldedName(name),
                                         [](const Column& c) { return foldedName(c.name); });
    if (found != columns.end())
        return static_cast<std::size_t>(found - columns.begin());
    context_.findings.error(table.definition().page(), kWhere,
                            "uma tabela de sistema não tem uma das suas colunas", inQuotes(name));
    return std::nullopt;
}

void CatalogCheck::readObjects(const TableCheck& objects) {
    const auto id = columnOf(objects, "Id");
    const auto parent = columnOf(objects, "ParentId");
    const auto name = columnOf(objects, "Name");
    const auto type = columnOf(objects, "Type");
    const auto flags = columnOf(objects, "Flags");
    if (!id || !parent || !name || !type || !flags)
        return;
    RowReader reader(context_.pager, objects.definition());
    std::string text;
    for (std::size_t i = 0; i < objects.rowCount(); ++i) {
        try {
            const RowView* row = reader.read(objects.row(i));
            if (row == nullptr)
                continue;
            row->text(*name, text);
            objects_.push_back({objects.row(i), static_cast<std::uint32_t>(row->integer(*id)),
                                static_cast<std::uint32_t>(row->integer(*parent)), text,
                                row->integer(*type),
                                static_cast<std::uint32_t>(row->integer(*flags))});
        } catch (const Error& error) {
            if (error.code() == Errc::io)
                throw;
            // What is wrong with the row has been told by checkRows().
        }
    }
}

void CatalogCheck::compareObjects(const TableCheck& objects) {
    std::set<std::uint32_t> ids;
    std::set<std::pair<std::uint32_t, std::string>> names;
    std::set<PageNo> definitions;
    const auto error = [&](const Object& object, const char* what) {
        context_.findings.error(object.row.page, kWhere, what,
                                inQuotes(object.name) + ", linha " +
                                    std::to_string(object.row.slot));
    };
    for (const Object& object : objects_) {
        if (!ids.insert(object.id).second)
            error(object, "dois objetos têm o mesmo número");
        if (!names.emplace(object.parent, foldedName(object.name)).second)
            error(object, "dois objetos têm o mesmo nome");
        if (object.type == kLinked || object.type == kLinkedOdbc)
            linked_.insert(foldedName(object.name));
        if (object.type != kTable)
            continue;
        const auto page = static_cast<PageNo>(object.id & kPageMask);
        if (number(page) < 2 || number(page) >= context_.pager.pageCount())
            error(object, "a definição de uma tabela está fora do arquivo");
        else if (!definitions.insert(page).second)
            error(object, "duas tabelas têm a mesma definição");
        else
            tables_.push_back({object.name, page,
                               (object.flags & (kSystemFlag | kHiddenFlag)) == 0 &&
                                   !object.name.starts_with("MSys")});
    }
    for (const Object& object : objects_)
        if (object.parent != kRoot && !ids.contains(object.parent))
            error(object, "o objeto está numa pasta que não existe");
    for (const Container& container : kContainers)
        if (!ids.contains(container.id))
            context_.findings.error(objects.definition().page(), kWhere, "falta um objeto",
                                    inQuotes(container.name));
    for (const std::uint32_t page : kCoreTables)
        if (!definitions.contains(PageNo{page})) {
            context_.findings.error(objects.definition().page(), kWhere,
                                    "falta uma tabela de sistema",
                                    "página " + std::to_string(page));
            tables_.push_back({"página " + std::to_string(page), PageNo{page}, false});
        }
}

void CatalogCheck::checkRelationships(
    const TableCheck& relationships, const std::vector<std::unique_ptr<TableCheck>>& tables) const {
    const auto table = columnOf(relationships, "szObject");
    const auto column = columnOf(relationships, "szColumn");
    const auto otherTable = columnOf(relationships, "szReferencedObject");
    const auto otherColumn = columnOf(relationships, "szReferencedColumn");
    if (!table || !column || !otherTable || !otherColumn)
        return;
    const auto exists = [&](const std::string& tableName, const std::string& columnName) {
        if (linked_.contains(foldedName(tableName)))
            return true;
        const auto found = std::ranges::find_if(tables, [&](const auto& candidate) {
            return foldedName(candidate->name()) == foldedName(tableName);
        });
        return found != tables.end() &&
               std::ranges::any_of((*found)->definition().columns, [&](const Column& candidate) {
                   return foldedName(candidate.name) == foldedName(columnName);
               });
    };
    RowReader reader(context_.pager, relationships.definition());
    for (std::size_t i = 0; i < relationships.rowCount(); ++i) {
        const RowId id = relationships.row(i);
        try {
            const RowView* row = reader.read(id);
            if (row == nullptr)
                continue;
            const auto text = [&](std::size_t at) {
                std::string buffer;
                row->text(at, buffer);
                return buffer;
            };
            const std::pair<std::string, std::string> ends[] = {
                {text(*table),      text(*column)     },
                {text(*otherTable), text(*otherColumn)}
            };
            for (const auto& [tableName, columnName] : ends)
                if (!exists(tableName, columnName))
                    context_.findings.error(
                        id.page, kWhere, "um relacionamento usa um campo que não existe",
                        inQuotes(std::string(tableName).append(".").append(columnName)));
        } catch (const Error& error) {
            if (error.code() == Errc::io)
                throw;
        }
    }
}

} // namespace jet
