#pragma once

#include "jet/Types.h"
#include "jet/text/CollationTables.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace jet {

/// A text order of the file format: the bytes that stand for a text in an index, and the comparison
/// that goes with them. Upper and lower case are the same; accents count where the letters are the
/// same. The tables are the format's own, never the operating system's, which differ from them.
class Collation {
public:
    /// Characters of a text that its key looks at.
    static constexpr std::size_t kKeyUnits = 255;

    /// The order of a column, or null if this engine doesn't know it: an index on the column can
    /// then be neither searched nor maintained. Known are the General orders, also under the names
    /// of languages whose texts go in them: in Jet 3 with code page 1252, in Jet 4 in version 0.
    [[nodiscard]] static const Collation* find(Version version, const SortOrder& order);

    /// The order of a column, or what stands in for it.
    [[nodiscard]] static const Collation& closest(Version version, const SortOrder& order) {
        const Collation* const own = find(version, order);
        return own != nullptr ? *own : general(version);
    }

    /// The General order of that version, which also serves to sort text whose own isn't known.
    [[nodiscard]] static const Collation& general(Version version);

    Collation(const Collation&) = delete;

    [[nodiscard]] Version version() const noexcept { return version_; }
    /// For each of U+0000 to U+FFFF.
    [[nodiscard]] std::span<const Weight> weights() const noexcept { return byCharacter_; }

    /// Appends the value bytes of an ascending index. `units` is what TextCodec::unitsOf() gives;
    /// what goes beyond kKeyUnits, and trailing blanks then, don't count.
    void appendKey(Bytes& key, std::u16string_view units) const;

    /// Orders UTF-8 texts as their keys, but over their whole length, and with trailing blanks:
    /// of two texts that differ in them alone, the one with more comes later. Negative, 0 or
    /// positive; 0 also for texts that differ in case only. Takes any bytes, UTF-8 or not.
    [[nodiscard]] int compare(std::string_view a, std::string_view b) const;
    /// Appends the bytes by which texts are ordered as compare() orders them, for who sorts many.
    void appendSortKey(Bytes& key, std::string_view text) const;

private:
    explicit Collation(Version version);

    template <class NextWeight>
    void appendWeights(Bytes& key, NextWeight&& next) const;

    Version version_;
    std::vector<Weight> byCharacter_; ///< for each of U+0000 to U+FFFF
    std::span<const Weight> byUnit_;  ///< for each unit of a key
};

} // namespace jet
