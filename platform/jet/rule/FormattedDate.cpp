#include "jet/Tokens.h"
#include "jet/rule/FormatParts.h"
#include "jet/rule/FunctionBodies.h"

#include <algorithm>
#include <array>

namespace jet::functions {

namespace {

struct Name {
    std::string_view whole;
    std::string_view brief;
};
constexpr std::array<Name, 12> kMonths{
    {{"janeiro", "jan"},
     {"fevereiro", "fev"},
     {"março", "mar"},
     {"abril", "abr"},
     {"maio", "mai"},
     {"junho", "jun"},
     {"julho", "jul"},
     {"agosto", "ago"},
     {"setembro", "set"},
     {"outubro", "out"},
     {"novembro", "nov"},
     {"dezembro", "dez"}}
};
constexpr std::array<Name, 7> kDays{
    {{"domingo", "dom"},
     {"segunda-feira", "seg"},
     {"terça-feira", "ter"},
     {"quarta-feira", "qua"},
     {"quinta-feira", "qui"},
     {"sexta-feira", "sex"},
     {"sábado", "sáb"}}
};

constexpr std::string_view kShortDate = "dd/mm/yyyy";
constexpr std::string_view kLongDate = "dddd, d \"de\" mmmm \"de\" yyyy";
constexpr std::string_view kLongTime = "hh:nn:ss";

/// The two halves of the day, as patterns ask for them.
struct Halves {
    std::string_view pattern;
    std::string_view morning;
    std::string_view afternoon;
};
constexpr std::array<Halves, 6> kHalves{
    {{"AM/PM", "AM", "PM"},
     {"am/pm", "am", "pm"},
     {"AMPM", "AM", "PM"},
     {"ampm", "AM", "PM"},
     {"A/P", "A", "P"},
     {"a/p", "a", "p"}}
};

/// How often a letter may stand in a row to mean one thing.
struct LongestRun {
    char letter;
    int count;
};
constexpr LongestRun kLongestRuns[] = {
    {'c', 1},
    {'d', 6},
    {'w', 2},
    {'m', 4},
    {'q', 1},
    {'y', 4},
    {'h', 2},
    {'n', 2},
    {'s', 2},
    {'t', 5}
};

std::string padded(std::int64_t number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
}

std::int64_t firstOfYear(int year) {
    return static_cast<std::int64_t>(Date::of({year, 1, 1}).days);
}

std::int64_t weekOfYear(std::int64_t day, int year, const Weeks& weeks) {
    const std::int64_t january = firstOfYear(year);
    std::int64_t first = weekBegin(january, weeks.firstDay);
    const std::int64_t daysInside = 7 - (january - first);
    if ((weeks.firstWeek == 2 && daysInside < 4) || (weeks.firstWeek == 3 && daysInside < 7))
        first += 7;
    const std::int64_t begin = weekBegin(day, weeks.firstDay);
    if (begin < first && year > 100)
        return weekOfYear(january - 1, year - 1, weeks);
    return std::max<std::int64_t>(0, begin - first) / 7 + 1;
}

class DateWriter {
public:
    DateWriter(const Date& date, const Weeks& weeks)
        : date_(date), weeks_(weeks), time_(date.civil()), day_(dayNumber(date)) {}

    std::string run(Signs signs) {
        signs_ = signs;
        halves_ = false;
        for (at_ = 0; at_ < signs_.size(); ++at_)
            halves_ = halves_ || halvesHere() != nullptr;
        for (at_ = 0; at_ < signs_.size();)
            next();
        return std::move(out_);
    }

private:
    /// The sign for halves of the day that stands here; null if none does.
    [[nodiscard]] const Halves* halvesHere() const {
        for (const Halves& halves : kHalves) {
            bool same = signs_.size() - at_ >= halves.pattern.size();
            for (std::size_t i = 0; same && i < halves.pattern.size(); ++i)
                same = signs_[at_ + i].is(halves.pattern[i]);
            if (same)
                return &halves;
        }
        return nullptr;
    }

