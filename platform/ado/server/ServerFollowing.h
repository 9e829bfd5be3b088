#pragma once

#include "ado/provider/Provider.h"
#include "ado/server/ServerSession.h"

#include <set>

namespace ado {

/// Follows the blocks of a table's keys: all of them once, then those that the server tells of.
class ServerFollowing final : public Following, private NewsListener {
public:
    /// @throws Error{notFound, unsupported}.
    ServerFollowing(ServerSession& session, const std::string& table,
                    const std::vector<std::string>& columns, Take take);
    ~ServerFollowing() override;

    bool follow(std::chrono::microseconds time) override;
    [[nodiscard]] bool isComplete() const override { return begun_ && pending_.empty(); }
    [[nodiscard]] double progress() const override;
    [[nodiscard]] std::optional<jet::Error> damage() const override { return std::nullopt; }

private:
    void hear(std::string_view table, std::uint32_t block) override;
    void miss() override { begun_ = false; }
    void begin();
    void read(std::uint32_t block);

    ServerSession& session_;
    const ServerTable& table_;
    Take take_;
    std::vector<std::size_t> columns_;
    std::set<std::uint32_t> pending_;
    std::int64_t last_ = -1;  ///< the last block there has been
    std::size_t atFirst_ = 0; ///< blocks that there were to be read
    bool begun_ = false;
};

} // namespace ado
