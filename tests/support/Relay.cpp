#include "support/Relay.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// How long a message is that stands at `at`, whose length comes `kind` bytes later; 0 if it isn't
/// whole.
std::size_t lengthOf(const std::string& bytes, std::size_t kind) {
    if (bytes.size() < kind + 4)
        return 0;
    std::size_t length = kind;
    std::size_t number = 0;
    for (std::size_t i = kind; i < kind + 4; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    length += number;
    return length <= bytes.size() ? length : 0;
}

bool passOn(int to, const std::string& bytes) {
    return send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

/// What there is to read; false at the end.
bool take(int from, std::string& bytes) {
    char piece[16384];
    const ssize_t count = recv(from, piece, sizeof piece, 0);
    if (count > 0)
        bytes.append(piece, static_cast<std::size_t>(count));
    return count > 0;
}

std::string between(const std::string& text, const std::string& begin, char end) {
    const std::size_t at = text.find(begin) + begin.size();
    return text.substr(at, text.find(end, at) - at);
}

} // namespace

Relay::Relay(const std::string& address)
    : folder_(between(address, "host=", '&')), base_(between(address, "postgresql:///", '?')),
      listening_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    auto* const any = reinterpret_cast<sockaddr*>(&place);
    const int yes = 1;
    setsockopt(listening_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (bind(listening_, any, size) != 0 || listen(listening_, 8) != 0 ||
        getsockname(listening_, any, &size) != 0)
        throw std::runtime_error("no port to listen at");
    port_ = std::to_string(ntohs(place.sin_port));
    thread_ = std::thread([this] { serve(); });
}

Relay::~Relay() {
    over_ = true;
    thread_.join();
    ::close(listening_);
}

std::string Relay::address() const {
    return "postgresql://loja@localhost:" + port_ + "/" + base_ + "?sslmode=disable";
}

void Relay::stand(bool still) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    place.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port_)));
    if (still)
        shutdown(listening_, SHUT_RD); // which gives the port back as well
    else if (bind(listening_, reinterpret_cast<sockaddr*>(&place), sizeof place) != 0 ||
             listen(listening_, SOMAXCONN) != 0)
        throw std::runtime_error("the port is gone");
    still_ = still;
}

void Relay::cut(Cut when, const std::string& words, int times) {
    const std::lock_guard lock(mutex_);
    when_ = when;
    words_ = words;
    times_ = times;
}

void Relay::serve() {
    const auto drop = [](const Line& line) {
        ::close(line.program);
        ::close(line.server);
    };
    while (!over_) {
        if (still_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            continue;
        }
        std::vector<pollfd> all{
            {listening_, POLLIN, 0}
        };
        for (const Line& line : open_) {
            all.push_back({line.program, POLLIN, 0});
            all.push_back({line.server, POLLIN, 0});
        }
        poll(all.data(), all.size(), 2);
        std::vector<Line> kept;
        const bool none = cutAll_.exchange(false);
        for (std::size_t i = 0; i < open_.size(); ++i) {
            Line& line = open_[i];
            const bool good = !none && (all[2 * i + 1].revents == 0 || fromProgram(line)) &&
                              (all[2 * i + 2].revents == 0 || fromServer(line));
            if (good)
                kept.push_back(std::move(line));
            else
                drop(line);
        }
        open_ = std::move(kept);
        if (all.front().revents != 0)
            admit();
    }
    for (const Line& line : open_)
        drop(line);
}

void Relay::admit() {
    Line line;
    line.program = accept(listening_, nullptr, nullptr);
    if (line.program < 0)
        return; // it has just been stopped
    line.server = socket(AF_UNIX, SOCK_STREAM, 0);
    const int yes = 1;
    setsockopt(line.program, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    (folder_ + "/.s.PGSQL.5432").copy(place.sun_path, sizeof place.sun_path - 1);
    if (closed_ || connect(line.server, reinterpret_cast<sockaddr*>(&place), sizeof place) != 0) {
        ::close(line.program);
        ::close(line.server);
        return;
    }
    ++lines_;
    open_.push_back(std::move(line));
}

/// Whether that is the statement that a line is to be cut at; which counts.
bool Relay::isHit(const std::string& message) {
    const std::lock_guard lock(mutex_);
    const char kind = message.front();
    if (words_.empty() || (kind != 'P' && kind != 'Q'))
        return false;
    constexpr std::size_t kHead = 5;
    // A statement that is prepared stands behind its name.
    const std::size_t sql = kind == 'Q' ? kHead : message.find('\0', kHead) + 1;
    if (message.compare(sql, words_.size(), words_) != 0)
        return false;
    if (--times_ == 0)
        words_.clear();
    return true;
}

bool Relay::fromProgram(Line& line) {
    if (!take(line.program, line.said))
        return false;
    if (!line.asking && line.started)
        std::this_thread::sleep_for(delay_.load());
    line.asking = true;
    bool last = false;
    std::string through;
    while (const std::size_t length = lengthOf(line.said, line.started ? 1 : 0)) {
        const std::string message = line.said.substr(0, length);
        line.said.erase(0, length);
        if (line.started && isHit(message)) {
            if (when_ == Cut::before)
                return false;
            (when_ == Cut::at ? last : when_ == Cut::never ? line.still : line.cutting) = true;
        }
        if (line.started && message.front() == 'S')
            ++questions_;
        line.started = true;
        through += message;
    }
    return passOn(line.server, through) && !last;
}

bool Relay::fromServer(Line& line) {
    if (!take(line.server, line.answered))
        return false;
    line.asking = false;
    std::string through;
    bool ended = false;
    while (const std::size_t length = lengthOf(line.answered, 1)) {
        ended = ended || line.answered.front() == 'Z';
        through += line.answered.substr(0, length);
        line.answered.erase(0, length);
    }
    if (line.cutting)
        return !ended;
    if (line.still && !through.empty())
        stand(true);
    return passOn(line.program, through);
}
