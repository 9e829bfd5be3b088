#pragma once

#include "ado/file/FileSession.h"
#include "ado/file/Query.h"
#include "ado/provider/Cursor.h"

namespace ado {

/// The rows of a statement over the tables of a file, read live.
class FileCursor final : public Cursor {
public:
    /// @throws Error{syntax, notFound}.
    FileCursor(FileSession& session, const std::string& source, CursorType type,
               CommandType command);

    [[nodiscard]] QueryFields& fields() noexcept override { return query_.fields(); }
    [[nodiscard]] bool live() const noexcept override { return query_.live(); }
    [[nodiscard]] bool updatable() const noexcept override { return query_.updatable(); }
    [[nodiscard]] std::span<const jet::Column> columns(std::size_t table) const override {
        return query_.tables()[table]->columns();
    }
    [[nodiscard]] bool takesEmptyText(const QueryField& field) override;
    [[nodiscard]] std::optional<std::string> refusal(const QueryField& field,
                                                     const jet::Value& value) override;
    [[nodiscard]] const std::string& filter() const noexcept override { return query_.filter(); }
    [[nodiscard]] const std::string& sort() const noexcept override { return query_.sort(); }
    void setFilter(const std::string& condition) override { query_.setFilter(condition); }
    void setSort(const std::string& fields) override { query_.setSort(fields); }

    // Walking (FileCursor.cpp)
    void reload() override;
    void refresh() override;
    void catchUp() override;
    [[nodiscard]] bool empty() override { return rows_->empty(); }
    [[nodiscard]] std::int64_t count() override { return rows_->count(); }
    void find(const std::string& criterion) override;

    // The row (FileCursorRow.cpp)
    [[nodiscard]] jet::Value value(const QueryField& field) override;
    [[nodiscard]] State state(std::size_t table) override;
    [[nodiscard]] std::optional<std::uint64_t> version() override;
    [[nodiscard]] std::vector<std::string> writersSince(std::uint64_t moment) const override;
    [[nodiscard]] std::optional<std::uint64_t> versionToEdit() override;
    [[nodiscard]] std::optional<std::uint64_t> versionToChange() override;
    void forgetSeen() noexcept override { seen_.reset(); }
    void insert(Given given, const Stored& stored) override;
    void update(Given given, std::optional<std::uint64_t> expected, const Stored& stored) override;
    [[nodiscard]] std::optional<std::uint64_t>
    versionToErase(std::optional<std::uint64_t> asShown) override;
    void erase(std::optional<std::uint64_t> expected) override;

protected:
    bool first() override { return rows_->first(); }
    bool last() override { return rows_->last(); }
    bool next() override { return rows_->next(); }
    bool previous() override { return rows_->previous(); }
    void arrived() noexcept override;

private:
    /// Takes in what has happened through the connection since last time: rows erased go at once.
    void applyChanges();
    /// Asks for the rows anew; the place stays with its row.
    void renew();
    /// Others have written: finds out whether the row stood on is still the same.
    void checkPlace();
    /// Whether the row is there and, if its key is known, has it still.
    [[nodiscard]] bool isSameRow();
    /// Of an error of reading the row: where others change the file, the page of an erased row may
    /// belong to another table.
    [[nodiscard]] bool meansErased(const jet::Error& error) const;

    /// The row of a table at the place it stands on, or null where an outer join has none.
    [[nodiscard]] const jet::RowView* view(std::size_t table);
    /// The same of the one table of an updatable one, from here on `seen_`.
    [[nodiscard]] const jet::RowView& see();
    /// Whether the current row is still as it was when it was first read.
    [[nodiscard]] bool asSeen();
    void claim();

    [[nodiscard]] jet::Table& table() const { return *query_.tables().front(); }
    /// If the query is live, and if it is updatable: see Query::rows().
    [[nodiscard]] LiveRows& liveRows() const { return static_cast<LiveRows&>(*rows_); }
    [[nodiscard]] TableRows& tableRows() const { return static_cast<TableRows&>(*rows_); }

    FileSession& session_;
    bool dynamic_;     ///< a list takes in what others do
    bool forwardOnly_; ///< of a join, or computed
    Query query_;
    std::unique_ptr<Rows> rows_;
    std::vector<jet::RowReader> readers_; ///< one for each table

    LogPosition applied_;             ///< the changes taken in
    bool knowsAll_ = true;            ///< none were missed since the rows were asked for
    bool outdated_ = false;           ///< others have written since the rows were asked for
    bool unsure_ = false;             ///< and since the place was last checked
    std::vector<jet::RowId> changed_; ///< or added: rows that the next refresh() looks at

    std::optional<std::size_t> seen_; ///< a hash of the current row as first read
    std::vector<jet::Value> seenKey_; ///< its key's values, as of then
};

} // namespace ado
