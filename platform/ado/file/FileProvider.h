#pragma once

#include "ado/file/FileSession.h"
#include "ado/provider/Provider.h"

namespace ado {

/// A database file as provider.
class FileProvider final : public Provider {
public:
    /// `disk` is null for the system's, `recorder` for none.
    FileProvider(const std::filesystem::path& path, jet::Disk* disk, Recorder* recorder)
        : session_(path, disk, recorder) {}

    void begin() override { session_.begin(); }
    void commit() override { session_.commit(); }
    void commitLater() override { session_.commitLater(); }
    void rollback() override { session_.rollback(); }
    [[nodiscard]] bool inTransaction() const noexcept override { return session_.inTransaction(); }
    void flush() override { session_.flush(); }
    void flushIfDue() override { session_.flushIfDue(); }
    void discard() override { session_.discard(); }
    [[nodiscard]] bool hasUndone() noexcept override { return session_.hasUndone(); }
    void end() override;

    [[nodiscard]] std::unique_ptr<Cursor> open(const std::string& source, CursorType type,
                                               LockType lock, CommandType command) override;
    [[nodiscard]] std::unique_ptr<Following> follow(const std::string& table,
                                                    const std::vector<std::string>& columns,
                                                    Following::Take take) override;

    [[nodiscard]] std::string place() const override;
    [[nodiscard]] std::string identity() const override;
    [[nodiscard]] std::optional<std::string> readOnlyReason() override;
    [[nodiscard]] bool isBroken() const noexcept override;
    [[nodiscard]] bool hasTable(std::string_view name) override;
    [[nodiscard]] TableShape shape(std::string_view name) override;
    [[nodiscard]] std::vector<std::size_t> keyOf(std::string_view table) override;
    [[nodiscard]] std::optional<std::string> readOnlyReason(std::string_view table) override;
    void createTable(const jet::TableSpec& spec) override;
    void claim() override;
    [[nodiscard]] Tally tally() const noexcept override;
    void onSnapshot(const std::function<void()>& body) override;
    [[nodiscard]] std::shared_ptr<void> hold() override;
    [[nodiscard]] std::uint64_t generation() override;
    [[nodiscard]] bool isTakenByOther() const override;
    [[nodiscard]] jet::Database* file() noexcept override { return &session_.database(); }

private:
    [[nodiscard]] jet::Database& database() noexcept { return session_.database(); }
    [[nodiscard]] const jet::Database& database() const noexcept { return session_.database(); }

    FileSession session_;
};

} // namespace ado
