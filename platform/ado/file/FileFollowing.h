#pragma once

#include "ado/provider/Provider.h"
#include "jet/TableFollower.h"

namespace ado {

/// Follows the pages of a table.
class FileFollowing final : public Following {
public:
    /// @throws Error{notFound, unsupported}.
    FileFollowing(jet::Database& database, const std::string& table,
                  const std::vector<std::string>& columns, Take take);

    bool follow(std::chrono::microseconds time) override;
    [[nodiscard]] bool isComplete() const override { return follower_.isComplete(); }
    [[nodiscard]] double progress() const override { return follower_.progress(); }
    [[nodiscard]] std::optional<jet::Error> damage() const override { return follower_.damage(); }

private:
    jet::TableFollower follower_;
    Take take_;
    std::vector<std::size_t> columns_;
};

} // namespace ado
