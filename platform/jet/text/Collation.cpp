#include "jet/text/Collation.h"

#include "jet/Utf8.h"
#include "jet/text/TextCodec.h"

#include <algorithm>
#include <bit>
#include <initializer_list>
#include <utility>

namespace jet {

namespace {

constexpr std::uint16_t kWestern = 1252;

/// The languages, as a column names them, country included, whose texts go in the General order.
/// Every one has a reason; one without stays out, because keys that another program would make
/// otherwise damage an index. Left out on purpose:
///  - Spanish, traditional (ch and ll are letters) and modern: n with tilde is a letter of its own;
///  - French: of two words that differ in accents alone, the last accent decides, not the first;
///  - the Nordic, Baltic and Balkan languages, Czech, Slovak, Hungarian, Polish, Turkish: some of
///    their letters follow the z or another letter;
///  - other scripts, and what the format offers as an order of its own.
/// Of all only variant 0 counts in Jet 4: German as in a telephone book, where a with diaeresis is
/// ae, is variant 1 of the same code.
constexpr std::uint16_t kLikeGeneral[] = {
    // Nothing: the column leaves its order to the format, whose own order is General.
    0,
    // English: it is what General goes by, and all its countries order alike.
    0x0409, 0x0809, 0x0C09, 0x1009, 0x1409, 0x1809, 0x1C09, 0x2009, 0x2409, 0x2809, 0x2C09, 0x3009,
    0x3409,
    // Portuguese, of Brazil and of Portugal: General is made for it. An accent, a tilde and a
    // cedilla count only between words that are the same without, and k, w and y have their places.
    0x0416, 0x0816,
    // Italian, of Italy and of Switzerland: General is made for it. Accents as in Portuguese.
    0x0410, 0x0810,
    // German as in a dictionary, of five countries: General is made for it. A diaeresis is an
    // accent, and a sharp s two letters s, which the weights have.
    0x0407, 0x0807, 0x0C07, 0x1007, 0x1407};
constexpr std::uint16_t kLikeGeneralInJet4[] = {
    // Dutch, of two countries, and Indonesian: Jet 4 orders as the systems of its time, which have
    // no order of their own for these. Jet 3 has one for Dutch.
    0x0413, 0x0813, 0x0421};

bool isLikeGeneral(Version version, std::uint16_t lcid) {
    const auto listed = [&](std::span<const std::uint16_t> list) {
        return std::ranges::find(list, lcid) != list.end();
    };
    return listed(kLikeGeneral) || (version == Version::jet4 && listed(kLikeGeneralInJet4));
}

constexpr std::size_t kCharacters = 0x10000;
constexpr std::uint32_t kTopByte = 0xFF000000;

int primaryLength(const Weight& weight) noexcept {
    if (weight.kind == WeightKind::S)
        return 2;
    return 4 - std::countr_zero(weight.primary) / 8; // 0 for the word 0, which has 32 zero bits
}

void appendPrimary(Bytes& key, const Weight& weight) {
    std::uint32_t word = weight.primary;
    for (int i = primaryLength(weight); i > 0; --i, word <<= 8)
        key.push_back(static_cast<std::byte>(word >> 24));
}

void append(Bytes& key, std::initializer_list<unsigned> bytes) {
    for (const unsigned byte : bytes)
        key.push_back(static_cast<std::byte>(byte));
}

/// The weight, in Jet 4, of a half of a surrogate pair. The steps skip weights whose low byte would
/// be 0 or 1.
Weight surrogateWeight(unsigned unit) noexcept {
    unsigned weight = unit - 10238;
    if (isLowSurrogate(unit)) {
        const unsigned offset = unit - 0xDC00;
        const unsigned steps =
            (offset >= 8U) + (offset >= 262U) + (offset >= 516U) + (offset >= 770U);
        weight = unit - 9992 + 2 * steps;
    }
    return {weight << 16, 0x3F, WeightKind::S, 1};
}

/// The weight, in Jet 3, of a character that code page 1252 lacks. No row can hold it, but the text
/// of a query can: it sorts behind all others, by its code.
Weight foreignWeight(char32_t codePoint) noexcept {
    return {static_cast<std::uint32_t>(kTopByte | (0x80U | codePoint >> 14) << 16 |
                                       (0x80U | (codePoint >> 7 & 0x7FU)) << 8 |
                                       (0x80U | (codePoint & 0x7FU))),
            0, WeightKind::W, 0};
}

std::vector<Weight> jet3Weights() {
    std::vector<Weight> weights(kCharacters);
    for (std::size_t character = 0; character < kCharacters; ++character)
        weights[character] = foreignWeight(static_cast<char32_t>(character));
    const TextCodec codec(Version::jet3, kWestern);
    for (std::size_t i = 0; i < kJet3GeneralWeights.size(); ++i) {
        const auto byte = static_cast<std::byte>(i);
        weights[utf8At(codec.decode({&byte, 1}), 0).codePoint] = kJet3GeneralWeights[i];
    }
    return weights;
}

std::vector<Weight> jet4Weights() {
    std::vector<Weight> weights(kCharacters);
    for (const WeightRun& run : std::span(kJet4GeneralRuns, kJet4GeneralRunCount)) {
        Weight weight = run.weight;
        for (std::size_t i = 0; i < run.count; ++i, weight.primary += run.step)
            weights[run.first + i] = weight;
    }
    for (unsigned unit = 0xD800; unit < 0xE000; ++unit)
        weights[unit] = surrogateWeight(unit);
    return weights;
}

/// What Jet 3 puts behind the primary weights: half bytes that tell which of the letters that could
/// carry an accent do carry one.
class Jet3Tail {
public:
    void clear() noexcept {
        halves_.assign(1, 0);
        pending_ = 0;
        any_ = false;
    }
    void add(const Weight& weight) {
        if (weight.kind != WeightKind::A) {
            pending_ += weight.elements;
            return;
        }
        halves_.insert(halves_.end(), pending_, 2);
        halves_.push_back(static_cast<std::uint8_t>(weight.extra));
        pending_ = 0;
        any_ = true;
    }
    void appendTo(Bytes& key) {
        if (!any_)
            return key.push_back(std::byte{0});
        halves_.push_back(0);
        if (halves_.size() % 2 != 0)
            halves_.push_back(0);
        for (std::size_t i = 0; i < halves_.size(); i += 2)
            key.push_back(static_cast<std::byte>(halves_[i] << 4 | halves_[i + 1]));
    }

private:
    std::vector<std::uint8_t> halves_;
    std::size_t pending_{};
    bool any_{};
};

/// What Jet 4 puts behind the primary weights: accents, kana flags, and the places of apostrophes,
/// hyphens and control characters.
class Jet4Tail {
public:
    void clear() noexcept {
        accents_.clear();
        specials_.clear();
        kana_.clear();
        elements_ = represented_ = lead_ = 0;
    }

