#pragma once

#include "jet/DamagedFile.h"

/// One kind of damage, and what check() has to say of it:
///
///     const std::vector<Damage> kDamages = {
///         error("row count", "o número de registros está errado", [](DamagedFile& file) {
///             file.put<std::uint32_t>(file.cheques.page(), file.format().definition.rows.at, 62);
///             return file.cheques.page();
///         })};
///     TEST(Check, TellsThem) { expectTold(kDamages); }
struct Damage {
    /// Does some damage; the page that the finding must name.
    using Plant = jet::PageNo (*)(DamagedFile& file);

    const char* name;
    const char* words; ///< that the finding must have
    Plant plant;
    jet::Finding::Severity severity = jet::Finding::Severity::error;
    bool inJet3 = true; ///< the other format has it in any case
};

inline Damage error(const char* name, const char* words, Damage::Plant plant) {
    return {name, words, plant};
}
inline Damage errorInJet4(const char* name, const char* words, Damage::Plant plant) {
    return {name, words, plant, jet::Finding::Severity::error, false};
}
inline Damage warning(const char* name, const char* words, Damage::Plant plant) {
    return {name, words, plant, jet::Finding::Severity::warning};
}

/// Plants one after the other in files of both formats.
void expectTold(std::span<const Damage> damages);
