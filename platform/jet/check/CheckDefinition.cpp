#include "jet/check/CheckDefinition.h"

#include "jet/Names.h"

#include <algorithm>
#include <set>

namespace jet {

namespace {

constexpr std::size_t kNextPageAt = 4;
constexpr std::size_t kPageHeader = 8;
constexpr std::size_t kLengthAt = 8;
constexpr std::size_t kMarkAt = 12; // Jet 4: repeated in every column and logical index
constexpr std::uint32_t kMark = 0x659;
constexpr std::uint32_t kIndexMark = 0x783;
constexpr std::uint16_t kJet3Mark = 0x4356; // "VC"
constexpr std::uint8_t kUserTable = 0x4E;
constexpr std::uint8_t kSystemTable = 0x53;
constexpr std::uint16_t kListEnd = 0xFFFF;

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
            if (page.kind() != PageKind::definition || view.u8(1) != 1) {
                error("a página não é de definição de tabela", {}, at);
                return false;
            }
            if (format_.isJet3() && view.u16(2) != kJet3Mark)
                error("a marca da página de definição está errada", {}, at);
            const auto part = view.from(pages_ == 0 ? 0 : kPageHeader);
            bytes_.insert(bytes_.end(), part.begin(), part.end());
            ++pages_;
            at = static_cast<PageNo>(view.u32(kNextPageAt));
            if (number(at) == 0)
                return true;
        }
    }

    /// Walks the blocks from one end to the other.
    /// @throws Error{corrupt} where the definition ends too early.
    void walk() {
        const ByteView all(bytes_, first_);
        const std::uint32_t length = all.u32(kLengthAt);
        const ByteView view(all.sub(0, length), first_);
        if (!format_.isJet3())
            requireMark(view.u32(kMarkAt), kMark);
        const std::uint8_t kind = view.u8(format_.tableKindAt);
        if (kind != kUserTable && kind != kSystemTable)
            error("a definição não diz se a tabela é do usuário ou do sistema");
        const std::size_t columns = view.u16(format_.columnsAt);
        const std::size_t logical = view.u32(format_.logicalIndexesAt);
        const std::size_t real = view.u32(format_.realIndexesAt);

        // Counts come from the file: every step moves on inside `length`, or throws.
        std::size_t at = format_.definitionHeader;
        const auto block = [&](std::size_t size) {
            const ByteView part(view.sub(at, size), first_);
            at += size;
            return part;
        };
        const auto skipNames = [&](std::size_t count) {
            for (std::size_t i = 0; i < count; ++i)
                (void)block(format_.nameLengthSize == 1 ? block(1).u8(0) : block(2).u16(0));
        };
        for (std::size_t i = 0; i < real; ++i)
            (void)block(format_.statisticsSize);
        for (std::size_t i = 0; i < columns; ++i) {
            const ByteView column = block(format_.columnSize);
            if (!format_.isJet3())
                requireMark(column.u32(1), kMark);
        }
        skipNames(columns);
        for (std::size_t i = 0; i < real; ++i) {
            const ByteView index = block(format_.realIndexSize);
            if (!format_.isJet3())
                requireMark(index.u32(0), kIndexMark);
        }
        std::set<std::uint32_t> numbers;
        for (std::size_t i = 0; i < logical; ++i) {
            const ByteView index = block(format_.logicalIndexSize);
            if (!format_.isJet3())
                requireMark(index.u32(0), kMark);
            if (!numbers.insert(index.u32(format_.logicalIndexAt)).second)
                error("dois índices têm o mesmo número");
        }
        skipNames(logical);
        while (block(2).u16(0) != kListEnd)
            (void)block(8);
        if (at != length)
            error("o tamanho da definição está errado",
                  "diz " + std::to_string(length) + ", são " + std::to_string(at));
        if (pages_ > 1 && length <= bytes_.size() - (format_.pageSize - kPageHeader))
            context_.findings.warning(first_, where_, "a definição tem páginas de sobra");
        if (!format_.isJet3() && pages_ == 1 &&
            view.u16(2) != format_.pageSize - kPageHeader - length)
            context_.findings.warning(first_, where_,
                                      "os bytes livres da página de definição estão errados");
    }

private:
    void error(const char* what, const std::string& detail = {}) { error(what, detail, first_); }
    void error(const char* what, const std::string& detail, PageNo page) {
        context_.findings.error(page, where_, what, detail);
    }
    void requireMark(std::uint32_t found, std::uint32_t expected) {
        if (found != expected)
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
    const std::size_t mostFixed = format.pageSize - format.rowTableAt - 2;
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