    void add(const Weight& weight) {
        switch (weight.kind) {
        case WeightKind::ignored:
            return;
        case WeightKind::W:
            elements_ += weight.elements;
            return;
        case WeightKind::A:
        case WeightKind::S:
            return addAccented(weight);
        case WeightKind::K2:
        case WeightKind::K3:
            kana_.push_back(weight.kind == WeightKind::K2 ? 2 : 3);
            if (weight.extra != 0)
                return addAccented(weight);
            elements_ += weight.elements;
            return;
        case WeightKind::M:
            fillAccents();
            if (accents_.empty()) {
                accents_.push_back(static_cast<std::byte>(weight.extra));
                lead_ = 1;
            } else {
                accents_.back() = static_cast<std::byte>(
                    std::to_integer<unsigned>(accents_.back()) + weight.extra);
            }
            return;
        case WeightKind::P: {
            const std::size_t place = accents_.size() + (elements_ - represented_) - lead_;
            const unsigned code = 0x8000U | ((7U + 4U * static_cast<unsigned>(place)) & 0xFFFFU);
            append(specials_, {code >> 8, code & 0xFFU, 0x06, weight.extra});
            return;
        }
        }
    }

    void appendTo(Bytes& key) {
        while (!accents_.empty() && accents_.back() <= kNoAccent)
            accents_.pop_back();
        append(key, {0x01});
        key.insert(key.end(), accents_.begin(), accents_.end());
        if (!kana_.empty() || !specials_.empty()) {
            append(key, {0x01, 0x01});
            if (!kana_.empty())
                appendKana(key);
            if (!specials_.empty()) {
                append(key, {0x01});
                key.insert(key.end(), specials_.begin(), specials_.end());
            }
        }
        append(key, {0x00});
    }

private:
    static constexpr std::byte kNoAccent{2};

