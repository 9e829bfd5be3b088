#include "ado/server/ServerOrder.h"

#include <span>
#include <string_view>
#include <utility>

namespace ado {

namespace {

using jet::Weight;
using jet::WeightKind;

std::string inDigits(std::uint32_t number, int digits) {
    std::string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789abcdef"[number >> shift & 15U];
    return text;
}

/// As one may write it in a text of the server's that begins with U&', and between brackets of its
/// patterns: the functions are ASCII, whoever prints or stores them.
std::string inText(unsigned character) { return "\\" + inDigits(character, 4); }
std::string inPattern(unsigned character) { return "\\u" + inDigits(character, 4); }

/// Two texts for the server's `translate`: what becomes what. What becomes nothing comes last.
struct Translation {
    std::string from;
    std::string to;
    std::string gone;

    void add(unsigned character, unsigned becomes) {
        from += inText(character);
        to += inText(becomes);
    }
    [[nodiscard]] std::string of(const std::string& text) const {
        return "translate(" + text + ", U&'" + from + gone + "', U&'" + to + "')";
    }
};

bool hasOneByte(const Weight& weight) {
    return weight.primary != 0 && (weight.primary & 0xFFFFFFU) == 0;
}

void replaceAll(std::string& text, std::string_view what, std::string_view by) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
}

/// What most texts consist of: letters of one byte in a key, with an accent or without one, and in
/// Jet 4 the marks that count by their places. Small letters of ASCII are made capital ones before.
struct Common {
    explicit Common(const jet::Collation& order) {
        const bool jet3 = order.version() == jet::Version::jet3;
        for (const char letter : kOften) // where the server looks first
            addLetter(static_cast<unsigned char>(letter),
                      order.weights()[static_cast<unsigned char>(letter)], jet3);
        for (unsigned character = 1; character < order.weights().size(); ++character) {
            const Weight& weight = order.weights()[character];
            const bool small = character >= 'a' && character <= 'z';
            const bool often = character < 0x80 &&
                               kOften.find(static_cast<char>(character)) != std::string_view::npos;
            if (small || often)
                continue;
            if (!jet3 && character > kLastAccented && weight.kind != WeightKind::P)
                continue;
            if (weight.kind == WeightKind::P) {
                marks += inPattern(character);
                markTexts += inText(character);
                markCodes += inDigits(weight.extra, 2);
            } else if (hasOneByte(weight) && weight.elements <= 1 &&
                       (weight.kind == WeightKind::W || weight.kind == WeightKind::A)) {
                addLetter(character, weight, jet3);
            }
        }
    }

    Translation letters;
    Translation accents;
    std::string plain;    ///< in a pattern: without accent
    std::string accented; ///< in a pattern
    std::string marks;    ///< in a pattern
    std::string markTexts;
    std::string markCodes;

private:
    static constexpr std::string_view kOften = " AEOSRI0123456789NDTCMULPVGBFZHQJXKWY";
    static constexpr unsigned kLastAccented =
        0x17F; ///< of those that words of here are spelled with

