#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Stands between programs and a server, on this machine: counts what they ask, delays it, and cuts
/// their lines where it is told to.
class Relay {
public:
    /// `address`: of a database of the server, reached by a socket's folder ("?...host=/folder").
    explicit Relay(const std::string& address);
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;
    ~Relay();

    /// Of the same database, by way of this.
    [[nodiscard]] std::string address() const;

    /// When a statement comes that begins with `words`, the line of whoever sends it is cut,
    /// so often.
    enum class Cut : std::uint8_t {
        before,   ///< and the server doesn't get it
        at,       ///< as soon as the server has got it
        answered, ///< when the server has answered, of which the program hears nothing
        never     ///< but as it answers that, the server begins to stand still
    };
    void cut(Cut when, const std::string& words, int times = 1);
    /// All lines, at once.
    void cutAll() { cutAll_ = true; }
    /// Nobody gets through, until it is taken back.
    void close(bool closed) { closed_ = closed; }
    /// As a server that stands still: lines hold, nothing comes through, and nobody new is let in.
    void stand(bool still);
    /// How long each question takes to the server and back.
    void setDelay(std::chrono::milliseconds delay) { delay_ = delay; }
    /// How often the server has been asked so far, and its answers awaited or not.
    [[nodiscard]] std::uint64_t questions() const { return questions_; }
    /// Lines that have been made so far.
    [[nodiscard]] int lines() const { return lines_; }

private:
    struct Line {
        int program = -1;
        int server = -1;
        std::string said;     ///< by the program, up to a whole message
        std::string answered; ///< by the server
        bool started = false; ///< the first message, which has no kind, is over
        bool asking = false;  ///< the last that went through came from the program
        bool cutting = false; ///< when the server has answered
        bool still = false;   ///< from its answer on
    };
    void serve();
    void admit();
    [[nodiscard]] bool fromProgram(Line& line);
    [[nodiscard]] bool fromServer(Line& line);
    [[nodiscard]] bool isHit(const std::string& message);

    std::string folder_;
    std::string base_;
    int listening_ = -1;
    std::string port_;
    std::vector<Line> open_;
    std::mutex mutex_; ///< of the next three
    std::string words_;
    int times_ = 1;
    Cut when_ = Cut::before;
    std::atomic<bool> cutAll_ = false;
    std::atomic<bool> closed_ = false;
    std::atomic<bool> still_ = false;
    std::atomic<bool> over_ = false;
    std::atomic<std::chrono::milliseconds> delay_{std::chrono::milliseconds(0)};
    std::atomic<std::uint64_t> questions_ = 0;
    std::atomic<int> lines_ = 0;
    std::thread thread_;
};
