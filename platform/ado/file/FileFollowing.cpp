#include "ado/file/FileFollowing.h"

#include "jet/Error.h"

namespace ado {

namespace {

class PagesOwn final : public BlockRows {
public:
    PagesOwn(const std::vector<std::size_t>& columns, jet::PageRows& rows)
        : columns_(columns), rows_(rows) {}

    bool next() override {
        row_ = rows_.next();
        return row_ != nullptr;
    }
    [[nodiscard]] bool isNull(std::size_t column) const override {
        return row_->isNull(columns_[column]);
    }
    [[nodiscard]] jet::Value value(std::size_t column) const override {
        return row_->value(columns_[column]);
    }

private:
    const std::vector<std::size_t>& columns_;
    jet::PageRows& rows_;
    const jet::RowView* row_ = nullptr;
};

} // namespace

FileFollowing::FileFollowing(jet::Database& database, const std::string& table,
                             const std::vector<std::string>& columns, Take take)
    : follower_(database, database.table(table)), take_(std::move(take)) {
    const jet::Table& followed = database.table(table);
    for (const std::string& name : columns) {
        const auto place = followed.findColumn(name);
        if (!place)
            throw jet::Error(jet::Errc::notFound, "A tabela \"" + followed.name() +
                                                      "\" não tem o campo \"" + name + "\".");
        if (isLongValue(followed.columns()[*place].type))
            throw jet::Error(jet::Errc::unsupported,
                             "O campo \"" + name + "\" não pode ser acompanhado.");
        columns_.push_back(*place);
    }
}

bool FileFollowing::follow(std::chrono::microseconds time) {
    return follower_.follow(time, [this](jet::PageNo page, jet::PageRows& rows) {
        PagesOwn given(columns_, rows);
        take_(number(page), given);
    });
}

} // namespace ado
