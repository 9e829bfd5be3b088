#include "jet/copy/LiveCopy.h"

#include "jet/Error.h"
#include "jet/page/Header.h"
#include "jet/share/Sharing.h"

#include <algorithm>
#include <limits>
#include <set>
#include <vector>

namespace jet {

namespace {

/// So many times the size that the file has had is read before the rest is taken at once, and so
/// often that is tried.
constexpr std::uint64_t kRounds = 6;
constexpr int kLastTries = 5;

/// A file at one moment, to be told from itself later.
struct Moment {
    CommitPairs pairs;
    std::uint64_t size = 0;
    std::int64_t changedAt = 0;
    friend bool operator==(const Moment&, const Moment&) = default;
};

class Copying {
public:
    Copying(const std::filesystem::path& database, File& target)
        : database_(database, File::Mode::read, target.disk()),
          format_(formatOf(readHeader(database_).version)),
          stations_(database_, format_, false, [](const auto&) {}), target_(target),
          patience_(kRounds * database_.size()) {}

    /// Copies one part. True when the copy is complete.
    bool part();

private:
    struct Piece {
        std::uint64_t at;
        Bytes bytes;
    };
    /// Nobody of us writes while one lives.
    class Section {
    public:
        explicit Section(Sharing& stations) : stations_(stations) { stations_.beginReading(); }
        Section(const Section&) = delete;
        Section& operator=(const Section&) = delete;
        ~Section() { stations_.endReading(); }

    private:
        Sharing& stations_;
    };

    [[nodiscard]] Moment moment() const {
        return {CommitPairs(database_, format_), database_.size(), database_.changedAt()};
    }
    [[nodiscard]] std::uint64_t rest() const {
        return now_.size - next_ + again_.size() * format_.pageSize;
    }
    void beginAnew() {
        next_ = 0;
        again_.clear();
    }
    void learn(const Moment& now);
    [[nodiscard]] bool learnFromJournal(const Moment& now);
    [[nodiscard]] std::uint64_t partOf(std::uint64_t rest);
    [[nodiscard]] std::vector<Piece> read(std::uint64_t most);
    [[nodiscard]] Piece piece(std::uint64_t at, std::uint64_t size) const;

    File database_;
    const Format& format_;
    Sharing stations_;
    File& target_;

    Moment now_;
    std::uint64_t next_ = 0;        ///< everything before it has been copied
    std::set<std::uint64_t> again_; ///< where pages before next_ have changed since
    std::uint64_t read_ = 0;        ///< bytes in all
    std::uint64_t patience_;        ///< so many are read in parts
    int lastTries_ = 0;
};

bool Copying::part() {
    std::vector<Piece> pieces;
    bool complete = false;
    {
        const Section section(stations_);
        learn(moment());
        pieces = read(partOf(rest()));
        complete = rest() == 0;
        // A program that heeds no lock may have written while we read.
        if (moment() != now_) {
            beginAnew();
            return false;
        }
    }
    for (const Piece& copied : pieces)
        target_.write(copied.at, copied.bytes);
    if (complete)
        target_.truncate(now_.size);
    return complete;
}

/// What has to be copied again.
void Copying::learn(const Moment& now) {
    if (now == now_)
        return;
    if (!learnFromJournal(now))
        beginAnew();
    now_ = now;
}

/// True if all that was written since the last part is what the journal tells of.
bool Copying::learnFromJournal(const Moment& now) {
    if (next_ == 0)
        return true;
    if (now.size < now_.size)
        return false;
    const auto changed =
        Journal::changesBetween(now_.pairs, now.pairs, database_.path(), format_, database_.disk(),
                                std::numeric_limits<std::uint32_t>::max());
    if (!changed)
        return false;
    again_.insert(0); // the pairs are on the first page
    for (const PageNo page : *changed)
        if (const std::uint64_t at = std::uint64_t{number(page)} * format_.pageSize; at < next_)
            again_.insert(at);
    return true;
}

/// How much of the rest is read without a pause for those who want to write.
std::uint64_t Copying::partOf(std::uint64_t rest) {
    if (read_ <= patience_)
        return LiveCopy::kPart;
    if (rest > LiveCopy::kMostAtOnce || ++lastTries_ > kLastTries)
        throw Error(Errc::locked, "O banco de dados está sendo alterado sem pausa.");
    return LiveCopy::kMostAtOnce;
}

std::vector<Copying::Piece> Copying::read(std::uint64_t most) {
    std::vector<Piece> pieces;
    while (most > 0 && rest() > 0) {
        if (!again_.empty()) {
            pieces.push_back(piece(*again_.begin(), format_.pageSize));
            again_.erase(again_.begin());
        } else {
            pieces.push_back(piece(next_, most));
            next_ += pieces.back().bytes.size();
        }
        const std::uint64_t got = pieces.back().bytes.size();
        read_ += got;
        most -= std::min(most, got);
    }
    return pieces;
}

Copying::Piece Copying::piece(std::uint64_t at, std::uint64_t size) const {
    Piece piece{at, Bytes(std::min(size, now_.size - at))};
    database_.read(at, piece.bytes);
    return piece;
}

} // namespace

void LiveCopy::into(File& target, const std::filesystem::path& database,
                    const std::stop_token& stop) {
    Copying copying(database, target);
    do {
        if (stop.stop_requested())
            throw Error(Errc::cancelled, "A cópia foi interrompida.");
    } while (!copying.part());
    target.sync();
}

} // namespace jet