    void addLetter(unsigned character, const Weight& weight, bool jet3) {
        letters.add(character, weight.primary >> 24U);
        const bool hasAccent = weight.kind == WeightKind::A;
        (hasAccent ? accented : plain) += inPattern(character);
        if (hasAccent)
            accents.add(character,
                        jet3 ? static_cast<unsigned char>(inDigits(weight.extra, 1).front())
                             : weight.extra);
        else if (!jet3)
            accents.add(character, 2);
        else if (weight.elements == 1)
            accents.add(character, '2');
        else
            accents.gone += inText(character);
    }
};

// ---- any text ---------------------------------------------------------------------------------

/// Neighbours of like weights, 14 bytes each, in hexadecimal digits: the first, by how much the
/// primary weight grows, that of the first, `extra`, kind, elements.
std::string runsOf(std::span<const Weight> weights, unsigned& count) {
    std::string digits;
    count = 0;
    const auto alike = [](const Weight& a, const Weight& b) {
        return a.kind == b.kind && a.extra == b.extra && a.elements == b.elements;
    };
    for (std::size_t first = 0; first < weights.size(); ++count) {
        const Weight& weight = weights[first];
        std::size_t end = first + 1;
        std::uint32_t step = 0;
        if (end < weights.size() && alike(weight, weights[end])) {
            step = weights[end].primary - weight.primary;
            while (end < weights.size() && alike(weight, weights[end]) &&
                   weights[end].primary - weights[end - 1].primary == step)
                ++end;
        }
        digits += inDigits(static_cast<std::uint32_t>(first), 4) + inDigits(step, 8) +
                  inDigits(weight.primary, 8) + inDigits(weight.extra, 4) +
                  inDigits(static_cast<unsigned>(weight.kind), 2) + inDigits(weight.elements, 2);
        first = end;
    }
    return digits;
}

constexpr const char* kAnyBegins = R"(create function jet_chave_rara(text) returns bytea
language plpgsql immutable strict parallel safe as $body$
declare
    runs constant bytea := '\x@runs@';
    one text;
    unit integer;
    units integer[];
    low integer;
    high integer;
    middle integer;
    weight bigint;
    extra integer;
    kind integer;
    elements integer;
    width integer;
    letters text[] := '{}';
    accents integer[] := '{}';
    kana integer[] := '{}';
    marks text := '';
    halves text := '0';
    many integer := 0;
    told integer := 0;
    lead integer := 0;
    tail text := '';
begin
    foreach one in array string_to_array($1 collate "C", null) loop
        unit := ascii(one);
        units := array[unit];
        if unit > 65535 and @jet4@ then
            units := array[55296 + ((unit - 65536) >> 10), 56320 + ((unit - 65536) & 1023)];
        end if;
        foreach unit in array units loop
            if unit > 65535 then
                weight := (255::bigint << 24) | ((128 | (unit >> 14)) << 16) |
                          ((128 | ((unit >> 7) & 127)) << 8) | (128 | (unit & 127));
                extra := 0; kind := 1; elements := 0;
            else
                low := 0;
                high := @count@ - 1;
                while low < high loop
                    middle := (low + high + 1) / 2;
                    if get_byte(runs, middle * 14) * 256 + get_byte(runs, middle * 14 + 1) <= unit then
                        low := middle;
                    else
                        high := middle - 1;
                    end if;
                end loop;
                low := low * 14;
                unit := unit - get_byte(runs, low) * 256 - get_byte(runs, low + 1);
                weight := (('x' || encode(substr(runs, low + 7, 4), 'hex'))::bit(32)::bigint + unit *
                           ('x' || encode(substr(runs, low + 3, 4), 'hex'))::bit(32)::bigint)
                          & 4294967295;
                extra := get_byte(runs, low + 10) * 256 + get_byte(runs, low + 11);
                kind := get_byte(runs, low + 12);
                elements := get_byte(runs, low + 13);
            end if;
            width := case when kind = @half@ then 2
                          when weight = 0 then 0
                          when weight & 255 <> 0 then 4
                          when weight & 65535 <> 0 then 3
                          when weight & 16777215 <> 0 then 2
                          else 1 end;
            letters := array_append(letters,
                                    substr(encode(int8send(weight), 'hex'), 9, 2 * width));
)";

constexpr const char* kAnyOfJet3 = R"(            if kind = @accented@ then
                halves := halves || repeat('2', many) || to_hex(extra);
                many := 0;
            else
                many := many + elements;
            end if;
        end loop;
    end loop;
    if length(halves) = 1 then
        tail := '00';
    else
        tail := halves || case when length(halves) & 1 = 1 then '0' else '00' end;
    end if;
    return decode(array_to_string(letters, '') || tail, 'hex');
end $body$)";

constexpr const char* kAnyOfJet4 = R"(            if kind = @mark@ then
                middle := 32768 | ((7 + 4 * (cardinality(accents) + many - told - lead)) & 65535);
                marks := marks || lpad(to_hex(middle), 4, '0') || '06' ||
                         lpad(to_hex(extra & 255), 2, '0');
            end if;
            if kind in (@kana2@, @kana3@) then
                kana := array_append(kana, case when kind = @kana2@ then 2 else 3 end);
            end if;
            if kind in (@accented@, @half@, @combining@) or
               kind in (@kana2@, @kana3@) and extra <> 0 then
                accents := accents || array_fill(2, array[many - told]);
                told := many;
            end if;
            if kind = @combining@ then
                if cardinality(accents) = 0 then
                    accents := array[extra & 255];
                    lead := 1;
                else
                    accents[cardinality(accents)] := (accents[cardinality(accents)] + extra) & 255;
                end if;
            elsif kind in (@accented@, @half@) or kind in (@kana2@, @kana3@) and extra <> 0 then
                if elements = 2 then
                    accents := array_append(accents, extra >> 8);
                end if;
                accents := array_append(accents, extra & 255);
                many := many + elements;
                told := many;
            elsif kind in (@plain@, @kana2@, @kana3@) then
                many := many + elements;
            end if;
        end loop;
    end loop;
    while cardinality(accents) > 0 and accents[cardinality(accents)] <= 2 loop
        accents := trim_array(accents, 1);
    end loop;
    tail := '01';
    foreach unit in array accents loop
        tail := tail || lpad(to_hex(unit), 2, '0');
    end loop;
    if cardinality(kana) > 0 or octet_length(marks) > 0 then
        tail := tail || '0101';
        if cardinality(kana) > 0 then
            while cardinality(kana) > 0 and kana[cardinality(kana)] = 3 loop
                kana := trim_array(kana, 1);
            end loop;
            for place in 0 .. (cardinality(kana) + 2) / 3 - 1 loop
                tail := tail || to_hex(128 + coalesce(kana[3 * place + 1], 0) * 16 +
                                       coalesce(kana[3 * place + 2], 0) * 4 +
                                       coalesce(kana[3 * place + 3], 0));
            end loop;
            tail := tail || 'ff0280ff80' || case when octet_length(marks) > 0 then 'ff' else '' end;
        end if;
        if octet_length(marks) > 0 then
            tail := tail || '01' || marks;
        end if;
    end if;
    return decode(array_to_string(letters, '') || tail || '00', 'hex');