    /// Every letter before the present one has its accent byte afterwards.
    void fillAccents() {
        accents_.insert(accents_.end(), elements_ - represented_, kNoAccent);
        represented_ = elements_;
    }
    void addAccented(const Weight& weight) {
        fillAccents();
        if (weight.elements == 2)
            accents_.push_back(static_cast<std::byte>(weight.extra >> 8));
        accents_.push_back(static_cast<std::byte>(weight.extra));
        elements_ += weight.elements;
        represented_ = elements_;
    }
    void appendKana(Bytes& key) {
        while (!kana_.empty() && kana_.back() == 3)
            kana_.pop_back();
        const auto flag = [&](std::size_t i) { return i < kana_.size() ? kana_[i] : 0U; };
        for (std::size_t i = 0; i < kana_.size(); i += 3)
            append(key, {0x80U | flag(i) << 4 | flag(i + 1) << 2 | flag(i + 2)});
        append(key, {0xFF, 0x02, 0x80, 0xFF, 0x80});
        if (!specials_.empty())
            append(key, {0xFF});
    }

    Bytes accents_;
    Bytes specials_;
    std::vector<unsigned> kana_;
    std::size_t elements_{};    ///< primary elements so far
    std::size_t represented_{}; ///< those of them that accents_ speaks of
    std::size_t lead_{};        ///< 1 if accents_ begins with a mark that had no letter before it
};

/// The weights of a UTF-8 text, one after the other. A byte that isn't UTF-8 counts as a lone half
/// of a surrogate pair.
class Utf8Weights {
public:
    Utf8Weights(Version version, const std::vector<Weight>& byCharacter, std::string_view text)
        : version_(version), byCharacter_(byCharacter.data()), text_(text) {}

    /// Null at the end; else valid until the next call.
    const Weight* next() noexcept {
        if (lowHalf_ != 0)
            return &byCharacter_[std::exchange(lowHalf_, char16_t{0})];
        if (at_ == text_.size())
            return nullptr;
        const auto byte = static_cast<unsigned char>(text_[at_]);
        if (byte < 0x80) {
            ++at_;
            return &byCharacter_[byte];
        }
        const Utf8Character character = utf8At(text_, at_);
        if (character.length == 0) {
            ++at_;
            return &byCharacter_[0xDC00U + byte];
        }
        at_ += character.length;
        if (character.codePoint < kCharacters)
            return &byCharacter_[character.codePoint];
        if (version_ == Version::jet3) {
            foreign_ = foreignWeight(character.codePoint);
            return &foreign_;
        }
        lowHalf_ = lowHalf(character.codePoint);
        return &byCharacter_[highHalf(character.codePoint)];
    }

