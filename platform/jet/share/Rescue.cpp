#include "jet/share/Rescue.h"

#include "jet/share/Alone.h"
#include "jet/share/Held.h"
#include "jet/share/Patience.h"

namespace jet {

bool Rescue::hasJournal() const {
    const File& database = presence_.database();
    return Journal::find(database.path(), database.disk(), mayWrite_).what !=
           Journal::Found::What::nothing;
}

Recovery::Outcome Rescue::run(bool holdsWriting) {
    std::optional<Held> writing;
    if (!holdsWriting) {
        presence_.require(LockFile::kWriting, patience::kForTurn);
        writing.emplace(presence_.lock(), LockFile::kWriting);
    }
    Recovery recovery;
    {
        const Alone alone(presence_);
        recovery = bringBack();
    }
    writing.reset();
    tell(recovery);
    return recovery.outcome;
}

/// Requires that nobody of us is at work.
Recovery Rescue::bringBack() {
    File& database = presence_.database();
    const Format& format = presence_.format();
    const Journal::Found journal = Journal::find(database.path(), database.disk(), mayWrite_);
    const bool needed = CommitPairs(database, format).find(CommitPairs::kWriting).has_value();
    // What nobody needs can stay where it is.
    const auto left = [&] { return Recovery{Recovery::Outcome::leftThere, {}, journal.why}; };
    if (journal.what != Journal::Found::What::nothing) {
        if (const auto stranger = presence_.foreigner(Presence::Look::entranceClosed)) {
            if (!needed)
                return left();
            throw Error(Errc::locked,
                        "Uma gravação foi interrompida e precisa ser desfeita, mas o banco de "
                        "dados está aberto em outro programa, de " +
                            presence_.lock().nameOf(*stranger) + ". Feche-o lá e tente de novo.");
        }
        // The journal may be of a transaction that is being written at this moment.
        presence_.requireNoStranger();
    }
    if (mayWrite_)
        return recover(database, format);
    try {
        File writable(database.path(), File::Mode::readWrite, database.disk());
        return recover(writable, format);
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly)
            throw;
        if (!needed)
            return left();
        throw Error(Errc::readOnly,
                    std::string("Uma gravação foi interrompida e precisa ser desfeita antes "
                                "que os dados possam ser lidos. ") +
                        error.what());
    }
}

void Rescue::tell(const Recovery& recovery) {
    if (recovery.outcome == Recovery::Outcome::setAside)
        notice_ = "Ao lado do banco de dados havia o registro de uma gravação interrompida, que "
                  "não pôde ser usado: " +
                  recovery.reason + " Ele foi guardado como \"" + recovery.aside.string() +
                  "\". Confira os últimos lançamentos.";
    if (recovery.outcome != Recovery::Outcome::leftThere || recovery.reason.empty())
        return;
    const std::string sentence =
        "O banco de dados pode ser consultado mas não alterado, porque o que está ao lado dele no "
        "lugar do registro das gravações não pode ser usado nem posto de lado. " +
        recovery.reason;
    if (mayWrite_)
        presence_.hinder(Hindrance::Why::journal, sentence);
    else
        notice_ = sentence;
}

} // namespace jet
