#include "jet/check/CheckCatalog.h"

#include "jet/Names.h"
#include "jet/row/SystemTables.h"
#include "jet/rule/Properties.h"

#include <algorithm>

namespace jet {

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
    const auto properties = columnOf(objects, "LvProp");
    if (!id || !parent || !name || !type || !flags || !properties)
        return;
    forEachRow(objects, [&](RowId at, const RowView& row) {
        std::string text;
        row.text(*name, text);
        objects_.push_back({at, static_cast<std::uint32_t>(row.integer(*id)),
                            static_cast<std::uint32_t>(row.integer(*parent)), std::move(text),
                            row.integer(*type), static_cast<std::uint32_t>(row.integer(*flags))});
        checkProperties(objects_.back(), row, *properties);
    });
}

void CatalogCheck::checkProperties(const Object& object, const RowView& row,
                                   std::size_t column) const {
    if (object.type != tableObject)
        return;
    const Value stored = row.value(column);
    const auto* const bytes = std::get_if<Bytes>(&stored);
    if (bytes == nullptr)
        return;
    try {
        const TextCodec names(context_.pager.format().version, context_.texts.codePage);
        (void)parseProperties(*bytes, names, object.row.page);
    } catch (const Error& error) {
        context_.findings.error(object.row.page, "tabela " + inQuotes(object.name),
                                "as propriedades e regras não podem ser lidas", error.what());
    }
}

void CatalogCheck::compareObjects(const TableCheck& objects) {
    std::set<std::pair<std::uint32_t, std::string>> names;
    std::set<PageNo> definitions;
    const auto error = [&](const Object& object, const char* what) {
        context_.findings.error(object.row.page, kWhere, what,
                                inQuotes(object.name) + ", linha " +
                                    std::to_string(object.row.slot));
    };
    for (const Object& object : objects_) {
        if (!ids_.insert(object.id).second)
            error(object, "dois objetos têm o mesmo número");
        if (!names.emplace(object.parent, foldedName(object.name)).second)
            error(object, "dois objetos têm o mesmo nome");
        if (object.type == linkedTableObject || object.type == linkedOdbcObject)
            linked_.insert(foldedName(object.name));
        if (object.type != tableObject)
            continue;
        const auto page = static_cast<PageNo>(object.id & kObjectPageMask);
        if (number(page) < kFirstDefinition || number(page) >= context_.pager.pageCount())
            error(object, "a definição de uma tabela está fora do arquivo");
        else if (!definitions.insert(page).second)
            error(object, "duas tabelas têm a mesma definição");
        else
            tables_.push_back({object.name, page, isUserTable(object.flags, object.name)});
    }
    for (const Object& object : objects_)
        if (object.parent != kRootObject && !ids_.contains(object.parent))
            error(object, "o objeto está numa pasta que não existe");
    const PageNo here = objects.definition().page();
    for (const CoreObject& core : kCoreObjects) {
        const auto page = static_cast<PageNo>(core.id);
        if (core.type == containerObject && !ids_.contains(core.id)) {
            context_.findings.error(here, kWhere, "falta um objeto", inQuotes(core.name));
        } else if (core.type == tableObject && !definitions.contains(page)) {
            const std::string name = "página " + std::to_string(number(page));
            context_.findings.error(here, kWhere, "falta uma tabela de sistema", name);
            tables_.push_back({name, page, false});
        }
    }
}

void CatalogCheck::checkRights(const TableCheck& rights) const {
    const auto object = columnOf(rights, "ObjectId");
    if (!object)
        return;
    forEachRow(rights, [&](RowId id, const RowView& row) {
        const auto whose = static_cast<std::uint32_t>(row.integer(*object));
        if (!ids_.contains(whose))
            context_.findings.warning(id.page, kWhere,
                                      "uma permissão é de um objeto que não existe",
                                      "linha " + std::to_string(id.slot));
    });
}

} // namespace jet
