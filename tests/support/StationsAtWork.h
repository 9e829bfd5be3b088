#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ado {
class Connection;
}

/// Many stations at one server, each a process of its own, that insert, change, settle, transfer,
/// purge and print as clerks do, while one more tells the time and another one listens to it.
///
/// Who reckons from what he reads says so first, and needs one try. Who changes what his window
/// showed before is told if another was faster, and does it again: at once, which no clerk does,
/// all of them in the same few rows, or each in any of many, as in a shop.
class StationsAtWork {
public:
    /// Of a connection to a shop without any rows; what they do is written down in a folder.
    StationsAtWork(std::string connection, std::filesystem::path folder)
        : connection_(std::move(connection)), folder_(std::move(folder)) {}

    /// Adds what they work on: clients whose limits are raised, cheques whose sum never changes.
    static void addRows(ado::Connection& shop);
    static constexpr int kRaised = 3;        ///< clients, the first ones
    static constexpr int kSteadyCheques = 6; ///< the first ones

    /// So many clerks do so many things each, or whatever they can in some seconds, if that isn't
    /// 0.
    void work(int clerks, int rounds, int seconds);

    [[nodiscard]] const std::vector<std::string>& errors() const noexcept { return errors_; }
    /// What all of them have told of a kind: of work how long it took, in microseconds.
    [[nodiscard]] const std::vector<std::int64_t>& told(const std::string& kind) {
        return told_[kind];
    }
    /// How long each kind of work took, with all its tries, and one of them.
    void print();

private:
    class Station;
    [[nodiscard]] pid_t start(int number, const std::function<void(Station&)>& work) const;
    void gather(int stations);

    std::string connection_;
    std::filesystem::path folder_;
    std::vector<std::string> errors_;
    std::map<std::string, std::vector<std::int64_t>> told_;
};