    /// The next one with a primary weight. Notes in `more` whether anything went by that counts in
    /// the later parts of a key.
    const Weight* nextPrimary(bool& more) noexcept {
        for (;;) {
            const Weight* weight = next();
            if (weight == nullptr || weight->kind == WeightKind::W)
                return weight;
            more = more || weight->kind != WeightKind::ignored;
            if (weight->primary != 0)
                return weight;
        }
    }

private:
    Version version_;
    const Weight* byCharacter_;
    std::string_view text_;
    std::size_t at_{};
    char16_t lowHalf_{};
    Weight foreign_{};
};

std::size_t lengthWithoutBlanks(auto text) noexcept {
    std::size_t length = text.size();
    while (length > 0 && text[length - 1] == ' ')
        --length;
    return length;
}

/// Of what stands at the beginning of both, as far as it is ASCII.
std::size_t lengthAlike(std::string_view a, std::string_view b) noexcept {
    const std::size_t most = std::min(a.size(), b.size());
    std::size_t length = 0;
    while (length < most && a[length] == b[length] && static_cast<unsigned char>(a[length]) < 0x80)
        ++length;
    return length;
}

} // namespace

const Collation* Collation::find(Version version, const SortOrder& order) {
    const bool isKnown = version == Version::jet3 ? order.codePage == kWestern
                                                  : order.version == 0 && order.variant == 0;
    return isKnown && isLikeGeneral(version, order.lcid) ? &general(version) : nullptr;
}

const Collation& Collation::general(Version version) {
    if (version == Version::jet3) {
        static const Collation jet3(Version::jet3);
        return jet3;
    }
    static const Collation jet4(Version::jet4);
    return jet4;
}

Collation::Collation(Version version)
    : version_(version), byCharacter_(version == Version::jet3 ? jet3Weights() : jet4Weights()),
      byUnit_(version == Version::jet3 ? std::span<const Weight>(kJet3GeneralWeights)
                                       : std::span<const Weight>(byCharacter_)) {}

/// A whole key from the weights that `next` gives until it gives null.
template <class NextWeight>
void Collation::appendWeights(Bytes& key, NextWeight&& next) const {
    const auto appendAll = [&](auto& tail) {
        tail.clear();
        while (const Weight* weight = next()) {
            appendPrimary(key, *weight);
            tail.add(*weight);
        }
        tail.appendTo(key);
    };
    // Kept between calls for their memory: keys are made by the hundred thousand.
    if (version_ == Version::jet3) {
        thread_local Jet3Tail tail;
        appendAll(tail);
    } else {
        thread_local Jet4Tail tail;
        appendAll(tail);
    }
}

void Collation::appendKey(Bytes& key, std::u16string_view units) const {
    units = units.substr(0, kKeyUnits);
    units = units.substr(0, lengthWithoutBlanks(units));
    appendWeights(key, [&, i = std::size_t{0}]() mutable -> const Weight* {
        static constexpr Weight kNone;
        if (i == units.size())
            return nullptr;
        const std::size_t unit = units[i++];
        return unit < byUnit_.size() ? &byUnit_[unit] : &kNone;
    });
}

int Collation::compare(std::string_view a, std::string_view b) const {
    if (a == b) // as in a list of one client's cheques, in the order of their names
        return 0;
    const std::string_view textA = a.substr(0, lengthWithoutBlanks(a));
    const std::string_view textB = b.substr(0, lengthWithoutBlanks(b));
    const auto byBlanks = [&] {
        const std::size_t blanksA = a.size() - textA.size();
        const std::size_t blanksB = b.size() - textB.size();
        return blanksA < blanksB ? -1 : int{blanksA > blanksB};
    };

    // Mostly the letters alone decide, and no key has to be made. Where both begin alike nothing
    // is decided.
    const std::size_t alike = lengthAlike(textA, textB);
    Utf8Weights weightsA(version_, byCharacter_, textA.substr(alike));
    Utf8Weights weightsB(version_, byCharacter_, textB.substr(alike));
    bool more = false;
    for (;;) {
        const Weight* weightA = weightsA.nextPrimary(more);
        const Weight* weightB = weightsB.nextPrimary(more);
        if (weightA == nullptr || weightB == nullptr) {
            if (weightA != nullptr || weightB != nullptr)
                return weightA == nullptr ? -1 : 1;
            break;
        }
        const std::uint32_t difference = weightA->primary ^ weightB->primary;
        if (difference == 0)
            continue;
        const int common = std::min(primaryLength(*weightA), primaryLength(*weightB));
        if (difference >> (32 - 8 * common) != 0)
            return weightA->primary < weightB->primary ? -1 : 1;
        more = true; // the one begins as the other, as a sharp s and an s do
        break;
    }
    if (!more || textA == textB)
        return byBlanks();

    thread_local Bytes keyA;
    thread_local Bytes keyB;
    keyA.clear();
    keyB.clear();
    appendSortKey(keyA, a);
    appendSortKey(keyB, b);
    return keyA == keyB ? 0 : keyA < keyB ? -1 : 1;
}

void Collation::appendSortKey(Bytes& key, std::string_view text) const {
    const std::size_t length = lengthWithoutBlanks(text);
    appendWeights(key,
                  [all = Utf8Weights(version_, byCharacter_, text.substr(0, length))]() mutable {
                      return all.next();
                  });
    // No key begins with another: so these decide only where the texts are the same without.
    key.insert(key.end(), text.size() - length, std::byte{1});
}

} // namespace jet
