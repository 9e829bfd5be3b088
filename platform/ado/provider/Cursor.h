#pragma once

#include "ado/provider/QueryFields.h"
#include "jet/Table.h"
#include "jet/Types.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ado {

/// Others have changed or deleted the row. @throws Error{conflict}.
[[noreturn]] void goneOrChanged();

/// What a provider has for one open recordset: the fields of its statement, its rows in their
/// order, and a place among them. Knows what others and this connection have done to them. What is
/// made of it, edits, ends and their errors, is the recordset's, and the same for all providers.
class Cursor {
public:
    /// Where it stands. `gone`: the row it stood on has been erased.
    enum class At : std::uint8_t { beforeFirst, row, gone, afterLast };

    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;
    virtual ~Cursor() = default;

    [[nodiscard]] virtual QueryFields& fields() noexcept = 0;
    /// Whether its rows are rows of tables; else they are computed.
    [[nodiscard]] virtual bool live() const noexcept = 0;
    /// Whether rows can be changed: they are those of one table.
    [[nodiscard]] virtual bool updatable() const noexcept = 0;

    // Of a live one.
    /// The table's columns, of which `field` is one.
    [[nodiscard]] virtual std::span<const jet::Column> columns(std::size_t table) const = 0;
    [[nodiscard]] virtual bool takesEmptyText(const QueryField& field) = 0;
    /// As jet::Table::refusal().
    [[nodiscard]] virtual std::optional<std::string> refusal(const QueryField& field,
                                                             const jet::Value& value) = 0;

    [[nodiscard]] virtual const std::string& filter() const noexcept = 0;
    [[nodiscard]] virtual const std::string& sort() const noexcept = 0;
    /// "" takes it away. @throws Error{syntax, notFound}: the old one stays. What comes of it is
    /// shown by reload().
    virtual void setFilter(const std::string& condition) = 0;
    virtual void setSort(const std::string& fields) = 0;

    // ---- the place

    [[nodiscard]] At at() const noexcept { return at_; }
    /// The same for who asks without having come by catchUp().
    [[nodiscard]] virtual At place() { return at_; }
    /// @throws Error{noCurrentRow}, Error{conflict} if the row was erased by others.
    void requireRow() const;
    // Each ends beyond the last, or before the first, where there is no row; catchUp() comes
    // before.
    void moveFirst();
    void moveLast();
    /// From the first, if it stands before it.
    void moveNext();
    /// From the last, if it stands behind it.
    void movePrevious();
    /// Asks for the rows anew and goes to the first.
    virtual void reload() = 0;
    /// The same, for the changed rows only where that can be told.
    virtual void refresh() = 0;
    /// The same for who wants to walk over all of them: what nobody is known to have changed
    /// needn't be asked for again.
    virtual void restart() { refresh(); }
    /// Takes in what has happened through this connection, and what others have done, as the kind
    /// of cursor promises.
    virtual void catchUp() = 0;
    /// Whether there are no rows.
    [[nodiscard]] virtual bool empty() = 0;
    [[nodiscard]] virtual std::int64_t count() = 0;
    /// To the first row that meets the criterion, from the one stood on; behind the last if there
    /// is none. @throws Error{syntax, notFound}, Error{misuse} if not live.
    virtual void find(const std::string& criterion) = 0;
    /// The same from the first row on, wherever it stands.
    virtual void findFirst(const std::string& criterion);

    // ---- the row stood on

    /// @throws as requireRow().
    [[nodiscard]] virtual jet::Value value(const QueryField& field) = 0;
    /// A fingerprint of all that is stored of it in a table, and the moment: see Shown.
    /// @throws as requireRow().
    struct State {
        std::uint64_t version = 0;
        std::uint64_t moment = 0; ///< 0 where an outer join has no row
    };
    [[nodiscard]] virtual State state(std::size_t table) = 0;
    /// The fingerprint alone, of an updatable one; nothing if it stands on no row.
    [[nodiscard]] virtual std::optional<std::uint64_t> version() = 0;
    /// Who may have changed anything since that moment, as far as it is known.
    [[nodiscard]] virtual std::vector<std::string> writersSince(std::uint64_t moment) const = 0;
    /// The row is about to be edited: its fingerprint, nothing if it isn't any more as it was when
    /// it was first read here. @throws as requireRow().
    [[nodiscard]] virtual std::optional<std::uint64_t> versionToEdit() = 0;
    /// The row is about to be changed or erased: its fingerprint by now, nothing if it stands on no
    /// row. In a transaction nobody else changes it from here on, or the change is refused as
    /// goneOrChanged(). @throws Error{locked, readOnly}.
    [[nodiscard]] virtual std::optional<std::uint64_t> versionToChange() = 0;
    /// What was read of it counts as not read.
    virtual void forgetSeen() noexcept = 0;

    // ---- changes, of an updatable one; each throws as those of jet::Table, and nothing is changed

    using Given = std::span<const jet::Assignment>;
    /// Called when it is stored, before the rows are looked at again.
    using Stored = std::function<void()>;
    /// Adds a row and goes to it.
    virtual void insert(Given given, const Stored& stored) = 0;
    /// Changes the row stood on. @throws also as goneOrChanged() if it is none, or not as expected.
    virtual void update(Given given, std::optional<std::uint64_t> expected,
                        const Stored& stored) = 0;
    /// That the row stood on can be erased: what erase() is to be given. `asShown`: its fingerprint
    /// as somebody has seen it; else it must be as it was first read here.
    /// @throws as requireRow() and goneOrChanged().
    [[nodiscard]] virtual std::optional<std::uint64_t>
    versionToErase(std::optional<std::uint64_t> asShown) = 0;
    /// It stands on no row then.
    virtual void erase(std::optional<std::uint64_t> expected) = 0;

protected:
    Cursor() = default;

    // Each moves and says whether there is a row there; where there is none, first() or last() must
    // come next. When the row it stood on has been erased, next() and previous() go to its
    // neighbours.
    virtual bool first() = 0;
    virtual bool last() = 0;
    virtual bool next() = 0;
    virtual bool previous() = 0;
    /// It stands elsewhere now.
    virtual void arrived() noexcept = 0;

    void arrive(bool found, At otherwise);
    void lose(bool byOthers) noexcept;

private:
    At at_ = At::afterLast;
    bool byOthers_ = false; ///< At::gone, and not by us
};

} // namespace ado