    void next() {
        if (const Halves* const halves = halvesHere()) {
            out_ += time_.hour < 12 ? halves->morning : halves->afternoon;
            at_ += halves->pattern.size();
            return;
        }
        const Sign& sign = signs_[at_];
        if (!sign.isOneOf(kDateLetters)) {
            out_ += sign.text;
            ++at_;
            return;
        }
        const char letter = static_cast<char>(sign.text[0] | 0x20);
        const auto most = static_cast<std::size_t>(
            std::ranges::find(kLongestRuns, letter, &LongestRun::letter)->count);
        std::size_t count = 0;
        while (count < most && at_ < signs_.size() &&
               (signs_[at_].is(letter) || signs_[at_].is(static_cast<char>(letter - 0x20)))) {
            ++count;
            ++at_;
        }
        write(letter, count);
        afterHour_ = letter == 'h';
    }

    void write(char letter, std::size_t count) {
        switch (letter) {
        case 'c':
            return writeGeneral();
        case 'd':
            return writeDay(count);
        case 'w':
            out_ += count == 1 ? std::to_string(weekday(weeks_.firstDay))
                               : std::to_string(weekOfYear(day_, time_.year, weeks_));
            return;
        case 'm':
            return afterHour_ && count < 3 ? number(time_.minute, count) : writeMonth(count);
        case 'q':
            return number((time_.month + 2) / 3, 1);
        case 'y':
            return writeYear(count);
        case 'h':
            return number(halves_ ? (time_.hour + 11) % 12 + 1 : time_.hour, count);
        case 'n':
            return number(time_.minute, count);
        case 's':
            return number(time_.second, count);
        default: // ttttt
            if (count == 5)
                inner(kLongTime);
            else
                out_.append(count, 't');
        }
    }

    void number(std::int64_t value, std::size_t count) { out_ += padded(value, count); }

    /// 1 is the first day of the week.
    [[nodiscard]] std::int64_t weekday(std::int64_t firstDay) const {
        return day_ - weekBegin(day_, firstDay) + 1;
    }
    void writeDay(std::size_t count) {
        const Name& name = kDays[static_cast<std::size_t>(weekday(1) - 1)];
        if (count < 3)
            number(time_.day, count);
        else if (count < 5)
            out_ += count == 3 ? name.brief : name.whole;
        else
            inner(count == 5 ? kShortDate : kLongDate);
    }
    void writeMonth(std::size_t count) {
        const Name& name = kMonths[static_cast<std::size_t>(time_.month - 1)];
        if (count < 3)
            number(time_.month, count);
        else
            out_ += count == 3 ? name.brief : name.whole;
    }
    void writeYear(std::size_t count) {
        if (count == 1 || count == 3) // of the year, the day; three are two and one
            out_ += (count == 3 ? padded(time_.year % 100, 2) : "") +
                    std::to_string(day_ - firstOfYear(time_.year) + 1);
        else
            number(count == 2 ? time_.year % 100 : time_.year, count);
    }
    /// The day unless it is that of no day, which a time alone has; the time unless it is midnight.
    void writeGeneral() {
        const bool midnight = time_.hour == 0 && time_.minute == 0 && time_.second == 0;
        if (day_ != 0)
            inner(kShortDate);
        if (day_ != 0 && !midnight)
            out_ += ' ';
        if (day_ == 0 || !midnight)
            inner(kLongTime);
    }
    void inner(std::string_view pattern) {
        out_ += DateWriter(date_, weeks_).run(signsOf(pattern));
    }

    Date date_;
    Weeks weeks_;
    CivilTime time_;
    std::int64_t day_;
    Signs signs_;
    std::size_t at_ = 0;
    std::string out_;
    bool halves_ = false;
    bool afterHour_ = false; ///< an m that comes now means minutes
};

} // namespace

std::string formattedDate(const Date& date, Signs signs, const Weeks& weeks) {
    return DateWriter(date, weeks).run(signs);
}

} // namespace jet::functions
