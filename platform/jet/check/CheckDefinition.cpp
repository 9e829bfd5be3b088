#include "jet/check/CheckDefinition.h"

#include "jet/Names.h"
#include "jet/row/DefinitionReader.h"

#include <algorithm>
#include <set>

namespace jet {

namespace {

/// The definition's bytes as they stand, read apart from the parser that everybody else uses.
class RawDefinition {
public:
    RawDefinition(const CheckContext& context, PageNo first, const std::string& where)
        : context_(context), format_(context.pager.format()), first_(first), where_(where) {}

    /// Claims the pages. False if there is no whole definition.
    bool gather() {
        const PageLedger::Owner owner = context_.ledger.newOwner("definição da " + where_);
        for (PageNo at = first_;;) {
            if (!context_.ledger.claim(at, owner))
                return false;
            const PageRef page = context_.pager.read(at);
            const ByteView view = page.view();
            if (!isPage(page.bytes().data(), PageKind::definition)) {
                error("a página não é de definição de tabela", {}, at);
                return false;
            }
            if (format_.isJet3() &&
                view.load(DefinitionPageLayout::freeBytes) != kDefinitionPageMark)
                error("a marca da página de definição está errada", {}, at);
            const auto part = view.from(pages_ == 0 ? 0 : DefinitionPageLayout::size);
            bytes_.insert(bytes_.end(), part.begin(), part.end());
            ++pages_;
            at = view.load(DefinitionPageLayout::next);
            if (number(at) == 0)
                return true;
        }
    }

    /// Walks the blocks from one end to the other.
    /// @throws Error{corrupt} where the definition ends too early.
    void walk() {
        const DefinitionLayout& layout = format_.definition;
        const ByteView all(bytes_, first_);
        const std::uint32_t length = all.load(layout.length);
        const ByteView view(all.sub(0, length), first_);
        requireMark(view, layout.mark, kDefinitionMark);
        const std::uint8_t kind = view.load(layout.kind);
        if (kind != kUserTable && kind != kSystemTable)
            error("a definição não diz se a tabela é do usuário ou do sistema");
        const std::size_t columns = view.load(layout.columns);
        const std::size_t logical = view.load(layout.logicalIndexes);
        const std::size_t real = view.load(layout.realIndexes);

        // Counts come from the file: every step moves on inside `length`, or throws.
        DefinitionReader reader(format_, view);
        reader.skip(real, format_.statistics.size);
        for (std::size_t i = 0; i < columns; ++i)
            requireMark(reader.block(format_.column.size), format_.column.mark, kDefinitionMark);
        reader.skipNames(columns);
        for (std::size_t i = 0; i < real; ++i)
            requireMark(reader.block(format_.realIndex.size), format_.realIndex.mark, kIndexMark);
        std::set<std::uint32_t> numbers;
        for (std::size_t i = 0; i < logical; ++i) {
            const ByteView index = reader.block(format_.logicalIndex.size);
            requireMark(index, format_.logicalIndex.mark, kDefinitionMark);
            if (!numbers.insert(index.load(format_.logicalIndex.number)).second)
                error("dois índices têm o mesmo número");
        }
        reader.skipNames(logical);
        while (reader.longValueMaps()) {
        }
        if (reader.at() != length)
            error("o tamanho da definição está errado",
                  "diz " + std::to_string(length) + ", são " + std::to_string(reader.at()));
        const std::size_t perPage = format_.pageSize - DefinitionPageLayout::size;
        if (pages_ > 1 && length <= bytes_.size() - perPage)
            context_.findings.warning(first_, where_, "a definição tem páginas de sobra");
        if (!format_.isJet3() && pages_ == 1 &&
            view.load(DefinitionPageLayout::freeBytes) != perPage - length)
            context_.findings.warning(first_, where_,
                                      "os bytes livres da página de definição estão errados");
    }

private:
    void error(const char* what, const std::string& detail = {}) { error(what, detail, first_); }
    void error(const char* what, const std::string& detail, PageNo page) {
        context_.findings.error(page, where_, what, detail);
    }
    void requireMark(const ByteView& block, MaybeField<std::uint32_t> mark,
                     std::uint32_t expected) {
        if (mark && block.load(*mark) != expected)
            error("uma constante da definição está errada");
    }

    const CheckContext& context_;
    const Format& format_;
    PageNo first_;
    const std::string& where_;
    Bytes bytes_;
    std::size_t pages_ = 0;
};

/// What the parser accepts and a sound definition doesn't have.
void checkParsed(const CheckContext& context, const TableDefinition& table,
                 const std::string& where) {
    const auto error = [&](const std::string& what, const std::string& detail) {
        context.findings.error(table.page(), where, what, detail);
    };
    const auto requireUnique = [&](auto& names, const std::string& name, const char* what) {
        if (!names.insert(foldedName(name)).second)
            error(what, "\"" + name + "\"");
    };
    std::set<std::string> columns;
    std::set<std::uint16_t> longValues;
    const Format& format = context.pager.format();
    const std::size_t mostFixed = format.pageSize - format.dataPage.slot(1).at;
    for (const Column& column : table.columns) {
        requireUnique(columns, column.name, "duas colunas têm o mesmo nome");
        if (isLongValue(column.type))
            longValues.insert(column.number);
        if (column.fixed && column.type != ColumnType::boolean &&
            std::size_t{column.fixedOffset} + column.length > mostFixed)
            error("uma coluna não cabe na linha", "\"" + column.name + "\"");
    }
    std::set<std::string> indexes;
    std::vector<bool> named(table.realIndexes.size());
    for (const LogicalIndex& index : table.logicalIndexes) {
        requireUnique(indexes, index.name, "dois índices têm o mesmo nome");
        named[index.realIndex] = true;
        if (index.kind > LogicalIndex::Kind::relationship)
            error("um índice é de tipo desconhecido", "\"" + index.name + "\"");
    }
    // Kept up like the others, it costs only that.
    if (std::find(named.begin(), named.end(), false) != named.end())
        context.findings.warning(table.page(), where, "um índice não tem nome");

    std::set<std::uint16_t> listed;
    for (const LongValueMaps& maps : table.longValues)
        if (!listed.insert(maps.columnNumber).second)
            error("a lista dos mapas de valores longos repete uma coluna",
                  std::to_string(maps.columnNumber));
    if (listed != longValues)
        error("a lista dos mapas de valores longos não é a das colunas de texto longo", {});
}

} // namespace

std::optional<TableDefinition> checkDefinition(const CheckContext& context, PageNo first,
                                               const std::string& where) {
    RawDefinition raw(context, first, where);
    if (!raw.gather())
        return std::nullopt;
    try {
        raw.walk();
        TableDefinition table = parseDefinition(context.pager, first, context.texts);
        checkParsed(context, table, where);
        return table;
    } catch (const Error& error) {
        if (error.code() == Errc::io)
            throw;
        context.findings.error(first, where, "a definição da tabela não pode ser lida",
                               error.what());
        return std::nullopt;
    }
}

} // namespace jet