end $body$)";

std::string anyFunction(const jet::Collation& order) {
    const bool jet4 = order.version() == jet::Version::jet4;
    std::string made = std::string(kAnyBegins) + (jet4 ? kAnyOfJet4 : kAnyOfJet3);
    unsigned count = 0;
    const std::string runs = runsOf(order.weights(), count);
    const auto kind = [](WeightKind of) { return std::to_string(static_cast<unsigned>(of)); };
    const std::pair<const char*, std::string> words[] = {
        {"@runs@",      runs                                },
        {"@count@",     std::to_string(count)               },
        {"@jet4@",      std::string(jet4 ? "true" : "false")},
        {"@plain@",     kind(WeightKind::W)                 },
        {"@accented@",  kind(WeightKind::A)                 },
        {"@kana2@",     kind(WeightKind::K2)                },
        {"@kana3@",     kind(WeightKind::K3)                },
        {"@combining@", kind(WeightKind::M)                 },
        {"@mark@",      kind(WeightKind::P)                 },
        {"@half@",      kind(WeightKind::S)                 },
    };
    for (const auto& [word, by] : words)
        replaceAll(made, word, by);
    return made;
}

// ---- common texts -----------------------------------------------------------------------------

constexpr const char* kCommonBegins = R"(create function jet_chave(text) returns bytea
language plpgsql immutable strict parallel safe cost 100 as $body$
declare
    letters text collate "C" := upper(rtrim($1 collate "C", ' '));
begin
    if letters !~ '[^@plain@]' and octet_length(letters) = octet_length($1) then
        return convert_to(@letters@, 'LATIN1') || '@none@'::bytea;
    end if;
    declare
        blanks constant bytea := decode(repeat('01', octet_length($1) - octet_length(letters)),
                                        'hex');
        rest text collate "C";
        marks bytea := '';
        place integer := 0;
        tail bytea := '@begin@';
    begin
        if letters ~ '[^@plain@@accented@@marks@]' then
            return valtrino.jet_chave_rara(letters) || blanks;
        end if;
)";

constexpr const char* kCommonOfJet3 = R"(        if letters ~ '[@accented@]' then
            rest := '0' || rtrim(@accents@, '2') || '0';
            tail := decode(rest || case when length(rest) & 1 = 1 then '0' else '' end, 'hex');
        end if;
        return convert_to(@letters@, 'LATIN1') || tail || blanks;
    end;
end $body$)";

constexpr const char* kCommonOfJet4 = R"(        if letters ~ '[@marks@]' then
            rest := letters;
            loop
                place := place + length(substring(rest from '^[^@marks@]*'));
                rest := substring(rest from '[@marks@].*$');
                exit when rest is null;
                marks := marks || substr(int8send(
                    (32768 | ((7 + 4 * place) & 65535))::bigint * 65536 + 1536 +
                    get_byte('\x@codes@'::bytea, strpos(U&'@marktexts@', left(rest, 1)) - 1)), 5);
                rest := substr(rest, 2);
            end loop;
            letters := translate(letters, U&'@marktexts@', '');
        end if;
        if letters ~ '[@accented@]' then
            tail := tail || convert_to(rtrim(@accents@, U&'\0002'), 'LATIN1');
        end if;
        if octet_length(marks) > 0 then
            tail := tail || '\x010101'::bytea || marks;
        end if;
        return convert_to(@letters@, 'LATIN1') || tail || '\x00'::bytea || blanks;
    end;
end $body$)";

std::string commonFunction(const jet::Collation& order) {
    const bool jet4 = order.version() == jet::Version::jet4;
    const Common common(order);
    std::string made = std::string(kCommonBegins) + (jet4 ? kCommonOfJet4 : kCommonOfJet3);
    const std::pair<const char*, std::string> words[] = {
        {"@none@",      jet4 ? "\\x0100" : "\\x00"  },
        {"@begin@",     jet4 ? "\\x01" : "\\x00"    },
        {"@plain@",     common.plain                },
        {"@accented@",  common.accented             },
        {"@marks@",     common.marks                },
        {"@marktexts@", common.markTexts            },
        {"@codes@",     common.markCodes            },
        {"@accents@",   common.accents.of("letters")},
        {"@letters@",   common.letters.of("letters")},
    };
    for (const auto& [word, by] : words)
        replaceAll(made, word, by);
    return made;
}

} // namespace

std::vector<std::string> keyFunctions(const jet::Collation& order) {
    return {anyFunction(order), commonFunction(order)};
}

} // namespace ado
