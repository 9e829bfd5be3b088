#pragma once

#include "jet/Error.h"

#include <cstdint>
#include <optional>
#include <string>

namespace jet {

/// Why a file, or one of its tables, can't be changed.
struct Hindrance {
    enum class Why : std::uint8_t {
        forReading,  ///< it was opened so, or there is no permission for more
        noLockFile,  ///< the other stations can't be told
        suspect,     ///< a program left it half written or damaged, and nothing to undo that with
        journal,     ///< what lies in the journal's place can neither be used nor moved
        foreign,     ///< a foreign program has it open
        otherName,   ///< stations have it open that don't meet in our lock file
        replaced,    ///< another file has its name by now
        textOrder,   ///< the table has keys in an order that this engine doesn't know
        unknownForm, ///< the table is stored in a way that this engine doesn't know
        damage,      ///< the table isn't sound
        rules,       ///< the table has rules that this engine can't keep
    };
    Why why;
    std::string sentence; ///< for the operator, in Portuguese

    /// Of a change that is refused: `locked` where it helps to wait and try again, or where who has
    /// tried must look at the file anew; `readOnly` otherwise.
    [[nodiscard]] Error error() const {
        const bool byOthers = why == Why::foreign || why == Why::otherName || why == Why::replaced;
        return {byOthers ? Errc::locked : Errc::readOnly, sentence};
    }
    /// Its sentence, if there is one.
    [[nodiscard]] static std::optional<std::string> told(const std::optional<Hindrance>& why) {
        return why ? std::optional(why->sentence) : std::nullopt;
    }
};

} // namespace jet
