#pragma once

#include "jet/page/Turns.h"
#include "jet/share/Attendance.h"
#include "jet/share/Committer.h"
#include "jet/share/Recovery.h"

#include <map>

namespace jet {

/// What the stations that have one database file open agree on, seen from one of them.
///
/// Reading happens in sections: while one is open nobody of us writes pages. At its beginning the
/// commit pairs tell whether another has written since the last one; then what is remembered of the
/// file goes (see onNews). Writing takes W, at the first change of a transaction, and with it a
/// look at the news: from there to the end of the transaction nobody else of us changes anything,
/// so nothing is ever written over what we haven't seen. Pages go into the file when all readers
/// have left and no program can enter.
///
/// A foreign program in the file follows other rules, which we don't know well enough to write
/// beside it: as long as it is there we read, with care, and refuse to write.
class Sharing final : public Turns {
public:
    /// `onNews` is called when all that is remembered of the file has to go; it may throw.
    Sharing(File& database, const Format& format, std::function<void()> onNews);
    /// Leaves: a journal that nobody needs goes, and with the last station the lock file.
    ~Sharing() override;

    /// Becomes one of the file's users, after undoing what a station that died has left half done.
    /// `mayWrite`: whether the file is open for that. What keeps us from sharing the file is no
    /// error but a reason to read only.
    /// @throws Error{locked, io, readOnly} if a transaction that was cut off can't be undone now.
    void enter(bool mayWrite);

    /// Why the file can't be changed at this moment, or nothing.
    [[nodiscard]] std::optional<std::string> whyNotWritable();
    /// The same, but without looking for foreign programs.
    [[nodiscard]] const std::optional<std::string>& lastingReason() const noexcept {
        return lasting_;
    }
    /// Whether a program died writing and left nothing to undo that with, or met a damaged page.
    [[nodiscard]] bool isSuspect() const noexcept { return suspect_; }
    /// What recovery has to tell the operator.
    [[nodiscard]] const std::optional<std::string>& notice() const noexcept { return notice_; }

    // Reading. Only the outermost section costs anything, and none while writing.
    void beginReading() override {
        if (depth_ > 0 || writing_)
            ++depth_;
        else
            enterSection();
    }
    void endReading() noexcept override {
        if (--depth_ > 0)
            return;
        light_ = false;
        if (reading_)
            leaveSection();
    }
    void beginLook() override;
    void breathe() noexcept override {
        if (depth_ != 1 || !repeatable_ || !reading_ || light_ || careful_)
            return;
        leaveSection();
        light_ = true;
    }
    /// For how long beginLook() relies on what the last look at the pairs has told. Zero at first.
    void setNewsHold(std::chrono::milliseconds time) noexcept { newsHold_ = time; }
    void beforeRead() override {
        if (light_)
            makeHeavy();
    }
    [[nodiscard]] bool inSection() const noexcept override { return depth_ > 0; }
    void verifyPage() override {
        if (careful_ && !writing_)
            verifyUnchanged();
    }
    [[nodiscard]] bool disturbed() const noexcept override { return disturbed_; }

    /// How often it was found that others have written: a moment, to be given to writersSince().
    [[nodiscard]] std::uint64_t news() const noexcept { return news_; }
    /// The names of the stations that are known to have written since.
    [[nodiscard]] std::vector<std::string> writersSince(std::uint64_t news) const;

    // Writing.
    /// Takes W, if we haven't it, and looks at the news.
    void beginWriting() override;
    /// Gives W back.
    void endWriting() noexcept override;
    [[nodiscard]] bool isWriting() const noexcept override { return writing_; }
    [[nodiscard]] bool isAwaited() const override;
    [[nodiscard]] bool isTakenByOther() const override;
    /// As Committer::commit() does it.
    void commit(const ChangedPages& changed) override;
    [[noreturn]] void refuseOvertaken() override;
    [[nodiscard]] bool isBroken() const noexcept override {
        return committer_ && committer_->isBroken();
    }

private:
    using Pairs = CommitPairs;
    /// R alone, O, and the gate closed. Requires W.
    class Alone {
    public:
        explicit Alone(Sharing& sharing);
        Alone(const Alone&) = delete;
        Alone& operator=(const Alone&) = delete;
        ~Alone() { giveBack(); }

    private:
        void giveBack() noexcept;
        LockFile& lock_;
    };

    void register_();
    void enterSection();
    void makeHeavy();
    void leaveSection() noexcept;
    void lockForReading();
    void verifyUnchanged();
    void lookAtNews(bool holdsWriting);
    [[nodiscard]] bool recoverDeadWriter(const Pairs& pairs, bool holdsWriting);
    [[nodiscard]] Recovery::Outcome runRecovery(bool holdsWriting);
    [[nodiscard]] Recovery recoverFile();
    void tell(const Recovery& recovery);
    void noteSuspect(const Pairs& pairs);
    void noteWriters(const Pairs& before);
    [[nodiscard]] std::optional<std::size_t> deadWriter(const Pairs& pairs) const;
    [[nodiscard]] std::optional<unsigned> foreigner(bool entranceClosed);
    void requireNoForeigner(bool entranceClosed);
    [[nodiscard]] std::optional<std::string> foreignReason(bool entranceClosed);
    [[nodiscard]] std::string replacedReason() const;
    [[nodiscard]] std::string others() const;
    void lockOrSay(std::uint64_t what, std::chrono::milliseconds longest);

    File& database_;
    const Format& format_;
    std::function<void()> onNews_;
    LockFile lock_;
    Attendance attendance_; ///< leaves before lock_
    std::optional<Committer> committer_;
    std::optional<std::string> lasting_; ///< why never writable
    std::optional<std::string> notice_;
    bool mayWrite_ = false;
    bool shared_ = false;  ///< the lock file works
    bool suspect_ = false; ///< a program died writing and left nothing to undo that with

    Pairs seen_; ///< as of the last look
    std::uint64_t news_ = 1;
    struct Writer {
        std::uint64_t news; ///< as of when it was noticed
        std::string name;   ///< as of then: another may have the number later
    };
    std::map<std::size_t, Writer> writers_; ///< by user
    unsigned depth_ = 0;                    ///< of sections
    bool reading_ = false;                  ///< R is held, shared
    bool light_ = false;                    ///< the section does without R so far
    bool repeatable_ = false;               ///< the section is one of beginLook()
    bool writing_ = false;                  ///< W is held
    bool careful_ = false;                  ///< somebody may write who doesn't heed our locks
    bool disturbed_ = false;
    bool overtaken_ = false; ///< somebody writes and tells nobody
    bool yields_ = false;    ///< the last transaction ended with others waiting
    std::chrono::steady_clock::time_point lookedForForeign_{};
    std::chrono::steady_clock::time_point lookedForWriter_{};
    std::chrono::steady_clock::time_point lookedAtNews_{};
    std::chrono::milliseconds newsHold_{};
};

} // namespace jet
