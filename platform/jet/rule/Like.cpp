#include "jet/rule/Like.h"

#include "jet/Error.h"
#include "jet/Utf8.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace jet {

namespace {

/// Characters compared, at most; far beyond what a rule over a text column can need.
constexpr std::size_t kMostSteps = 4'000'000;

struct Range {
    char32_t first;
    char32_t last;
};

/// One place of a pattern.
struct Element {
    enum class Kind : std::uint8_t { run, one, digit, oneOf, noneOf };
    Kind kind;
    std::vector<Range> ranges; ///< of oneOf and noneOf
};

std::vector<char32_t> charactersOf(std::string_view text) {
    std::vector<char32_t> characters;
    characters.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character c = utf8At(text, at);
        characters.push_back(c.codePoint);
        at += std::max<std::size_t>(1, c.length);
    }
    return characters;
}

/// What stands between the brackets that open at `at`, which moves behind them. Nothing if they
/// aren't closed.
std::optional<Element> bracketed(const std::vector<char32_t>& pattern, std::size_t& at) {
    Element element{Element::Kind::oneOf, {}};
    ++at;
    const auto closing =
        std::find(pattern.begin() + static_cast<std::ptrdiff_t>(at), pattern.end(), U']');
    if (closing == pattern.end())
        return std::nullopt;
    const auto end = static_cast<std::size_t>(closing - pattern.begin());
    if (end - at > 1 && pattern[at] == U'!') {
        element.kind = Element::Kind::noneOf;
        ++at;
    }
    while (at < end) {
        const bool isRange = at + 2 < end && pattern[at + 1] == U'-';
        element.ranges.push_back({pattern[at], pattern[at + (isRange ? 2 : 0)]});
        at += isRange ? 3 : 1;
    }
    at = end + 1;
    return element;
}

/// Nothing if a bracket isn't closed.
std::optional<std::vector<Element>> elementsOf(std::string_view text) {
    using enum Element::Kind;
    const std::vector<char32_t> pattern = charactersOf(text);
    std::vector<Element> elements;
    for (std::size_t at = 0; at < pattern.size();) {
        const char32_t c = pattern[at];
        if (c == U'[') {
            auto element = bracketed(pattern, at);
            if (!element)
                return std::nullopt;
            // [] stands for no character at all.
            if (!element->ranges.empty())
                elements.push_back(std::move(*element));
            continue;
        }
        ++at;
        if (c == U'*')
            elements.push_back({run, {}});
        else if (c == U'?')
            elements.push_back({one, {}});
        else if (c == U'#')
            elements.push_back({digit, {}});
        else
            elements.push_back({oneOf, {{c, c}}});
    }
    return elements;
}

class Matcher {
public:
    Matcher(std::string_view text, std::vector<Element> elements, const Collation& order)
        : text_(charactersOf(text)), elements_(std::move(elements)), order_(order) {}

    /// Only the last run met is ever lengthened: what an earlier one took can stay as it is, so the
    /// steps are at most the text's length times the pattern's.
    [[nodiscard]] bool run() {
        std::size_t at = 0;
        std::size_t element = 0;
        std::optional<std::size_t> afterRun;
        std::size_t runEnd = 0;
        while (at < text_.size()) {
            if (element < elements_.size() && elements_[element].kind == Element::Kind::run) {
                afterRun = ++element;
                runEnd = at;
            } else if (element < elements_.size() && fits(elements_[element], text_[at])) {
                ++element;
                ++at;
            } else if (afterRun) {
                element = *afterRun;
                at = ++runEnd;
            } else {
                return false;
            }
        }
        return std::all_of(elements_.begin() + static_cast<std::ptrdiff_t>(element),
                           elements_.end(),
                           [](const Element& e) { return e.kind == Element::Kind::run; });
    }

private:
    void count() {
        if (++steps_ > kMostSteps)
            throw Error(Errc::outOfRange, "a comparação com o modelo de texto não termina");
    }

    [[nodiscard]] bool fits(const Element& element, char32_t c) {
        count();
        switch (element.kind) {
        case Element::Kind::one:
            return true;
        case Element::Kind::digit:
            return c >= U'0' && c <= U'9';
        default:
            break;
        }
        const bool found =
            std::any_of(element.ranges.begin(), element.ranges.end(), [&](const Range& range) {
                count();
                return inside(range, c);
            });
        return found == (element.kind == Element::Kind::oneOf);
    }

    [[nodiscard]] bool inside(const Range& range, char32_t c) const {
        if (range.first == range.last && range.first == c)
            return true;
        return compare(range.first, c) <= 0 && compare(c, range.last) <= 0;
    }

    [[nodiscard]] int compare(char32_t a, char32_t b) const {
        std::string textA;
        std::string textB;
        appendUtf8(textA, a);
        appendUtf8(textB, b);
        return order_.compare(textA, textB);
    }

    std::vector<char32_t> text_;
    std::vector<Element> elements_;
    const Collation& order_;
    std::size_t steps_ = 0;
};

} // namespace

bool isLike(std::string_view text, std::string_view pattern, const Collation& order) {
    auto elements = elementsOf(pattern);
    if (!elements)
        throw Error(Errc::outOfRange, "o modelo de texto não fecha um colchete");
    return Matcher(text, std::move(*elements), order).run();
}

bool isPattern(std::string_view pattern) { return elementsOf(pattern).has_value(); }

} // namespace jet
